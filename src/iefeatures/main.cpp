#include "iefeatures/commands/Companion.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/OperatingSystem.h"
#include "own_files/OwnFiles.h"

#include <QCoreApplication>
#include <QTextCodec>

#include <cstdio>
#include <iostream>

namespace
{

// A machine without a locale (cron, containers) would turn every other letter in names and paths into "?".
void useUtf8InPlainLocale()
{
    const QByteArray name = QTextCodec::codecForLocale()->name().toUpper();
    if (name == "US-ASCII" || name == "ANSI_X3.4-1968")
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

int runProgram(int argc, char** argv)
{
    own_files::keepFromOthers();
    // Qt takes its own options out of argv.
    std::vector<char*> words(argv, argv + argc);
    const QCoreApplication application(argc, argv);
    const std::vector<std::string> arguments =
        companion::programArguments(static_cast<int>(words.size()), words.data());
    companion::prepareOutput();
    useUtf8InPlainLocale();
    companion::ignoreBrokenPipes();
    companion::failWritesBeyondLimit();
    const bool redraws = companion::isTerminal(companion::StandardStream::Error);
    companion::Console console(std::cout, std::cerr, redraws, redraws && companion::wantsColour());
    return companion::runCompanion(arguments, {console});
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return runProgram(argc, argv);
    } catch (...) { // not even enough to tell of it as usual
        std::fputs("There is not enough memory.\n", stderr);
        return companion::ExitInputOutput;
    }
}
