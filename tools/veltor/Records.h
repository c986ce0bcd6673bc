#pragma once

#include "JsonText.h"

#include <string>
#include <string_view>
#include <vector>

namespace veltor::tool {

/// How `distance` and `geodesic` print.
enum class RecordFormat
{
    Text,
    Csv,
    Json
};

/// One named value of a record.
struct Field
{
    std::string_view name;
    double value;
    int digits; ///< behind the point, in text
};

/// Records of numbers, one after the other: as text a line each or, for a single one, a line a value; as CSV
/// with a header; as JSON an object a line, with as many digits as the value has.
class Records
{
public:
    /// @param names   of the columns, for the headers
    /// @param header  whether text has one too
    Records(RecordFormat format, std::vector<std::string_view> names, bool header);

    /// @param doubtful  names of the values that are far off
    void add(const std::vector<Field>& fields, const std::vector<std::string_view>& doubtful = {});
    /// A value a line, points below each other.
    void addList(const std::vector<Field>& fields, const std::vector<std::string_view>& doubtful = {});

private:
    void printHeader();
    void addJson(const std::vector<Field>& fields, const std::vector<std::string_view>& doubtful);

    RecordFormat m_format;
    std::vector<std::string_view> m_names;
    bool m_needsHeader;
    bool m_hasDoubts = false;
    JsonText m_json;
    std::string m_text;
};

} // namespace veltor::tool
