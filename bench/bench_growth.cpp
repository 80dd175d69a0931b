// What a longer formula, a longer inventory and a longer line cost for each of their parts: as much as in a
// short one.
#include "Measure.h"

#include "iefeatures/line/Inventory.h"
#include "iefeatures/line/LineMatch.h"

#include <SuiteTools/SuiteTools.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace
{

constexpr double kTarget = 6.0; // squares would come to 8 and 16

// `work(count)` prepares so many and returns what is measured.
template <typename Work>
void compare(const char* what, int few, int many, Work work)
{
    const auto secondsForEach = [&](int count) {
        const auto measured = work(count);
        return bench::medianSeconds(measured) / count;
    };
    const double small = secondsForEach(few);
    const double large = secondsForEach(many);
    std::printf("%-44s %6d: %7.3f us each, %6d: %7.3f us each, ratio %.2f (target: at most %.2f)\n", what,
                few, small * 1e6, many, large * 1e6, large / small, kTarget);
}

std::string repeated(const std::string& part, int length)
{
    std::string text;
    while (int(text.size()) < length)
        text += part;
    return text;
}

// Of about `length` characters, most of them pending until the end.
struct LongFormula
{
    const char* what;
    std::string (*text)(int length);
};

const LongFormula kFormulas[] = {
    {"formula of signs", [](int length) { return repeated("-", length) + "1"; }},
    {"formula of powers", [](int length) { return "1" + repeated("**1", length); }},
    {"formula of choices within choices",
     [](int length) { return repeated("1?", length / 2) + "7" + repeated(":1", length / 2); }},
    {"formula of digits", [](int length) { return "0." + repeated("1", length); }},
};

void compareFormulas()
{
    for (const LongFormula& formula : kFormulas)
        compare(formula.what, 20000, 320000, [&](int length) {
            return [text = formula.text(length)] {
                bool ok = false;
                VELAInterface::Compute(text.c_str(), ok);
                if (!ok)
                    std::puts("the formula was refused");
            };
        });
}

QByteArray inventoryOf(int count)
{
    QByteArray text = "[line]\nname='L'\n";
    for (int i = 0; i < count; ++i) {
        const QByteArray number = QByteArray::number(i).rightJustified(4, '0');
        text += "[camera.\"Gate " + number + "\"]\nmodel='M'\nserial='" + number +
                "'\nmac='02:00:00:00:" + number.left(2) + ':' + number.mid(2) + "'\naddress='10.0." +
                QByteArray::number(i / 250) + '.' + QByteArray::number(i % 250) + "'\n";
    }
    return text;
}

// As the inventory has it.
companion::ListedCamera presentOf(const companion::InventoryCamera& wanted)
{
    companion::ListedCamera camera;
    camera.device.stDeviceInfo.transportType = KX_TRANSPORT_GIGE;
    camera.device.nStatus = KX_AVAILABILITY_FREE;
    camera.model = wanted.model;
    camera.serial = wanted.serial;
    camera.mac = wanted.mac;
    camera.address = wanted.address;
    return camera;
}

void compareLines()
{
    compare("inventory that is read, a camera", 1000, 8000, [](int count) {
        return [text = inventoryOf(count), count] {
            const auto read = companion::parseInventory(text, "line.toml");
            if (int(read.inventory.cameras.size()) != count)
                std::puts("the inventory was not read");
        };
    });
    compare("line that is found again, a camera", 1000, 8000, [](int count) {
        const companion::Inventory inventory =
            companion::parseInventory(inventoryOf(count), "line.toml").inventory;
        std::vector<companion::ListedCamera> present;
        std::transform(inventory.cameras.rbegin(), inventory.cameras.rend(), std::back_inserter(present),
                       presentOf);
        return [inventory, present, count] {
            if (int(companion::matchLine(inventory, present).size()) != count)
                std::puts("the line was not found");
        };
    });
}

} // namespace

int main()
{
    compareFormulas();
    compareLines();
}
