#include "jobs/description/DescriptionDom.h"

#include <QDomElement>
#include <QHash>
#include <QStringView>

#include <algorithm>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ie
{
namespace
{

// Equal texts as one string.
class Strings
{
public:
    QString of(QStringView text)
    {
        const auto known = m_strings.find(text);
        if (known != m_strings.end())
            return known->second;
        const QString string = text.toString();
        m_strings.emplace(string, string);
        return string;
    }

private:
    struct Hash
    {
        std::size_t operator()(QStringView text) const { return qHash(text); }
    };
    std::unordered_map<QStringView, QString, Hash> m_strings; // the keys are views of their values
};

enum Character : unsigned char
{
    Blank = 1,
    NameStart = 2,
    NamePart = 4,
    Plain = 8 // stands for itself between tags
};

struct Characters
{
    constexpr Characters()
    {
        for (unsigned c = 0x20; c < 0x80; ++c)
            kinds[c] = Plain;
        for (const char c : {' ', '\t', '\n', '\r'})
            kinds[static_cast<unsigned char>(c)] = Blank | Plain;
        for (const char c : {'<', '&'})
            kinds[static_cast<unsigned char>(c)] = 0;
        for (unsigned c = 0; c < 26; ++c) {
            kinds['a' + c] |= NameStart | NamePart;
            kinds['A' + c] |= NameStart | NamePart;
        }
        for (unsigned c = '0'; c <= '9'; ++c)
            kinds[c] |= NamePart;
        kinds[static_cast<unsigned char>('_')] |= NameStart | NamePart;
        kinds[static_cast<unsigned char>('-')] |= NamePart;
        kinds[static_cast<unsigned char>('.')] |= NamePart;
    }
    unsigned char kinds[128] = {};
};
constexpr Characters kCharacters;

bool is(QChar c, unsigned kinds)
{
    return c.unicode() < 128 ? (kCharacters.kinds[c.unicode()] & kinds) != 0
                             : (kinds & Plain) != 0 && c.unicode() < 0xD800;
}

// Reads the elements, texts and comments that descriptions consist of. Whatever else there may be in an XML
// text is left to Qt's parser, which then reads all of it: so this one decides nothing about what is
// well-formed.
class PlainParser
{
public:
    PlainParser(const QString& text, QDomDocument& document)
        : m_text(text.constData()), m_end(m_text + text.size()), m_at(m_text), m_document(document)
    {}

    // False: it is no plain text.
    bool parse()
    {
        QStringView root;
        const QChar* content = nullptr;
        if (!skipProlog() || !takeName(root, m_at + 1) || !skipRootTag(content))
            return false;
        m_at = content;
        const QChar* const contentEnd = findRootEnd(root);
        if (!contentEnd)
            return false;
        // The document's own parts and its element's attributes are Qt's: the text without what is inside.
        const QString frame =
            QString(m_text, int(content - m_text)) + QString(contentEnd, int(m_end - contentEnd));
        if (!m_document.setContent(frame))
            return false;
        m_end = contentEnd;
        m_open.push_back({m_document.documentElement(), root});
        while (m_at < m_end) {
            if (!(*m_at == QLatin1Char('<') ? takeMarkup() : takeText()))
                return false;
        }
        return m_open.size() == 1;
    }

private:
    struct Open
    {
        QDomElement element;
        QStringView name;
    };

    bool startsWith(const char* word) const
    {
        const QChar* at = m_at;
        for (; *word; ++word, ++at) {
            if (at == m_end || *at != QLatin1Char(*word))
                return false;
        }
        return true;
    }

    // Behind the next `end` at or after `from`; null where there is none.
    const QChar* behind(QLatin1String end, const QChar* from) const
    {
        const int found = int(QStringView(from, m_end).indexOf(end));
        return found < 0 ? nullptr : from + found + end.size();
    }

    void skipBlanks()
    {
        while (m_at < m_end && is(*m_at, Blank))
            ++m_at;
    }

    bool skipProlog()
    {
        while (m_at < m_end) {
            if (is(*m_at, Blank) || *m_at == QChar(QChar::ByteOrderMark)) {
                ++m_at;
                continue;
            }
            const bool isComment = startsWith("<!--");
            if (!isComment && !startsWith("<?"))
                return *m_at == QLatin1Char('<'); // a document type is no name
            m_at = isComment ? behind(QLatin1String("-->"), m_at + 4) : behind(QLatin1String("?>"), m_at + 2);
            if (!m_at)
                return false;
        }
        return false;
    }

    bool takeName(QStringView& name, const QChar* from)
    {
        m_at = from;
        if (m_at >= m_end || !is(*m_at, NameStart))
            return false;
        while (m_at < m_end && is(*m_at, NamePart))
            ++m_at;
        name = QStringView(from, m_at);
        return true;
    }

    bool skipRootTag(const QChar*& content)
    {
        for (; m_at < m_end && *m_at != QLatin1Char('>'); ++m_at) {
            if (*m_at == QLatin1Char('<'))
                return false;
            if (*m_at == QLatin1Char('"') || *m_at == QLatin1Char('\'')) {
                const int found = int(QStringView(m_at + 1, m_end).indexOf(*m_at));
                if (found < 0)
                    return false;
                m_at += found + 1;
            }
        }
        if (m_at >= m_end || *(m_at - 1) == QLatin1Char('/'))
            return false;
        content = m_at + 1;
        return true;
    }

    // The last end tag of the text, if it is the root's. What stands behind it cannot hold another.
    const QChar* findRootEnd(QStringView root) const
    {
        const int found = int(QStringView(m_at, m_end).lastIndexOf(QLatin1String("</")));
        if (found < 0)
            return nullptr;
        const QChar* const name = m_at + found + 2;
        return QStringView(name, m_end).startsWith(root) ? m_at + found : nullptr;
    }

    bool takeMarkup()
    {
        if (m_at + 1 >= m_end)
            return false;
        const QChar next = m_at[1];
        if (next == QLatin1Char('/'))
            return takeEndTag();
        if (next == QLatin1Char('!'))
            return startsWith("<![CDATA[") ? takeCharacterData() : takeComment();
        return takeStartTag();
    }

    bool takeComment()
    {
        if (!startsWith("<!--"))
            return false;
        const QChar* const begin = m_at + 4;
        const QChar* const dashes = behind(QLatin1String("--"), begin);
        if (!dashes || dashes >= m_end || *dashes != QLatin1Char('>'))
            return false;
        for (const QChar* c = begin; c != dashes - 2; ++c) {
            if (!is(*c, Plain) && *c != QLatin1Char('<') && *c != QLatin1Char('&'))
                return false;
        }
        m_open.back().element.appendChild(m_document.createComment(QString(begin, int(dashes - 2 - begin))));
        m_at = dashes + 1;
        return true;
    }

    bool takeCharacterData()
    {
        const QChar* const begin = m_at + 9;
        const QChar* const end = behind(QLatin1String("]]>"), begin);
        if (!end)
            return false;
        m_open.back().element.appendChild(
            m_document.createCDATASection(QString(begin, int(end - 3 - begin))));
        m_at = end;
        return true;
    }

    bool takeEndTag()
    {
        const QStringView name = m_open.back().name;
        if (m_open.size() < 2 || m_end - m_at < name.size() + 3 ||
            m_at[2 + name.size()] != QLatin1Char('>') || QStringView(m_at + 2, name.size()) != name)
            return false;
        m_at += name.size() + 3;
        m_open.pop_back();
        return true;
    }

    bool takeStartTag()
    {
        QStringView name;
        if (!takeName(name, m_at + 1))
            return false;
        QDomElement element = m_document.createElement(m_strings.of(name));
        m_open.back().element.appendChild(element);
        for (;;) {
            skipBlanks();
            if (m_at >= m_end)
                return false;
            if (*m_at == QLatin1Char('>')) {
                ++m_at;
                m_open.push_back({element, name});
                return true;
            }
            if (*m_at == QLatin1Char('/')) {
                m_at += 2;
                return m_at <= m_end && m_at[-1] == QLatin1Char('>');
            }
            if (!takeAttribute(element))
                return false;
        }
    }

    bool takeAttribute(QDomElement& element)
    {
        QStringView name;
        if (!takeName(name, m_at))
            return false;
        skipBlanks();
        if (m_at >= m_end || *m_at++ != QLatin1Char('='))
            return false;
        skipBlanks();
        const QChar quote = m_at < m_end ? *m_at : QChar();
        if (quote != QLatin1Char('"') && quote != QLatin1Char('\''))
            return false;
        const QChar* const begin = m_at + 1;
        for (m_at = begin; m_at < m_end && *m_at != quote; ++m_at) {
            if (!is(*m_at, Plain))
                return false;
        }
        if (m_at >= m_end)
            return false;
        element.setAttribute(m_strings.of(name), m_strings.of(QStringView(begin, m_at)));
        ++m_at;
        return true;
    }

    // Up to the next tag. Blanks alone are no text, however they are written.
    bool takeText()
    {
        const QChar* const begin = m_at;
        bool isPlain = true;
        for (; m_at < m_end && *m_at != QLatin1Char('<'); ++m_at) {
            if (*m_at == QLatin1Char('&'))
                isPlain = false;
            else if (!is(*m_at, Plain) || (*m_at == QLatin1Char('>') && m_at - begin > 1 &&
                                           m_at[-1] == QLatin1Char(']') && m_at[-2] == QLatin1Char(']')))
                return false;
        }
        const QStringView text(begin, m_at);
        QString replaced;
        if (!isPlain && !replaceReferences(text, replaced))
            return false;
        const QStringView content = isPlain ? text : QStringView(replaced);
        if (!std::all_of(content.begin(), content.end(), [](QChar c) { return c.isSpace(); }))
            m_open.back().element.appendChild(m_document.createTextNode(m_strings.of(content)));
        return true;
    }

    static bool replaceReferences(QStringView text, QString& replaced)
    {
        for (qsizetype end = 0;; ++end) {
            const qsizetype begin = text.indexOf(QLatin1Char('&'), end);
            replaced.append(text.data() + end, int((begin < 0 ? text.size() : begin) - end));
            if (begin < 0)
                return true;
            end = text.indexOf(QLatin1Char(';'), begin);
            const QChar character = end < 0 ? QChar() : referenced(text.mid(begin + 1, end - begin - 1));
            if (character.isNull())
                return false;
            replaced += character;
        }
    }

    // Null for what is none of XML's own.
    static QChar referenced(QStringView name)
    {
        if (name.startsWith(QLatin1Char('#'))) {
            const bool isHex = name.startsWith(QLatin1String("#x"));
            bool isNumber = false;
            const uint number = name.mid(isHex ? 2 : 1).toString().toUInt(&isNumber, isHex ? 16 : 10);
            return isNumber && name.size() <= 6 && number <= 0xFFFF ? QChar(number) : QChar();
        }
        static const std::pair<QLatin1String, char> names[] = {{QLatin1String("amp"), '&'},
                                                               {QLatin1String("lt"), '<'},
                                                               {QLatin1String("gt"), '>'},
                                                               {QLatin1String("quot"), '"'},
                                                               {QLatin1String("apos"), '\''}};
        for (const auto& [known, character] : names) {
            if (name == known)
                return QLatin1Char(character);
        }
        return {};
    }

    const QChar* const m_text;
    const QChar* m_end;
    const QChar* m_at;
    QDomDocument& m_document;
    std::vector<Open> m_open;
    Strings m_strings;
};

} // namespace

bool parseDescription(const QString& text, QDomDocument& document)
{
    if (PlainParser(text, document).parse())
        return true;
    document = QDomDocument();
    return document.setContent(text);
}

} // namespace ie
