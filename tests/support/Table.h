#pragma once

#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <stdexcept>
#include <vector>

namespace veltor::test {

/// The rows of a table among the tests, split at a separator; lines that start with '#' are comments.
inline std::vector<QStringList> readTable(const char* name, char separator)
{
    QFile file(QString::fromUtf8(VELTOR_TESTS "/") + QString::fromUtf8(name));
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error(file.errorString().toStdString());
    }
    std::vector<QStringList> rows;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (!line.isEmpty() && !line.startsWith(QLatin1Char('#'))) {
            rows.push_back(line.split(QLatin1Char(separator), Qt::SkipEmptyParts));
        }
    }
    return rows;
}

} // namespace veltor::test
