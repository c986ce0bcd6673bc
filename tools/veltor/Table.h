#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <string>
#include <vector>

namespace veltor::tool {

/// Rows of text columns for a person: the first column to the left, the others, numbers, to the right.
class Table
{
public:
    explicit Table(const QStringList& head) { m_rows.push_back(head); }
    void add(const QStringList& row) { m_rows.push_back(row); }
    /// To standard output; on a terminal, unless NO_COLOR is set, the head is bold.
    void print() const;

private:
    std::vector<QStringList> m_rows;
};

/// A field of CSV (RFC 4180): between quotes where it must be.
[[nodiscard]] std::string csvField(const QString& text);

} // namespace veltor::tool
