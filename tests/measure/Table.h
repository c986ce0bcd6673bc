#pragma once

#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <stdexcept>
#include <vector>

namespace veltor::test {

/// The rows of a table in the data directory, split at commas; comment lines start with '#'.
inline std::vector<QStringList> readTable(const char* name)
{
    QFile file(QString::fromUtf8(MEASURE_DATA "/") + QString::fromUtf8(name));
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error(file.errorString().toStdString());
    }
    std::vector<QStringList> rows;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (!line.startsWith(QLatin1Char('#'))) {
            rows.push_back(line.split(QLatin1Char(',')));
        }
    }
    return rows;
}

} // namespace veltor::test
