#include "iefeatures/console/Console.h"

#include <cerrno>

namespace companion
{

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
    m_out << text << std::flush;
    m_isReaderGone = m_isReaderGone || (!m_out.good() && errno == EPIPE);
    paintBlock();
}

void Console::err(const std::string& text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    eraseBlock();
    m_err << text;
    paintBlock();
    m_err.flush();
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
