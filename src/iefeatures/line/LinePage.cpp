#include "iefeatures/console/OperatingSystem.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/line/LineReport.h"

#include <SuiteTools/SuiteTools.h>

#include <QCryptographicHash>
#include <QSysInfo>

namespace companion
{
namespace
{

// Colours by what a page is looked at with; paper has no dark side, and breaks no camera over two pages.
const char* const kStyle = R"(
:root { color-scheme: light dark; --ink: #1b1f24; --paper: #ffffff; --rule: #d0d7de; --soft: #57606a;
  --good: #116329; --bad: #a40e26; --aside: #f6f8fa; }
@media (prefers-color-scheme: dark) { :root { --ink: #e6edf3; --paper: #0d1117; --rule: #30363d;
  --soft: #9198a1; --good: #56d364; --bad: #ff7b72; --aside: #161b22; } }
@media print { :root { --ink: #000; --paper: #fff; --rule: #999; --soft: #333; --good: #000; --bad: #000;
  --aside: #fff; } body { margin: 0; max-width: none; } section { break-inside: avoid; } }
body { font: 15px/1.5 system-ui, sans-serif; color: var(--ink); background: var(--paper); max-width: 70rem;
  margin: 2rem auto; padding: 0 1rem; }
h1 { font-size: 1.5rem; margin: 0 0 .25rem; } h2 { font-size: 1.1rem; margin: 1.5rem 0 .5rem; }
p { margin: .25rem 0; } .soft { color: var(--soft); } .good { color: var(--good); }
.bad { color: var(--bad); font-weight: 600; }
table { border-collapse: collapse; width: 100%; font-size: .9rem; }
th, td { text-align: left; vertical-align: top; padding: .3rem .6rem; border-bottom: 1px solid var(--rule);
  overflow-wrap: break-word; }
th { color: var(--soft); font-weight: 600; } thead { display: table-header-group; }
ul { margin: .25rem 0; padding-left: 1.2rem; } code { font-size: .85em; overflow-wrap: anywhere; }
section { border: 1px solid var(--rule); border-radius: 6px; background: var(--aside); padding: .5rem 1rem;
  margin: .75rem 0; }
)";

QString html(const QString& text)
{
    return printable(text).toHtmlEscaped();
}

QString element(const char* name, const QString& inside, const char* kind = "")
{
    const QString attribute = *kind ? QString(" class=\"%1\"").arg(kind) : QString();
    return QString("<%1%2>").arg(name, attribute) + inside + QString("</%1>").arg(name);
}

QString row(const char* cell, const QStringList& cells)
{
    QString inside;
    for (const QString& text : cells)
        inside += element(cell, text);
    return element("tr", inside) + '\n';
}

QString stateCell(LineState state)
{
    return element("span", lineStateWord(state), state == LineState::InOrder ? "good" : "bad");
}

QString cameraRows(const LineCheck& check)
{
    QString rows;
    for (const LineCameraCheck& one : check.cameras) {
        const std::optional<ListedCamera>& camera = one.match.camera;
        const InventoryCamera* wanted = one.match.wanted;
        rows += row("td", {html(wanted ? wanted->name : "-"), stateCell(one.match.state),
                           html(camera ? camera->model : wanted->model),
                           html(camera ? camera->serial : wanted->serial),
                           html(camera ? camera->mac + camera->guid : wanted->mac + wanted->guid),
                           html(camera ? camera->address : wanted->address), html(one.firmware()),
                           html(lineAsides(one))});
    }
    return rows;
}

QString camerasTable(const LineCheck& check)
{
    const QString head = row("th", {"Camera", "State", "Model", "Serial number", "MAC or GUID", "Address",
                                    "Firmware", "Differs, and does not count"});
    return element("table", element("thead", head) + element("tbody", cameraRows(check)));
}

QString differences(const LineCheck& check)
{
    QString text;
    for (const LineCameraCheck& one : check.cameras) {
        QString items;
        for (const QString& problem : lineProblems(one))
            items += element("li", html(problem));
        if (!items.isEmpty())
            text += element("section", element("h2", html(one.name()) + ": " + stateCell(one.match.state)) +
                                           element("ul", items)) +
                    '\n';
    }
    return text.isEmpty() ? element("p", "None.") : text;
}

QString filesTable(const Inventory& inventory)
{
    QString rows;
    for (const InventoryCamera& camera : inventory.cameras)
        for (const QString& file : {camera.featuresFile, camera.bagFile})
            if (!file.isEmpty())
                rows += row("td", {html(camera.name), html(file),
                                   element("code", hashOfFile(inventory.resolved(file)))});
    return element("table",
                   element("thead", row("th", {"Camera", "File", "SHA-256"})) + element("tbody", rows));
}

QString provenance(const Inventory& inventory, const LineCheck& check)
{
    const QString hash = QCryptographicHash::hash(inventory.text, QCryptographicHash::Sha256).toHex();
    return element("p",
                   html(QString("Checked %1 by %2 on %3 with iefeatures %4.")
                            .arg(check.begun.toString(Qt::ISODate), loginName(), QSysInfo::machineHostName(),
                                 VELAInterface::softwareVersion())),
                   "soft") +
           element("p", "Inventory " + html(inventory.path) + ", SHA-256 " + element("code", hash), "soft");
}

} // namespace

QByteArray linePage(const Inventory& inventory, const LineCheck& check)
{
    const QString title = "Line " + html(inventory.name);
    const QString verdict =
        element("p", html(lineCounts(check)), check.gravest() == LineState::InOrder ? "good" : "bad");
    const QString body = element("h1", title) + '\n' + verdict + '\n' + provenance(inventory, check) + '\n' +
                         element("h2", "Cameras") + '\n' + camerasTable(check) + '\n' +
                         element("h2", "Differences") + '\n' + differences(check) + '\n' +
                         element("h2", "Files") + '\n' + filesTable(inventory);
    const QString head = "<meta charset=\"utf-8\">"
                         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">" +
                         element("title", title) + element("style", kStyle);
    return ("<!DOCTYPE html>\n<html lang=\"en\">" + element("head", head) + '\n' + element("body", body) +
            "</html>\n")
        .toUtf8();
}

} // namespace companion
