#pragma once

#include <QtCore/QPointF>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Coordinates as people and programs write them.
namespace veltor::tool {

/// A number in the neutral notation, with a sign or without, or degrees, minutes and seconds as in
/// -12°30'15.25". Infinity, NaN and what is too large for a double are none; what is too small is 0.
[[nodiscard]] std::optional<double> parseNumber(std::string_view word);

/// Longitude and latitude in degrees. A latitude a hair beyond a pole is taken for it; farther it is none.
[[nodiscard]] std::optional<QPointF> parsePosition(std::string_view longitude, std::string_view latitude);

/// The words of a line: separated by blanks, tabs or commas, and quoted in no way.
void splitWords(std::string_view line, std::vector<std::string_view>& words);

/// Lines of standard input, of any length.
/// @return false at the end
/// @throws std::runtime_error with the reason when it cannot be read
[[nodiscard]] bool readLine(std::string& line);

} // namespace veltor::tool
