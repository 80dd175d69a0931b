#include "SuiteTools/SuiteTools.h"

#include <QTextCodec>

#include <atomic>
#include <cstring>

namespace VELAInterface
{

namespace
{

std::atomic<int> g_encoding{ENCODING_AUTOMATIC};

QTextCodec* utf8()
{
    return QTextCodec::codecForName("UTF-8");
}

QTextCodec* gb18030()
{
    return QTextCodec::codecForName("GB18030");
}

// The codec of a chosen encoding; null: by the bytes themselves.
QTextCodec* chosenCodec()
{
    switch (g_encoding.load()) {
    case ENCODING_UTF8:
        return utf8();
    case ENCODING_GB18030:
        return gb18030();
    case ENCODING_LATIN1:
        return QTextCodec::codecForName("ISO-8859-1");
    default:
        return nullptr;
    }
}

struct Bytes
{
    const char* begin;
    int count;
    bool mayEndInsideACharacter; // cut by a length, not ended by a zero
};

Bytes fieldBytes(const char* text, int length)
{
    if (length < 0)
        return {text, static_cast<int>(std::strlen(text)), false};
    const void* zero = std::memchr(text, 0, static_cast<size_t>(length));
    if (!zero)
        return {text, length, true};
    return {text, static_cast<int>(static_cast<const char*>(zero) - text), false};
}

bool isUtf8(const Bytes& bytes)
{
    QTextCodec::ConverterState state;
    utf8()->toUnicode(bytes.begin, bytes.count, &state);
    return state.invalidChars == 0 && (state.remainingChars == 0 || bytes.mayEndInsideACharacter);
}

QString decode(const char* text, int length)
{
    if (!text)
        return QString();
    const Bytes bytes = fieldBytes(text, length);
    const QTextCodec* codec = chosenCodec();
    if (!codec)
        codec = isUtf8(bytes) ? utf8() : gb18030();
    if (!bytes.mayEndInsideACharacter)
        return codec->toUnicode(bytes.begin, bytes.count);
    QTextCodec::ConverterState state; // keeps the bytes of an unfinished character to itself
    return codec->toUnicode(bytes.begin, bytes.count, &state);
}

bool isPair(const QString& text, int at)
{
    return at + 1 < text.size() && text.at(at).isHighSurrogate() && text.at(at + 1).isLowSurrogate();
}

} // namespace

void SetEncodingType(_ENCODING_TYPE_ type)
{
    g_encoding = type;
}

QString GetEncodeQStringFromUnChar(const unsigned char* text, int length)
{
    return decode(reinterpret_cast<const char*>(text), length);
}

QString char2QStringLocale(const char* text, int length)
{
    return decode(text, length);
}

// A character that the capacity cuts, and what stands behind it, is left out whole: half a character would be
// another text to whoever reads it. Meant.
void CovertEncodeCharFromQString(const QString& text, char* buffer, int capacity)
{
    if (!buffer)
        return;
    const QTextCodec* chosen = chosenCodec();
    const QTextCodec* codec = chosen ? chosen : utf8();
    int written = 0;
    for (int i = 0; i < text.size();) {
        const int units = isPair(text, i) ? 2 : 1;
        const bool isHalf = units == 1 && text.at(i).isSurrogate();
        const QByteArray character = isHalf ? QByteArrayLiteral("?") : codec->fromUnicode(text.mid(i, units));
        if (character.size() > capacity - written)
            return;
        std::memcpy(buffer + written, character.constData(), static_cast<size_t>(character.size()));
        written += character.size();
        i += units;
    }
}

} // namespace VELAInterface
