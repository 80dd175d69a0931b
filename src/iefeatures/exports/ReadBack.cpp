#include "iefeatures/exports/ReadBack.h"

#include "jobs/file/FeaturesFile.h"

#include <QFile>

namespace companion
{
namespace
{

const QString kLineEnd = "\r\n";
const QString kNameBegin = "<Name>";
const QString kComplexBegin = "<ComplexFeature name=\"";

// What the parser makes of white space in texts is no loss.
QString withoutBlanks(QString text)
{
    text.remove(QChar(QChar::Null));
    for (QChar& character : text)
        if (character.isSpace())
            character = QChar::Null;
    return text.remove(QChar(QChar::Null));
}

QString writtenHead(const ie::FeaturesHeader& header)
{
    QString text = ie::fileBegin(header.version);
    text += ie::headerLine("DeviceFirmwareVersion", header.firmware);
    text += ie::headerLine("DeviceModelName", header.model);
    if (header.hasBoardType)
        text += ie::headerLine("BoardDeviceType", header.boardType);
    return text + ie::featuresBegin();
}

QString writtenEntry(const ie::FeaturesContent::Entry& entry)
{
    if (!entry.isComplex)
        return ie::plainBlock(entry.plain);
    QString text = ie::complexBegin(entry.complex.name, entry.complex.length, entry.complex.reg);
    for (const ie::RegisterValue& value : entry.complex.values)
        text += ie::registerLine(value);
    return text + ie::complexEnd();
}

bool isReadAsWritten(const QString& text)
{
    const ie::LoadedFile file = ie::loadFeaturesText(text);
    if (file.failure != ie::LoadedFile::Failure::None)
        return false;
    const ie::FeaturesContent content = ie::readFeatures(file.document.documentElement());
    QString again = writtenHead(content.header);
    for (const ie::FeaturesContent::Entry& entry : content.entries)
        again += writtenEntry(entry);
    return content.hasFeatures && withoutBlanks(again + ie::fileEnd()) == withoutBlanks(text);
}

bool beginsBlock(const QString& line)
{
    return line == "<Feature>" || line.startsWith(kComplexBegin);
}

QString nameOf(const QStringList& block)
{
    if (block.first().startsWith(kComplexBegin))
        return block.first().mid(kComplexBegin.size()).section("\" len=", 0, 0);
    const QString line = block.value(1);
    return line.mid(kNameBegin.size(), line.lastIndexOf("</") - kNameBegin.size());
}

// A block of lines for each feature, and in the first one what stands before them. A text with line ends in
// it may break its block up, and its pieces are then no good by themselves.
QList<QStringList> blocksOf(const QString& text)
{
    QList<QStringList> blocks{{}};
    for (const QString& line : text.chopped((kLineEnd + ie::fileEnd()).size()).split(kLineEnd)) {
        if (beginsBlock(line))
            blocks += QStringList();
        blocks.last() += line;
    }
    return blocks;
}

} // namespace

ReadBack readBack(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > ie::kMaximumFileSize)
        return {};
    const QString text(file.readAll());
    if (isReadAsWritten(text))
        return {true, {}, {}};
    ReadBack result;
    const QString head = writtenHead({"1", true, {}, true, {}, false, {}});
    const QList<QStringList> blocks = blocksOf(text);
    QString rest = blocks.first().join(kLineEnd) + kLineEnd;
    for (const QStringList& lines : blocks.mid(1)) {
        const QString block = lines.join(kLineEnd) + kLineEnd;
        if (isReadAsWritten(head + block + ie::fileEnd()))
            rest += block;
        else
            result.features += nameOf(lines);
    }
    result.features.removeDuplicates();
    if (isReadAsWritten(rest + ie::fileEnd()))
        result.rest = rest + ie::fileEnd();
    return result;
}

} // namespace companion
