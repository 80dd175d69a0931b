#include "jobs/nodes/FeatureKind.h"

#include "jobs/file/FeaturesFile.h"
#include "jobs/rules/ImportRules.h"

#include <SuiteTools/SuiteTools.h>

#include <algorithm>
#include <iterator>

namespace ie
{
namespace
{

// Readers answer whether the camera gave a value, and leave a text only then.

bool readBoolean(const NodeAccess& camera, const QString& name, FeatureReading& reading, int* code)
{
    bool value = false;
    if (!camera.getBoolean(name, &value, code))
        return false;
    reading.text = booleanText(value);
    return true;
}

bool readEnumeration(const NodeAccess& camera, const QString& name, FeatureReading& reading, int* code)
{
    KX_EnumValue value = {};
    if (!camera.getEnumeration(name, &value, code))
        return false;
    reading.text = enumerationText(value.current);
    reading.enumeration = value;
    return true;
}

bool readInteger(const NodeAccess& camera, const QString& name, FeatureReading& reading, int* code)
{
    KX_IntegerValue value = {};
    if (!camera.getInteger(name, &value, code))
        return false;
    reading.text = integerText(value.current);
    reading.integer = value;
    return true;
}

bool readFloat(const NodeAccess& camera, const QString& name, FeatureReading& reading, int* code)
{
    KX_FloatValue value = {};
    if (!camera.getFloat(name, &value, code))
        return false;
    reading.text = floatText(value.current);
    reading.real = value;
    return true;
}

bool readString(const NodeAccess& camera, const QString& name, FeatureReading& reading, int* code)
{
    qint64 longest = 0;
    if (!camera.getString(name, reading.text, &longest, code))
        return false;
    if (reading.text.isNull())
        reading.text = "";
    reading.longestText = longest;
    return true;
}

bool writeBoolean(NodeAccess& camera, const QString& name, const QString& text, int* code)
{
    return camera.setBoolean(name, importedBoolean(text).value, code);
}

bool writeEnumeration(NodeAccess& camera, const QString& name, const QString& text, int* code)
{
    return camera.setEnumeration(name, importedNumber(text).value, code);
}

bool writeInteger(NodeAccess& camera, const QString& name, const QString& text, int* code)
{
    return camera.setInteger(name, importedNumber(text).value, code);
}

bool writeFloat(NodeAccess& camera, const QString& name, const QString& text, int* code)
{
    return camera.setFloat(name, importedFloat(text).value, code);
}

bool writeString(NodeAccess& camera, const QString& name, const QString& text, int* code)
{
    return camera.setString(name, text, code);
}

ImportedText printedBoolean(const QString& text)
{
    const Imported<bool> imported = importedBoolean(text);
    return {booleanText(imported.value), imported.isFaithful};
}

ImportedText printedNumber(const QString& text)
{
    const Imported<quint32> imported = importedNumber(text);
    return {integerText(imported.value), imported.isFaithful};
}

ImportedText printedFloat(const QString& text)
{
    const Imported<float> imported = importedFloat(text);
    return {floatText(imported.value), imported.isFaithful};
}

ImportedText printedString(const QString& text)
{
    const QString kept = VELAInterface::char2QStringLocale(importedBytes(text).constData(), -1);
    return {kept, kept == text};
}

bool isSameInteger(const QString& fileText, const QString& cameraText)
{
    const std::optional<qint64> inFile = meantInteger(fileText);
    return inFile && integerText(*inFile) == cameraText;
}

bool isSameFloat(const QString& fileText, const QString& cameraText)
{
    bool ok = false;
    const double inFile = fileText.toDouble(&ok);
    return ok && inFile == cameraText.toDouble();
}

template <ImportedText (*printed)(const QString&)>
bool isSameWritten(const QString& fileText, const QString& cameraText)
{
    const ImportedText imported = printed(fileText);
    return imported.isFaithful && imported.text == cameraText;
}

bool isSameText(const QString& fileText, const QString& cameraText)
{
    return fileText == cameraText;
}

struct Kind
{
    FeatureKind kind;
    const char* word;
    int pass;
    bool (*read)(const NodeAccess&, const QString& name, FeatureReading&, int* code);
    bool (*write)(NodeAccess&, const QString& name, const QString& text, int* code);
    ImportedText (*print)(const QString& fileText);
    bool (*isSame)(const QString& fileText, const QString& cameraText);
};

const Kind kKinds[] = {
    {FeatureKind::Boolean, "Boolean", 1, readBoolean, writeBoolean, printedBoolean,
     isSameWritten<printedBoolean>},
    {FeatureKind::Enumeration, "Enumeration", 2, readEnumeration, writeEnumeration, printedNumber,
     isSameWritten<printedNumber>},
    {FeatureKind::Integer, "Integer", 3, readInteger, writeInteger, printedNumber, isSameInteger},
    {FeatureKind::IntReg, "IntReg", 3, readInteger, writeInteger, printedNumber, isSameInteger},
    {FeatureKind::Float, "Float", 3, readFloat, writeFloat, printedFloat, isSameFloat},
    {FeatureKind::StringReg, "StringReg", 3, readString, writeString, printedString, isSameText}};

const Kind& of(FeatureKind kind)
{
    return *std::find_if(std::begin(kKinds), std::end(kKinds),
                         [kind](const Kind& known) { return known.kind == kind; });
}

} // namespace

std::optional<FeatureKind> featureKind(const QString& typeWord)
{
    const auto found = std::find_if(std::begin(kKinds), std::end(kKinds),
                                    [&](const Kind& kind) { return typeWord == QLatin1String(kind.word); });
    return found == std::end(kKinds) ? std::nullopt : std::optional<FeatureKind>(found->kind);
}

QString typeWord(FeatureKind kind)
{
    return of(kind).word;
}

int importPass(FeatureKind kind)
{
    return of(kind).pass;
}

FeatureReading readFeature(const NodeAccess& camera, FeatureKind kind, const QString& name)
{
    FeatureReading reading;
    int code = 0;
    if (!of(kind).read(camera, name, reading, &code))
        reading = {};
    reading.status = static_cast<KX_Status>(code);
    return reading;
}

bool writeFeature(NodeAccess& camera, FeatureKind kind, const QString& name, const QString& text, int* code)
{
    return of(kind).write(camera, name, text, code);
}

ImportedText importedText(FeatureKind kind, const QString& fileText)
{
    return of(kind).print(fileText);
}

bool isSameValue(FeatureKind kind, const QString& fileText, const QString& cameraText)
{
    return fileText == cameraText || of(kind).isSame(fileText, cameraText);
}

std::optional<qint64> meantInteger(const QString& text)
{
    bool ok = false;
    qint64 number = text.toLongLong(&ok, 10);
    if (!ok && text.startsWith("0x"))
        number = qint64(text.midRef(2).toULongLong(&ok, 16));
    return ok ? std::optional<qint64>(number) : std::nullopt;
}

} // namespace ie
