// What the operating system knows of a terminal.
#pragma once

namespace companion
{

struct TerminalSize
{
    int columns = 80;
    int rows = 24;
};

enum class StandardStream
{
    Input = 0,
    Output = 1,
    Error = 2
};

// A terminal that understands control sequences: TERM is not "dumb".
bool isTerminal(StandardStream stream);
// The usual size where the terminal does not tell.
TerminalSize terminalSize(StandardStream stream);
// False when NO_COLOR is set to anything but an empty text (no-color.org).
bool wantsColour();
// What is written is UTF-8 with line feeds, whatever it is written to; and control sequences work in consoles
// that know them. Once, before the first output.
void prepareOutput();
// A reader that goes away makes writes fail instead of ending the process, which may hold cameras.
void ignoreBrokenPipes();

} // namespace companion
