// Where the companion writes: results to one stream, messages and progress to the other, all in UTF-8,
// without what a terminal would act on but ends of lines. May be used from any thread.
#pragma once

#include "iefeatures/console/Terminal.h"

#include <nlohmann/json_fwd.hpp>

#include <QString>
#include <QStringList>

#include <mutex>
#include <ostream>
#include <string>

namespace companion
{

using Json = nlohmann::ordered_json; // keys stay in their order; JsonLine.h makes them

class Console
{
public:
    // `redraws`: the message stream is a terminal, on which progress may be drawn over itself.
    Console(std::ostream& out, std::ostream& err, bool redraws, bool colours);

    // A result; flushed, so that a script can follow line by line.
    void out(const std::string& text);
    void out(const QString& text) { out(text.toStdString()); }
    // A message; a progress block that stands there is drawn again below it. For scripts it stands in the
    // closing object as well.
    void err(const std::string& text);
    void err(const QString& text) { err(text.toStdString()); }
    // The same without a place in the closing object: log lines, how far something is.
    void note(const std::string& text);
    void note(const QString& text) { note(text.toStdString()); }

    // From now on the results of this command are told to scripts (JsonLine.h).
    void beginJson(const std::string& command);
    bool isJson() const;
    // One result; nothing where people are told.
    void object(const char* kind, const Json& fields);
    // The closing object, which every command has, whatever it came to: {"kind":"end","exit":0,...}. Then
    // nothing more is an object.
    void endJson(int exitCode);

    // A block of lines at the lower end of the terminal that takes the place of the block before it; an empty
    // one takes the block away. Nothing happens where the stream does not redraw. The lines must fit the
    // terminal.
    void drawBlock(const QStringList& lines);

    bool redraws() const { return m_redraws; }
    bool colours() const { return m_colours; }
    TerminalSize size() const { return terminalSize(StandardStream::Error); }
    // False once a result could not be written.
    bool isOutGood() const;
    // Whether the reader of the results has left ("| head"), so that nobody misses the rest.
    bool isReaderGone() const;

private:
    void eraseBlock();
    void paintBlock();
    void write(const std::string& message);

    mutable std::mutex m_mutex;
    std::ostream& m_out;
    std::ostream& m_err;
    const bool m_redraws;
    const bool m_colours;
    bool m_isReaderGone = false;
    std::string m_jsonCommand; // empty: people are told
    QStringList m_messages;    // for the closing object
    QStringList m_block;
};

} // namespace companion
