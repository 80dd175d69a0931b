#include "iefeatures/cameras/ListReport.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"

namespace companion
{
namespace
{

QString statusText(const ListedCamera& camera)
{
    if (!camera.reason.isEmpty())
        return camera.status + ": " + printable(camera.reason);
    return camera.controller.isEmpty() ? camera.status : camera.status + " by " + camera.controller;
}

const char* kindWord(CameraEvent::Kind kind)
{
    switch (kind) {
    case CameraEvent::Kind::Appeared:
        return "appeared";
    case CameraEvent::Kind::Changed:
        return "changed";
    case CameraEvent::Kind::Gone:
        break;
    }
    return "gone";
}

} // namespace

QString listText(const std::vector<ListedCamera>& cameras)
{
    QList<QStringList> rows = {{"ID", "TRANSPORT", "MODEL", "SERIAL", "NAME", "ADDRESS", "STATUS"}};
    for (const ListedCamera& camera : cameras)
        rows += {QString::number(camera.device.nDeviceID),
                 printable(camera.transport),
                 printable(camera.model),
                 printable(camera.serial),
                 printable(camera.userName),
                 printable(camera.address),
                 statusText(camera)};
    const Align left = Align::Left;
    return alignedRows({Align::Right, left, left, left, left, left, left}, rows);
}

Json listedJson(const ListedCamera& camera)
{
    return {{"camera", cameraJson(camera)},
            {"status", json(camera.status)},
            {"reason", jsonUnlessEmpty(camera.reason)},
            {"mac", jsonUnlessEmpty(camera.mac)},
            {"controller", jsonUnlessEmpty(camera.controller)}};
}

QString eventText(const CameraEvent& event, const QDateTime& now)
{
    const ListedCamera& camera = event.camera;
    QStringList cells = {now.toString(Qt::ISODate), fitted(kindWord(event.kind), 8),
                         printable(camera.transport), camera.title()};
    if (!camera.userName.isEmpty())
        cells += '"' + printable(camera.userName) + '"';
    if (!camera.address.isEmpty())
        cells += printable(camera.address);
    if (event.kind != CameraEvent::Kind::Gone)
        cells += statusText(camera);
    QStringList changes;
    for (const CameraEvent::Change& change : event.changes)
        changes += change.field + " was " + printable(change.from);
    if (!changes.isEmpty())
        cells += '(' + changes.join(", ") + ')';
    return cells.join("  ") + '\n';
}

Json eventJson(const CameraEvent& event, const QDateTime& now)
{
    Json fields = {{"time", json(now.toString(Qt::ISODate))}, {"event", kindWord(event.kind)}};
    fields.update(listedJson(event.camera));
    if (event.kind == CameraEvent::Kind::Changed)
        fields["was"] = Json::object();
    for (const CameraEvent::Change& change : event.changes)
        fields["was"][change.field.toStdString()] = json(change.from);
    return fields;
}

} // namespace companion
