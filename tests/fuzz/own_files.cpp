// Files that the programs write for themselves and find again, whatever has become of them: the window's
// settings, the log's, the journal of a replacement, the lock of a line, the cache of descriptions, a
// snapshot's name.
#include "KXCameraControl/description/DescriptionFolder.h"
#include "fuzz/Scripted.h"

#include "SuiteTools/widgets/LogPattern.h"
#include "SuiteTools/widgets/LogSettings.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/line/LineLock.h"
#include "iefeatures/replace/ReplacementJournal.h"
#include "window/LocalConfig.h"

namespace
{

using namespace companion;

void checkText(const QString& text)
{
    for (const uint character : text.toUcs4())
        fuzz::promise(!actsOnTerminal(character), "nothing acts on a terminal");
}

void readSettings(const QString& folder, const uint8_t* data, size_t size)
{
    qputenv("VELA_PROGRAM_DATA", folder.toLocal8Bit());
    static fuzz::InputFile file(folder + "/LocalConfig.ini");
    file.write(data, size);
    LocalConfig::columnMask(nullptr);
    LocalConfig::encodingType(nullptr);
}

void readLogConfig(const QByteArray& text)
{
    const VELAInterface::LogSettings settings = VELAInterface::readLogSettings(text);
    for (const VELAInterface::LogAppender& appender : settings.appenders) {
        fuzz::promise(!appender.file.isEmpty() && appender.backups >= 1 && appender.backups <= 13,
                      "an appender has a file, and keeps 1 to 13 more");
        const VELAInterface::LogLine line{
            QDateTime::fromMSecsSinceEpoch(0), "INFO", "0x1", "f.cpp", 7, "void C::f(int)", text};
        fuzz::promise(VELAInterface::formatted(line, appender.pattern).size() <=
                          appender.pattern.size() * (1000 + text.size()),
                      "a line is no longer than what it is made of and some blanks");
    }
    VELAInterface::functionName(text);
}

void readJournal(const QString& folder, const uint8_t* data, size_t size)
{
    const ReplacementJournal journal(folder + "/line.toml", "camera 1");
    static fuzz::InputFile file(journal.path());
    file.write(data, size);
    QString problem;
    const auto record = journal.read(problem);
    fuzz::promise(record.has_value() != !problem.isEmpty(), "what cannot be read is told");
    checkText(problem);
    if (record)
        checkText(record->title());
}

void meetLock(const QString& folder, const uint8_t* data, size_t size)
{
    const QString inventory = folder + "/locked.toml";
    {
        fuzz::InputFile(inventory + ".lock").write(data, size);
    }
    LineLock lock(inventory);
    checkText(lock.take());
}

void readCache(const QString& folder, const uint8_t* data, size_t size)
{
    static const digest::Sha256 key = digest::sha256(std::string("key"));
    static const bool isStored = [&] {
        kx::DescriptionFolder(folder.toStdString() + "/cache").store(key, "a description");
        return true;
    }();
    fuzz::promise(isStored, "the cache takes a description");
    static fuzz::InputFile file(folder + "/cache/" + QString::fromStdString(digest::hexText(key)) + ".key");
    file.write(data, size);
    const auto found = kx::DescriptionFolder(folder.toStdString() + "/cache").find(key);
    fuzz::promise(!found || *found == "a description", "only what was stored is found");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::prepareQt();
    static const QString folder = fuzz::newFolder();
    readSettings(folder, data, size);
    readLogConfig(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    readJournal(folder, data, size);
    meetLock(folder, data, size);
    readCache(folder, data, size);
    return 0;
}
