// The inventory of a line: read, told of, written, and the reports of a line that has none of its cameras.
#include "fuzz/Scripted.h"

#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/line/InventoryEdit.h"
#include "iefeatures/line/InventoryText.h"
#include "iefeatures/line/LineReport.h"

#include <QXmlStreamReader>

namespace
{

using namespace companion;

void checkText(const QString& text)
{
    for (const uint character : text.toUcs4())
        fuzz::promise(character == '\n' || !actsOnTerminal(character), "nothing acts on a terminal");
}

void checkXml(const QByteArray& text)
{
    QXmlStreamReader reader(text);
    while (!reader.atEnd())
        reader.readNext();
    fuzz::promise(!reader.hasError(), "a report is XML");
}

// What a text says stands in quotes, without a quote or a line's end of its own.
void checkMetrics(const QByteArray& text)
{
    for (const QByteArray& line : text.split('\n')) {
        bool isInside = false;
        for (int i = 0; i < line.size(); ++i) {
            if (isInside && line[i] == '\\')
                ++i;
            else if (line[i] == '"')
                isInside = !isInside;
        }
        fuzz::promise(!isInside, "a label ends on its line");
        fuzz::promise(line.isEmpty() || line.startsWith('#') || line.startsWith("iefeatures_line_"),
                      "a line is a sample");
    }
}

// A camera that has the file's text for its names.
void addCamera(const Inventory& inventory, const QString& text)
{
    InventoryCamera camera;
    camera.name = text.left(200);
    camera.model = text.mid(10, 50);
    camera.serial = text.mid(60, 20);
    camera.comment = text;
    camera.ignored = QStringList{"Width"};
    camera.remarks["Width"] = text;
    QString problem;
    const QByteArray edited = editedText(inventory, {}, {camera}, problem);
    fuzz::promise(edited.isEmpty() != problem.isEmpty(), "a change is made, or it is said why not");
    if (!edited.isEmpty())
        fuzz::promise(edited.startsWith(inventory.text), "every other character stays");
    checkText(problem);
}

void report(const Inventory& inventory)
{
    LineCheck check;
    check.begun = QDateTime::fromMSecsSinceEpoch(0, Qt::UTC);
    for (const LineMatch& match : matchLine(inventory, {}))
        check.cameras.push_back({match});
    checkText(lineText(check, {}));
    for (const LineCameraCheck& one : check.cameras)
        fuzz::promise(Json::parse(lineOf(lineJson(one)), nullptr, false).is_object(), "an object is JSON");
    checkXml(lineJunit(inventory, check));
    checkMetrics(lineMetrics(inventory.name, check, check.begun));
    linePage(inventory, check);
}

void changeComment(const Inventory& inventory)
{
    QString problem;
    const InventoryCamera& camera = inventory.cameras.front();
    const QByteArray edited =
        editedText(inventory, {{camera.name, "comment", QString("said\n\"\x1b")}}, {}, problem);
    fuzz::promise(edited.isEmpty() != problem.isEmpty(), "a change is made, or it is said why not");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::prepareQt();
    const QByteArray text(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const InventoryReading reading = parseInventory(text, "/line/line.toml");
    for (const InventoryFault& fault : reading.faults) {
        fuzz::promise(!fault.text.isEmpty(), "a fault is a sentence");
        checkText(faultText("line.toml", fault));
    }
    if (!reading.isGood())
        return 0;
    for (const InventoryCamera& camera : reading.inventory.cameras)
        for (const auto& [key, span] : camera.places)
            fuzz::promise(0 <= span.begin && span.begin < span.end && span.end <= text.size(),
                          "a value has its place in the text");
    addCamera(reading.inventory, QString::fromUtf8(text));
    report(reading.inventory);
    if (!reading.inventory.cameras.empty())
        changeComment(reading.inventory);
    return 0;
}
