// A features file: records to lines, and from the disk back to records. No camera here.
#pragma once

#include <QDomDocument>
#include <QDomElement>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVector>

namespace ie
{

struct PlainFeature
{
    QString name;
    QString type; // the node's tag name
    QString value;
};

struct RegisterValue
{
    qint64 address = 0;
    QString variables;
    QString content; // words "1,2,3", or the computed value of a converter
    bool converted = false;
    QString to;          // raw word; with `converted` only
    QString from;        // formula, unescaped; with `converted` only
    QString addressText; // as read; not for the writer
};

struct ComplexFeature
{
    QString name;
    qint64 length = 0; // bytes
    QString reg;
    QList<RegisterValue> values;
    QString lengthText; // as read; not for the writer
};

struct FeaturesHeader
{
    QString version;
    bool hasFirmware = false;
    QString firmware;
    bool hasModel = false;
    QString model;
    bool hasBoardType = false;
    QString boardType;
};

// Writer. Every line ends CR LF but the file's last, which has no end. Texts go in as they are: only `from`
// is escaped.
QString fileBegin(const QString& version);
QString headerLine(const QString& element, const QString& text);
QString featuresBegin();
QString plainBlock(const PlainFeature& feature);
QString complexBegin(const QString& name, qint64 length, const QString& reg);
QString registerLine(const RegisterValue& value);
QString complexEnd();
QString fileEnd();

QString booleanText(bool value);
QString integerText(qint64 value);
QString enumerationText(quint32 value);
QString floatText(double value);
// Words as unsigned decimals joined by ",".
QString wordsText(const QVector<quint32>& words);

// Reader, of imports and of whoever asks what an import would read.
struct LoadedFile
{
    enum class Failure
    {
        None,
        NotOpened, // it is none (but a device or a folder), or cannot be read
        TooLarge,  // it exceeds kMaximumFileSize
        Empty,
        NotLoaded // no well-formed XML, or none that is safe to parse (XmlSafety)
    };
    Failure failure = Failure::None;
    QDomDocument document;
};
constexpr qint64 kMaximumFileSize = 512 * 1024 * 1024; // bytes
// The bytes are taken as UTF-8 up to a zero byte, whatever the file declares, without a byte-order mark.
LoadedFile loadFeaturesFile(const QString& path);
// The same of a file's text.
LoadedFile loadFeaturesText(const QString& text);

// The records of one parsed file, in document order. `document` is any well-formed XML; what is
// missing is left empty and told by `hasFeatures`.
struct FeaturesContent
{
    FeaturesHeader header;
    bool hasFeatures = false;
    // Plain and complex features in document order: `plain` or `complex` by `isComplex`.
    struct Entry
    {
        bool isComplex = false;
        QStringList names; // all that a plain feature is given; the last one holds
        PlainFeature plain;
        ComplexFeature complex;
    };
    QList<Entry> entries;
};
FeaturesContent readFeatures(const QDomElement& root);

} // namespace ie
