#include "iefeatures/console/Console.h"

#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"

#include <cerrno>

namespace companion
{
namespace
{

constexpr int kMostMessages = 1000; // in the closing object

// Whoever has forgotten that a name or a text comes from a camera or a file: no terminal acts on it.
std::string harmless(const std::string& text)
{
    return printableText(QString::fromStdString(text)).toStdString();
}

} // namespace

Console::Console(std::ostream& out, std::ostream& err, bool redraws, bool colours)
    : m_out(out), m_err(err), m_redraws(redraws), m_colours(colours)
{}

// Both streams usually end on one terminal, so a result has to step around the block as well.
void Console::out(const std::string& text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    eraseBlock();
    m_err.flush();
    errno = 0;
    m_out << harmless(text) << std::flush;
    m_isReaderGone = m_isReaderGone || (!m_out.good() && errno == EPIPE);
    paintBlock();
}

void Console::err(const std::string& text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_jsonCommand.empty() && m_messages.size() < kMostMessages)
        m_messages += QString::fromStdString(text).split('\n', Qt::SkipEmptyParts);
    write(text);
}

void Console::note(const std::string& text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    write(text);
}

void Console::write(const std::string& message)
{
    eraseBlock();
    m_err << harmless(message);
    paintBlock();
    m_err.flush();
}

void Console::beginJson(const std::string& command)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_jsonCommand = command;
}

bool Console::isJson() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return !m_jsonCommand.empty();
}

void Console::object(const char* kind, const Json& fields)
{
    std::string command;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        command = m_jsonCommand;
    }
    if (!command.empty())
        out(jsonLine(command, kind, fields));
}

void Console::endJson(int exitCode)
{
    object("end", {{"exit", exitCode}, {"messages", json(m_messages)}});
    beginJson({});
}

void Console::drawBlock(const QStringList& lines)
{
    if (!m_redraws)
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    eraseBlock();
    m_block = lines;
    paintBlock();
    m_err.flush();
}

bool Console::isOutGood() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_out.good();
}

bool Console::isReaderGone() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isReaderGone;
}

// Cursor up to the block's first line, then everything from there to the screen's end goes.
void Console::eraseBlock()
{
    if (!m_block.isEmpty())
        m_err << "\r\033[" << m_block.size() << "A\033[J";
}

void Console::paintBlock()
{
    for (const QString& line : m_block)
        m_err << line.toStdString() << '\n';
    if (!m_block.isEmpty())
        m_err.flush();
}

} // namespace companion
