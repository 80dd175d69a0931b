#include "iefeatures/cameras/CameraWord.h"

#include "iefeatures/console/Text.h"

#include <QStringList>

namespace companion
{

const CameraTrait kBySerial{"serial:", "serial number", &ListedCamera::serial};
const CameraTrait kByName{"name:", "user name", &ListedCamera::userName};
const CameraTrait kByAddress{"address:", "address", &ListedCamera::address};
const CameraTrait kByMac{"mac:", "MAC address", &ListedCamera::mac};
const CameraTrait kByModel{"", "model name", &ListedCamera::model};

bool fits(const ListedCamera& camera, const CameraTrait& trait, const QString& value)
{
    if (trait.field != &ListedCamera::mac)
        return camera.*trait.field == value;
    return camera.mac == QString(value).replace('-', ':').toUpper();
}

QString CameraWord::missing() const
{
    return QString("No camera has the %1 \"%2\".").arg(trait->kind, printable(value));
}

QString CameraWord::ambiguous(const std::vector<ListedCamera>& cameras) const
{
    QStringList words;
    for (const ListedCamera& camera : cameras)
        if (fits(camera))
            words += "address:" + camera.address + (camera.mac.isEmpty() ? "" : " (mac:" + camera.mac + ')');
    return QString("More than one camera has the %1 \"%2\": %3.")
        .arg(trait->kind, printable(value), printable(words.join(", ")));
}

std::optional<CameraWord> cameraWord(const std::string& word)
{
    for (const CameraTrait* trait : {&kBySerial, &kByName, &kByAddress, &kByMac})
        if (word.rfind(trait->prefix, 0) == 0)
            return CameraWord{trait, QString::fromStdString(word.substr(std::string(trait->prefix).size()))};
    return {};
}

CameraWord cameraWordOrSerial(const std::string& word)
{
    return cameraWord(word).value_or(CameraWord{&kBySerial, QString::fromStdString(word)});
}

} // namespace companion
