#pragma once

// Lets GoogleTest print Qt's values in failure messages.

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <ostream>

QT_BEGIN_NAMESPACE

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << '"' << bytes.toPercentEncoding(" /:{}\"',").toStdString() << '"';
}

QT_END_NAMESPACE
