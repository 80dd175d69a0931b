#include "jobs/file/XmlSafety.h"

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
        const int size = m_text.size();
        while ((m_pos = m_text.indexOf('<', m_pos)) >= 0 && m_pos < size) {
            if (!skipCommentOrInstruction() && !takeMarkup())
                return false;
        }
        return m_longestEntity * m_text.count('&') <= kMaximumXmlExpansion;
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
        skipQuotedUpTo('>', '>');
        const bool isEmptyElement = m_pos > 0 && m_pos < m_text.size() && m_text.at(m_pos - 1) == '/';
        const int depth = m_depth + 1;
        if (!isEmptyElement)
            m_depth = depth;
        return depth <= kMaximumXmlDepth;
    }

    // To the next `end` or `otherEnd` that stands outside quotes; to the text's end when there is none.
    void skipQuotedUpTo(ushort end, ushort otherEnd)
    {
        const ushort* text = m_text.utf16();
        const int size = m_text.size();
        for (++m_pos; m_pos < size; ++m_pos) {
            const ushort c = text[m_pos];
            if (c == end || c == otherEnd)
                return;
            if ((c == '"' || c == '\'') && (m_pos = m_text.indexOf(QChar(c), m_pos + 1)) < 0)
                m_pos = size;
        }
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
        return true;
    }

    bool takeDeclaration()
    {
        const int begin = m_pos;
        const bool isEntity = at(QLatin1String("<!ENTITY"));
        skipQuotedUpTo('>', '>');
        const QStringView declaration = QStringView(m_text).mid(begin + 1, m_pos - begin - 1);
        if (m_pos < m_text.size())
            ++m_pos;
        if (!isEntity)
            return true;
        m_longestEntity = std::max<qint64>(m_longestEntity, declaration.size());
        return !declaration.contains('<') && !declaration.contains('&') && !declaration.contains('%');
    }

    const QString& m_text;
    int m_pos = 0;
    int m_depth = 0;
    qint64 m_longestEntity = 0;
};

} // namespace

bool isSafeToParse(const QString& text)
{
    return MarkupWalk(text).isSafe();
}

} // namespace ie
