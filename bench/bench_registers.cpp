// The evaluation of register addresses: time per RegValue line as their number grows, and a large synthetic
// selector.
#include "DirectExport.h"
#include "Measure.h"
#include "TableCamera.h"

#include <cstdio>

namespace
{

// `registers` features, each a register whose address depends on one selector of 64 values.
std::string description(int registers)
{
    std::string list, nodes;
    for (int i = 0; i < registers; ++i) {
        const std::string n = std::to_string(i);
        list += "<pFeature>Feature" + n + "</pFeature>";
        nodes += "<IntConverter Name=\"Feature" + n + "\"><pVariable Name=\"RAW\">Reg" + n +
                 "</pVariable><FormulaTo>FROM*2</FormulaTo><FormulaFrom>RAW/2</FormulaFrom><pValue>Reg" + n +
                 "</pValue></IntConverter>"
                 "<IntReg Name=\"Reg" +
                 n + "\"><Address>" + std::to_string(0x10000 + i * 0x100) +
                 "</Address><pAddress>Offset</pAddress><Length>4</Length></IntReg>";
    }
    std::string selected;
    for (int i = 0; i < registers; ++i)
        selected += "<pSelected>Feature" + std::to_string(i) + "</pSelected>";
    return "<RegisterDescription><Category Name=\"Root\"><pFeature>All</pFeature></Category>"
           "<Category Name=\"All\"><pFeature>Selector</pFeature>" +
           list +
           "</Category>"
           "<IntSwissKnife Name=\"Offset\"><pVariable Name=\"SEL\">SelectorValue</pVariable>"
           "<Formula>SEL*4</Formula></IntSwissKnife>"
           "<Integer Name=\"Selector\"><pValue>SelectorValue</pValue>" +
           selected +
           "</Integer>"
           "<Integer Name=\"SelectorValue\"><Value>0</Value></Integer>" +
           nodes + "</RegisterDescription>";
}

double secondsPerLine(int registers)
{
    bench::setDescription(description(registers));
    bench::ReadyExport ready;
    const int repeats = registers >= 1000 ? 1 : 1000 / registers;
    const double seconds = bench::medianSeconds([&] {
        for (int i = 0; i < repeats; ++i)
            ready.exportFile();
    });
    const int lines = ready.exported().count("<RegValue ");
    if (lines != registers * 64)
        std::printf("%d lines were written, %d were expected\n", lines, registers * 64);
    std::printf("%5d registers x 64 selector values, %6d lines: %.2f us per line", registers, lines,
                seconds / repeats / lines * 1e6);
    return seconds / repeats / lines;
}

} // namespace

int main()
{
    const double few = secondsPerLine(2);
    std::puts("");
    secondsPerLine(200);
    std::puts("");
    const double many = secondsPerLine(1563);
    std::printf(", ratio to 128 lines: %.2f (target: at most 2.00)\n", many / few);
}
