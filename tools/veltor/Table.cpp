// Tables for people and fields for other programs.

#include "Table.h"

#include "Console.h"

#include <algorithm>

namespace veltor::tool {

void Table::print() const
{
    std::vector<int> widths(static_cast<std::size_t>(m_rows.front().size()));
    for (const QStringList& row : m_rows) {
        for (int column = 0; column < row.size(); ++column) {
            int& width = widths[static_cast<std::size_t>(column)];
            width = std::max(width, static_cast<int>(row[column].size()));
        }
    }
    bool isHead = hasColours();
    for (const QStringList& row : m_rows) {
        QString line = row[0].leftJustified(widths[0]);
        for (int column = 1; column < row.size(); ++column) {
            line +=
                QStringLiteral("  ") + row[column].rightJustified(widths[static_cast<std::size_t>(column)]);
        }
        tool::print(isHead ? QStringLiteral("\x1b[1m") + line + QStringLiteral("\x1b[0m\n")
                           : line + QLatin1Char('\n'));
        isHead = false;
    }
}

std::string csvField(const QString& text)
{
    std::string field = text.toStdString();
    if (field.find_first_of(",\"\r\n") == std::string::npos) {
        return field;
    }
    for (std::size_t at = field.find('"'); at != std::string::npos; at = field.find('"', at + 2)) {
        field.insert(at, 1, '"');
    }
    return '"' + field + '"';
}

} // namespace veltor::tool
