// Records of numbers as text, CSV and JSON.

#include "Records.h"

#include "Console.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace veltor::tool {
namespace {

void appendFixed(std::string& text, double value, int digits)
{
    std::array<char, 400> buffer; // the longest fixed double has 309 before the point
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, digits);
    text.append(buffer.data(), result.ptr);
}

bool holds(const std::vector<std::string_view>& names, std::string_view name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

Records::Records(RecordFormat format, std::vector<std::string_view> names, bool header)
    : m_format(format)
    , m_names(std::move(names))
    , m_needsHeader(format == RecordFormat::Csv || (header && format == RecordFormat::Text))
    , m_hasDoubts(holds(m_names, "doubtful"))
    , m_json(json::JsonFormatter::formatCompact)
{}

void Records::printHeader()
{
    if (!std::exchange(m_needsHeader, false)) {
        return;
    }
    const bool isCsv = m_format == RecordFormat::Csv;
    for (std::size_t i = 0; i < m_names.size(); ++i) {
        if (isCsv || m_names[i] != "doubtful") {
            m_text += i == 0 ? "" : isCsv ? "," : " ";
            m_text += m_names[i];
        }
    }
    m_text += isCsv ? "\r\n" : "\n";
}

void Records::add(const std::vector<Field>& fields, const std::vector<std::string_view>& doubtful)
{
    m_text.clear();
    printHeader();
    if (m_format == RecordFormat::Json) {
        addJson(fields, doubtful);
        return;
    }
    const bool isCsv = m_format == RecordFormat::Csv;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        m_text += i == 0 ? "" : isCsv ? "," : " ";
        if (!isCsv) {
            appendFixed(m_text, fields[i].value, fields[i].digits);
        } else if (std::isfinite(fields[i].value)) {
            appendNumber(m_text, fields[i].value);
        }
    }
    if (isCsv && m_hasDoubts) {
        m_text += ',';
        for (std::size_t i = 0; i < doubtful.size(); ++i) {
            m_text += i == 0 ? "" : " ";
            m_text += doubtful[i];
        }
    }
    m_text += isCsv ? "\r\n" : "\n";
    print(m_text);
}

void Records::addJson(const std::vector<Field>& fields, const std::vector<std::string_view>& doubtful)
{
    m_json.beginObject();
    for (const Field& field : fields) {
        m_json.key(field.name);
        m_json.value(field.value);
    }
    if (!doubtful.empty()) {
        m_json.key("doubtful");
        m_json.beginArray();
        for (const std::string_view name : doubtful) {
            m_json.value(QString::fromLatin1(name.data(), static_cast<int>(name.size())));
        }
        m_json.end();
    }
    m_json.end();
    print(m_json.take() + '\n');
}

void Records::addList(const std::vector<Field>& fields, const std::vector<std::string_view>& doubtful)
{
    if (m_format != RecordFormat::Text) {
        add(fields, doubtful);
        return;
    }
    m_text.clear();
    int mostDigits = 0;
    for (const Field& field : fields) {
        mostDigits = std::max(mostDigits, field.digits);
    }
    for (const Field& field : fields) {
        std::string value;
        appendFixed(value, field.value, field.digits);
        const std::size_t width = 13 + static_cast<std::size_t>(field.digits);
        m_text += field.name;
        m_text.append(11 - std::min<std::size_t>(field.name.size(), 10), ' ');
        m_text.append(value.size() < width ? width - value.size() : 0, ' ');
        m_text += value;
        if (holds(doubtful, field.name)) {
            m_text.append(static_cast<std::size_t>(mostDigits - field.digits), ' ');
            m_text += "  " + Text::tr("ненадёжно: рядом с антиподом").toStdString();
        }
        m_text += '\n';
    }
    print(m_text);
}

} // namespace veltor::tool
