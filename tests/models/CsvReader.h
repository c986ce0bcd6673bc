#pragma once

#include <QtCore/QStringList>

#include <optional>
#include <utility>
#include <vector>

namespace veltor::test {

using CsvTable = std::vector<QStringList>;

/// What a reader by the letter of RFC 4180 makes of a text; nothing of one that breaks its rules.
inline std::optional<CsvTable> readCsv(const QString& text, QChar delimiter, QChar quote,
                                       const QString& lineEnd)
{
    CsvTable lines;
    QStringList fields;
    for (int at = 0; at < text.size();) {
        QString field;
        if (text.at(at) == quote) {
            for (++at; at < text.size() && (text.at(at) != quote || text.mid(at + 1, 1) == QString(quote));
                 ++at) {
                at += text.at(at) == quote ? 1 : 0;
                field += text.at(at);
            }
            ++at;
        } else {
            while (at < text.size() && text.at(at) != delimiter && text.mid(at, lineEnd.size()) != lineEnd) {
                field += text.at(at++);
            }
        }
        fields << field;
        if (text.mid(at, 1) == QString(delimiter)) {
            ++at;
            continue;
        }
        if (text.mid(at, lineEnd.size()) != lineEnd) {
            return std::nullopt;
        }
        at += lineEnd.size();
        lines.push_back(std::exchange(fields, {}));
    }
    return fields.isEmpty() ? std::optional(lines) : std::nullopt;
}

} // namespace veltor::test
