#include "iefeatures/console/Text.h"
#include "iefeatures/line/LineReport.h"

#include <QXmlStreamWriter>

namespace companion
{
namespace
{

// XML 1.0 has no place for these two, however they are written.
QString withoutNoCharacters(QString text, const QString& first, const QString& second)
{
    return text.replace(QChar(0xFFFE), first).replace(QChar(0xFFFF), second);
}

QString inXml(const QString& text)
{
    return withoutNoCharacters(printable(text), QChar(0xFFFD), QChar(0xFFFD));
}

// Cases are told apart by their names.
QString nameInXml(const QString& name)
{
    return withoutNoCharacters(escapedText(name), "\\ufffe", "\\uffff");
}

// Nobody has seen whether it is in order.
bool isError(LineState state)
{
    return state >= LineState::NotJudged;
}

void writeCase(QXmlStreamWriter& xml, const QString& line, const LineCameraCheck& one)
{
    const LineState state = one.match.state;
    xml.writeStartElement("testcase");
    xml.writeAttribute("classname", inXml(line));
    xml.writeAttribute("name", nameInXml(one.name()));
    if (state != LineState::InOrder) {
        QStringList problems = lineProblems(one);
        xml.writeStartElement(isError(state) ? "error" : "failure");
        xml.writeAttribute("message", lineStateWord(state));
        xml.writeCharacters(inXml(problems.join("; ")));
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

} // namespace

QByteArray lineJunit(const Inventory& inventory, const LineCheck& check)
{
    int errors = 0, failures = 0;
    for (const LineCameraCheck& one : check.cameras)
        if (one.match.state != LineState::InOrder)
            ++(isError(one.match.state) ? errors : failures);
    QByteArray text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement("testsuite");
    xml.writeAttribute("name", inXml(inventory.name));
    xml.writeAttribute("tests", QString::number(check.cameras.size()));
    xml.writeAttribute("failures", QString::number(failures));
    xml.writeAttribute("errors", QString::number(errors));
    xml.writeAttribute("timestamp", check.begun.toString("yyyy-MM-ddTHH:mm:ss"));
    for (const LineCameraCheck& one : check.cameras)
        writeCase(xml, inventory.name, one);
    xml.writeEndElement();
    xml.writeEndDocument();
    return text;
}

} // namespace companion
