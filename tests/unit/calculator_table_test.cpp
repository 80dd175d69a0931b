// Every formula of tests/data/formulas.tsv gives the value that stands beside it, or fails.
#include <SuiteTools/SuiteTools.h>

#include <gtest/gtest.h>

#include <charconv>
#include <clocale>
#include <fstream>
#include <string>
#include <vector>

using namespace VELAInterface;

namespace
{

struct Row
{
    int line;
    std::string formula;
    std::string value;
};

std::vector<Row> readTable()
{
    std::ifstream file(IE_TEST_DATA "/formulas.tsv");
    std::vector<Row> rows;
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        const size_t first = line.find('\t');
        if (line.rfind("# ", 0) == 0 || first == std::string::npos)
            continue;
        rows.push_back(
            {number, line.substr(0, first), line.substr(first + 1, line.find('\t', first + 1) - first - 1)});
    }
    return rows;
}

void expectValue(const Row& row)
{
    bool ok = row.value == "error";
    const double result = Compute(row.formula.c_str(), ok);
    EXPECT_EQ(ok, row.value != "error") << "line " << row.line << ": " << row.formula;
    double expected = 0;
    if (row.value != "error")
        std::from_chars(row.value.data(), row.value.data() + row.value.size(), expected);
    EXPECT_DOUBLE_EQ(result, expected) << "line " << row.line << ": " << row.formula;
}

} // namespace

// A comma-decimal locale played on machines that have none installed: a calculator that reads numbers with
// the C library ends here and stops at the point.
extern "C" __attribute__((visibility("default"))) double strtod(const char* text, char** end)
{
    double whole = 0;
    const char* c = text;
    for (; *c >= '0' && *c <= '9'; ++c)
        whole = whole * 10 + (*c - '0');
    if (end)
        *end = const_cast<char*>(c);
    return whole;
}

extern "C" __attribute__((visibility("default"))) double atof(const char* text)
{
    return strtod(text, nullptr);
}

TEST(CalculatorTable, isLargeEnough)
{
    size_t values = 0;
    const std::vector<Row> rows = readTable();
    for (const Row& row : rows)
        values += row.value != "error";
    EXPECT_GE(values, 400u);
    EXPECT_GE(rows.size() - values, 100u);
}

TEST(CalculatorTable, everyFormulaGivesItsValue)
{
    for (const Row& row : readTable())
        expectValue(row);
}

TEST(CalculatorTable, theLocaleDoesNotMatter)
{
    for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8"})
        if (std::setlocale(LC_ALL, name))
            break;
    for (const Row& row : readTable())
        expectValue(row);
    std::setlocale(LC_ALL, "C");
}
