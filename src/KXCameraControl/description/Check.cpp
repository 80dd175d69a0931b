// A look over a description before a parser sees it: what a parser would crash on, hang on or blow up on is
// found here in one pass without recursion and without memory but the open elements' and the entities' names.
#include "KXCameraControl/description/Check.h"

#include "xml_entities/Entities.h"
#include "xml_entities/Limits.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace kx
{

namespace
{

class XmlScanner
{
public:
    explicit XmlScanner(std::string_view text) : m_text(text) {}

    // Null when all is well, else what is wrong.
    const char* scan()
    {
        skipByteOrderMark();
        while (m_at < m_text.size()) {
            const char* problem = m_text[m_at] == '<' ? scanMarkup() : scanText();
            if (problem)
                return problem;
        }
        if (!m_open.empty())
            return "it is cut short";
        return m_rootSeen ? nullptr : "it is no XML";
    }

private:
    static bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

    static bool endsName(char c)
    {
        return isSpace(c) || c == '>' || c == '/' || c == '<' || c == '=' || c == '"' || c == '\'' || c == 0;
    }

    bool startsWith(std::string_view what) const { return m_text.compare(m_at, what.size(), what) == 0; }

    void skipByteOrderMark()
    {
        if (startsWith("\xEF\xBB\xBF"))
            m_at += 3;
    }

    const char* scanText()
    {
        const std::string_view text = m_text.substr(m_at, m_text.find('<', m_at) - m_at);
        m_at += text.size();
        if (m_open.empty() && text.find_first_not_of(" \t\r\n") != std::string_view::npos)
            return "it is no XML";
        return expand(text);
    }

    // Of text and attributes, where entities are put in.
    const char* expand(std::string_view text)
    {
        if (const char* problem = m_entities.addExpansion(text, m_expansion))
            return problem;
        return m_expansion > maximumParsedBytes - m_text.size() ? "its entities make it too long" : nullptr;
    }

    const char* scanMarkup()
    {
        if (startsWith("<!--"))
            return skipPast("-->", 4);
        if (startsWith("<![CDATA["))
            return m_open.empty() ? "it is no XML" : skipPast("]]>", 9);
        if (startsWith("<?"))
            return skipPast("?>", 2);
        if (startsWith("<!"))
            return scanDocumentType();
        return startsWith("</") ? scanEndTag() : scanStartTag();
    }

    const char* skipPast(std::string_view end, size_t skipped)
    {
        const auto found = m_text.find(end, m_at + skipped);
        if (found == std::string_view::npos)
            return "it is cut short";
        m_at = found + end.size();
        return nullptr;
    }

    // Whatever it names outside this text is not looked at.
    const char* scanDocumentType()
    {
        if (!startsWith("<!DOCTYPE") || m_rootSeen)
            return "it is no XML";
        if (!skipToMarkup("[>"))
            return "it is cut short";
        if (m_text[m_at] == '[') {
            if (const char* problem = scanDeclarations())
                return problem;
            if (!skipToMarkup(">"))
                return "it is cut short";
        }
        ++m_at;
        return nullptr;
    }

    const char* scanDeclarations()
    {
        while (skipToMarkup("<]")) {
            if (m_text[m_at] == ']')
                return nullptr;
            const char* problem = nullptr;
            if (startsWith("<!--"))
                problem = skipPast("-->", 4);
            else if (startsWith("<?"))
                problem = skipPast("?>", 2);
            else
                problem = scanDeclaration();
            if (problem)
                return problem;
            --m_at; // skipToMarkup() starts behind its place
        }
        return "it is cut short";
    }

    const char* scanDeclaration()
    {
        constexpr std::string_view entity = "<!ENTITY";
        const size_t start = m_at;
        const bool isEntity = startsWith(entity);
        // Attributes that are given to every element of a kind would have to be measured as well.
        if (!isEntity && !startsWith("<!ELEMENT") && !startsWith("<!NOTATION"))
            return "it declares more than entities";
        if (!skipToMarkup(">"))
            return "it is cut short";
        const std::string_view declaration = m_text.substr(start, m_at - start);
        ++m_at;
        return isEntity ? m_entities.declare(declaration.substr(entity.size())) : nullptr;
    }

    // To the next of `ends` behind the place where it stands, outside quotes.
    bool skipToMarkup(std::string_view ends)
    {
        for (++m_at; m_at < m_text.size() && ends.find(m_text[m_at]) == std::string_view::npos; ++m_at) {
            const char c = m_text[m_at];
            if (c == '"' || c == '\'')
                m_at = std::min(m_text.find(c, m_at + 1), m_text.size() - 1);
        }
        return m_at < m_text.size();
    }

    std::string_view takeName()
    {
        const size_t start = m_at;
        while (m_at < m_text.size() && !endsName(m_text[m_at]))
            ++m_at;
        return m_text.substr(start, m_at - start);
    }

    const char* scanEndTag()
    {
        m_at += 2;
        const std::string_view name = takeName();
        while (m_at < m_text.size() && isSpace(m_text[m_at]))
            ++m_at;
        if (m_at == m_text.size())
            return "it is cut short";
        if (m_text[m_at] != '>' || m_open.empty() || m_open.back() != name)
            return "its tags do not match";
        ++m_at;
        m_open.pop_back();
        return nullptr;
    }

    const char* scanStartTag()
    {
        ++m_at;
        const std::string_view name = takeName();
        if (name.empty() || (m_open.empty() && m_rootSeen))
            return "it is no XML";
        m_rootSeen = true;
        if (++m_elements > xml_entities::maximumElements)
            return "it has too many elements";
        const size_t attributes = m_at;
        size_t count = 0;
        if (!skipAttributes(count))
            return m_at >= m_text.size() ? "it is cut short" : "its tags do not match";
        if (count > xml_entities::maximumAttributes)
            return "an element has too many attributes";
        if (const char* problem = expand(m_text.substr(attributes, m_at - attributes)))
            return problem;
        const bool isEmptyElement = m_text[m_at - 1] == '/';
        ++m_at;
        if (isEmptyElement)
            return nullptr;
        if (m_open.size() >= maximumXmlDepth)
            return "it is nested too deeply";
        m_open.push_back(name);
        return nullptr;
    }

    // Stops on the '>' of the tag; a '>' within quotes does not end it.
    bool skipAttributes(size_t& count)
    {
        for (; m_at < m_text.size() && m_text[m_at] != '>'; ++m_at) {
            const char c = m_text[m_at];
            if (c == '<')
                return false;
            if (c == '"' || c == '\'') {
                m_at = std::min(m_text.find(c, m_at + 1), m_text.size() - 1);
                ++count;
            }
        }
        return m_at < m_text.size();
    }

    std::string_view m_text;
    size_t m_at = 0;
    bool m_rootSeen = false;
    size_t m_elements = 0;
    xml_entities::Entities m_entities;
    size_t m_expansion = 0; // bytes that the entities grow to
    std::vector<std::string_view> m_open;
};

} // namespace

bool isParsable(const std::string& text, std::string& problem)
{
    const char* reason = nullptr;
    if (text.size() > maximumParsedBytes)
        reason = "it is too long";
    else
        reason = XmlScanner(text).scan();
    if (!reason)
        return true;
    problem = std::string("The description cannot be used: ") + reason + ".";
    return false;
}

} // namespace kx
