// The visit of plain features: time per feature as their number grows.
#include "DirectExport.h"
#include "Measure.h"
#include "TableCamera.h"

#include <cstdio>

namespace
{

// Category "Root" lists "All", which lists `count` integers.
std::string description(int count)
{
    std::string text = "<RegisterDescription><Category Name=\"Root\"><pFeature>All</pFeature></Category>"
                       "<Category Name=\"All\">";
    for (int i = 0; i < count; ++i)
        text += "<pFeature>Feature" + std::to_string(i) + "</pFeature>";
    text += "</Category>";
    for (int i = 0; i < count; ++i)
        text += "<Integer Name=\"Feature" + std::to_string(i) + "\"><Value>7</Value></Integer>";
    return text + "</RegisterDescription>";
}

double secondsPerFeature(int count)
{
    bench::setDescription(description(count));
    bench::ReadyExport ready;
    const int repeats = 50000 / count;
    const double seconds = bench::medianSeconds([&] {
        for (int i = 0; i < repeats; ++i)
            ready.exportFile();
    });
    const int written = ready.exported().count("<Feature>");
    if (written != count)
        std::printf("only %d of %d features were written\n", written, count);
    return seconds / repeats / count;
}

} // namespace

int main()
{
    double few = 0;
    for (const int count : {500, 5000, 50000}) {
        const double seconds = secondsPerFeature(count);
        if (count == 500)
            few = seconds;
        std::printf("%6d features: %.2f us per feature, ratio to 500: %.2f (target: at most 2.00)\n", count,
                    seconds * 1e6, seconds / few);
    }
}
