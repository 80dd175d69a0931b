// Lets GoogleTest print Qt's texts when an expectation fails.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <ostream>

inline void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QByteArray& bytes, std::ostream* stream)
{
    *stream << '"' << bytes.toStdString() << '"';
}

inline void PrintTo(const QStringList& texts, std::ostream* stream)
{
    *stream << '[' << texts.join(", ").toStdString() << ']';
}
