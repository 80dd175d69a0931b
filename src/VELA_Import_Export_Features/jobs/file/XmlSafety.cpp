#include "jobs/file/XmlSafety.h"

#include "xml_entities/Entities.h"
#include "xml_entities/Limits.h"

#include <QStringView>

#include <algorithm>

namespace ie
{
namespace
{

// Walks over the markup as the parser does. Whatever is not well-formed ends the parser's work at that place,
// so the walk only has to agree with it up to there.
class MarkupWalk
{
public:
    explicit MarkupWalk(const QString& text) : m_text(text) {}

    bool isSafe()
    {
        while ((m_pos = m_text.indexOf('<', m_pos)) >= 0) {
            if (!skipCommentOrInstruction() && !takeMarkup())
                return false;
        }
        return expansion() <= kMaximumXmlExpansion;
    }

private:
    bool at(QLatin1String word) const { return QStringView(m_text).mid(m_pos).startsWith(word); }
    // The character behind the '<' that the walk stands on.
    ushort kind() const { return m_pos + 1 < m_text.size() ? m_text.at(m_pos + 1).unicode() : 0; }

    // Past the next `end` that starts at or after `from`; to the text's end when there is none.
    void skipPast(const char* end, int from)
    {
        const QLatin1String word(end);
        const int found = m_text.indexOf(word, from);
        m_pos = found < 0 ? m_text.size() : found + word.size();
    }

    bool skipCommentOrInstruction()
    {
        if (kind() == '?')
            skipPast("?>", m_pos + 2);
        else if (kind() == '!' && at(QLatin1String("<!--")))
            skipPast("-->", m_pos + 4);
        else
            return false;
        return true;
    }

    bool takeMarkup()
    {
        if (kind() == '/') {
            takeEndTag();
            return true;
        }
        if (kind() != '!')
            return takeStartTag();
        if (!at(QLatin1String("<![CDATA[")))
            return takeDocumentType();
        skipPast("]]>", m_pos + 9);
        return true;
    }

    void takeEndTag()
    {
        m_depth = std::max(0, m_depth - 1);
        const int end = m_text.indexOf('>', m_pos + 2);
        m_pos = end < 0 ? m_text.size() : end + 1;
    }

    bool takeStartTag()
    {
        const size_t attributes = skipQuotedUpTo('>', '>');
        if (++m_elements > xml_entities::maximumElements || attributes > xml_entities::maximumAttributes)
            return false;
        const bool isEmptyElement = m_pos < m_text.size() && m_text.at(m_pos - 1) == '/';
        const int depth = m_depth + 1;
        if (!isEmptyElement)
            m_depth = depth;
        return depth <= kMaximumXmlDepth;
    }

    // To the next `end` or `otherEnd` that stands outside quotes; to the text's end when there is none. Gives
    // the number of pieces in quotes.
    size_t skipQuotedUpTo(ushort end, ushort otherEnd)
    {
        size_t quoted = 0;
        const ushort* text = m_text.utf16();
        const int size = m_text.size();
        for (++m_pos; m_pos < size; ++m_pos) {
            const ushort c = text[m_pos];
            if (c == end || c == otherEnd)
                break;
            if (c != '"' && c != '\'')
                continue;
            ++quoted;
            if ((m_pos = m_text.indexOf(QChar(c), m_pos + 1)) < 0)
                m_pos = size;
        }
        return quoted;
    }

    bool takeDocumentType()
    {
        skipQuotedUpTo('[', '>');
        if (m_pos >= m_text.size() || m_text.at(m_pos) == '>')
            return true;
        while (m_pos < m_text.size()) {
            skipQuotedUpTo('<', ']');
            if (m_pos >= m_text.size() || m_text.at(m_pos) == ']')
                break;
            if (!skipCommentOrInstruction() && !takeDeclaration())
                return false;
            --m_pos; // skipQuotedUpTo() starts behind its position
        }
        skipPast(">", m_pos);
        m_content = m_pos;
        return true;
    }

    bool takeDeclaration()
    {
        const int begin = m_pos;
        const QLatin1String entity("<!ENTITY");
        const bool isEntity = at(entity);
        skipQuotedUpTo('>', '>');
        const QStringView declaration = QStringView(m_text).mid(begin, m_pos - begin);
        if (m_pos >= m_text.size())
            return true;
        ++m_pos;
        if (!isEntity)
            return true;
        m_hasEntities = true;
        return m_entities.declare(utf8(declaration.mid(entity.size()))) == nullptr;
    }

    // References of comments and CDATA sections count as well: nobody writes so many there in good faith.
    // What no declaration knows is left to the parser.
    qint64 expansion() const
    {
        qint64 bytes = 0;
        for (int at = m_hasEntities ? m_text.indexOf('&', m_content) : -1;
             at >= 0 && bytes <= kMaximumXmlExpansion; at = m_text.indexOf('&', at + 1)) {
            const int end = m_text.indexOf(';', at);
            if (end < 0)
                break;
            if (end - at <= kLongestReference)
                bytes += growth(QStringView(m_text).mid(at + 1, end - at - 1));
        }
        return bytes;
    }

    qint64 growth(QStringView name) const
    {
        const size_t size = m_entities.sizeOf(utf8(name)).value_or(0);
        return qint64(std::min<size_t>(size, kMaximumXmlExpansion + 1)); // sizes go beyond all numbers
    }

    static std::string utf8(QStringView text) { return text.toUtf8().toStdString(); }

    static constexpr int kLongestReference = 1024;

    const QString& m_text;
    int m_pos = 0;
    int m_depth = 0;
    size_t m_elements = 0;
    int m_content = 0; // behind the document type
    bool m_hasEntities = false;
    xml_entities::Entities m_entities;
};

} // namespace

bool isSafeToParse(const QString& text)
{
    return MarkupWalk(text).isSafe();
}

} // namespace ie
