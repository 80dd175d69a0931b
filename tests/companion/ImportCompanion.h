// Exports of emulated cameras to import again, whole or altered.
#pragma once

#include "companion/CompanionFixture.h"

#include <QFile>

namespace tests
{

class ImportCompanion : public CompanionTest
{
protected:
    // Exports the camera and gives the file's name in the folder.
    std::string exported(const std::string& serial, const Arguments& more = {})
    {
        Arguments arguments{"export", "--serial", serial, "--to", folder()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Result run = runInProcess(arguments);
        EXPECT_EQ(run.code, 0) << run.err;
        return "EMU-1_" + serial + ".fpk";
    }

    void write(const std::string& name, const QByteArray& text)
    {
        QFile file(QString::fromStdString(path(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(text), text.size());
    }

    // A copy in which one text has taken the place of another that stands there.
    std::string altered(const std::string& name, const QByteArray& text, const QByteArray& by)
    {
        QByteArray content = fileText(name);
        EXPECT_EQ(content.count(text), 1) << text.toStdString();
        write("altered.fpk", content.replace(text, by));
        return "altered.fpk";
    }

    // Of the log in the user's data folder: what the command that ended last has left.
    std::string lastAuditLine() const
    {
        const QByteArrayList lines = fileText("user-data/Audit/iefeatures.jsonl").trimmed().split('\n');
        return lines.last().toStdString();
    }

    static QByteArray feature(const char* name, const char* type, const char* value)
    {
        return QByteArray("<Feature>\r\n<Name>") + name + "</Name>\r\n<Type>" + type + "</Type>\r\n<Value>" +
               value + "</Value>\r\n<Streamable>Yes</Streamable>\r\n</Feature>\r\n";
    }

    Result import(const std::string& name, const Arguments& more = {"--all"})
    {
        Arguments arguments{"import", path(name)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runInProcess(arguments);
    }
};

} // namespace tests
