// The seven predefined layouts.

#include <veltor/json/JsonFormatter.h>

namespace veltor::json {
namespace {

using utils::NumberFormat;

// The depth rises after an opening bracket and falls before a closing one; or it rises before the opening
// one already, which then stands at the depth of what it holds.
constexpr unsigned insideBrackets =
    1U << ObjectOpenAfter | 1U << ObjectCloseBefore | 1U << ArrayOpenAfter | 1U << ArrayCloseBefore;
constexpr unsigned withBrackets =
    1U << ObjectOpenBefore | 1U << ObjectCloseBefore | 1U << ArrayOpenBefore | 1U << ArrayCloseBefore;

QByteArray fourBlanks()
{
    return QByteArrayLiteral("    ");
}

/// Delimiters as the formats use them: the same around both kinds of brackets.
std::array<QByteArray, 12> delimiters(const char* openBefore, const char* openAfter, const char* closeBefore,
                                      const char* commaBefore, const char* commaAfter, const char* colonAfter)
{
    return {openBefore,  openAfter, closeBefore, "",         openBefore, openAfter,
            closeBefore, "",        commaBefore, commaAfter, "",         colonAfter};
}

} // namespace

const Format JsonFormatter::formatCompact = {NumberFormat(NumberFormat::Shortest), {}, {}};
const Format JsonFormatter::formatSqueeze = {NumberFormat(NumberFormat::Shortest, true), {}, {}};
const Format JsonFormatter::formatIndented = {NumberFormat(NumberFormat::Standard, false, insideBrackets),
                                              fourBlanks(), delimiters("", "\n", "\n", "", "\n", " ")};
const Format JsonFormatter::formatUnindented = {
    NumberFormat(NumberFormat::Standard), {}, delimiters("", "\n", "\n", "", "\n", " ")};
const Format JsonFormatter::formatBracketsIndented = {
    NumberFormat(NumberFormat::Standard, false, insideBrackets), fourBlanks(),
    delimiters("\n", "\n", "\n", "", "\n", " ")};
const Format JsonFormatter::formatCommaFirst = {NumberFormat(NumberFormat::Standard, false, withBrackets),
                                                fourBlanks(), delimiters("\n", " ", "\n", "\n", " ", " ")};
const Format JsonFormatter::formatDelimited = {
    NumberFormat(NumberFormat::Shortest), {}, delimiters("", "", "", "", " ", " ")};

} // namespace veltor::json
