// Two lines: what somebody typed into a search field, and a text. Masks match as a matcher without
// expressions has it, or say that they gave up; patterns made for a locale match what is written for it.

#include "Fuzz.h"

#include <veltor/utils/NumberFormat.h>
#include <veltor/utils/Patterns.h>
#include <veltor/utils/PlatformMask.h>
#include <veltor/utils/RegularExpressionCache.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

using namespace veltor::utils;
using veltor::fuzz::demand;

namespace {

/// Any run of characters, or one of a set: each of them a character or a range.
struct Token
{
    bool isRun = false;
    bool isNot = false;
    std::vector<std::pair<uint, uint>> set;

    [[nodiscard]] bool takes(uint c) const
    {
        return isNot != std::any_of(set.begin(), set.end(),
                                    [c](const auto& range) { return c >= range.first && c <= range.second; });
    }
};

const Token run = {true, false, {}};
const Token any = {false, true, {}};

Token one(uint c)
{
    return {false, false, {{c, c}}};
}

/// Whether the whole text matches: a run that was passed takes one character more when what follows fails.
bool matches(const std::vector<Token>& tokens, const QVector<uint>& text)
{
    std::size_t token = 0;
    int at = 0;
    std::optional<std::pair<std::size_t, int>> passed;
    while (at < text.size() || token < tokens.size()) {
        if (token < tokens.size() && tokens[token].isRun) {
            passed = {++token, at};
        } else if (token < tokens.size() && at < text.size() && tokens[token].takes(text[at])) {
            ++token;
            ++at;
        } else if (passed && passed->second < text.size()) {
            token = passed->first;
            at = ++passed->second;
        } else {
            return false;
        }
    }
    return true;
}

std::vector<Token> likeTokens(const QVector<uint>& mask, uint escape)
{
    std::vector<Token> tokens;
    for (int i = 0; i < mask.size(); ++i) {
        if (escape != 0 && mask[i] == escape) {
            if (++i < mask.size()) {
                tokens.push_back(one(mask[i]));
            }
        } else {
            tokens.push_back(mask[i] == '%' ? run : mask[i] == '_' ? any : one(mask[i]));
        }
    }
    return tokens;
}

bool isWord(uint c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Nothing for a class with members that mean something in expressions.
std::optional<std::vector<Token>> globTokens(const QVector<uint>& glob)
{
    std::vector<Token> tokens;
    for (int i = 0; i < glob.size(); ++i) {
        if (glob[i] != '[') {
            tokens.push_back(glob[i] == '*' ? run : glob[i] == '?' ? any : one(glob[i]));
            continue;
        }
        Token token;
        token.isNot = i + 1 < glob.size() && glob[i + 1] == '!';
        i += token.isNot ? 2 : 1;
        for (const int first = i; i < glob.size() && (glob[i] != ']' || i == first); ++i) {
            const bool isRange = i + 2 < glob.size() && glob[i + 1] == '-' && isWord(glob[i]) &&
                                 isWord(glob[i + 2]) && glob[i] <= glob[i + 2];
            if (!isWord(glob[i]) && glob[i] != ']') {
                return std::nullopt;
            }
            token.set.emplace_back(glob[i], glob[i + (isRange ? 2 : 0)]);
            i += isRange ? 2 : 0;
        }
        if (token.set.empty()) {
            return std::nullopt; // an unclosed class without members is no valid one
        }
        tokens.push_back(token);
    }
    return tokens;
}

void compare(const QString& pattern, const std::vector<Token>& tokens, const QString& text)
{
    static RegularExpressionCache cache(16);
    const auto expression = cache.retrieve(pattern, QRegularExpression::DotMatchesEverythingOption);
    demand(expression->pattern() == pattern, "the cache gives the pattern that was asked for", pattern);
    demand(expression->isValid(), "masks are valid patterns", pattern);
    const QRegularExpressionMatch match = expression->match(text);
    demand(!match.isValid() || match.hasMatch() == matches(tokens, text.toUcs4()),
           "a mask matches as it says", pattern);
}

void checkNumeral(const QString& text)
{
    static const QRegularExpression model(QStringLiteral("^(.*?)([0-9]+)$"));
    const auto [prefix, number] = stringAndNumeral(text);
    const QRegularExpressionMatch match = model.match(text);
    if (match.isValid()) {
        demand(match.hasMatch() == (number >= 0), "a numeral is found where the expression finds one", text);
        demand(prefix == (match.hasMatch() ? match.captured(1) : text), "a prefix is the expression's", text);
    }
}

void checkNumbers(std::string_view bytes)
{
    static const QLocale locales[] = {QLocale::c(), QLocale(QStringLiteral("ru_RU")),
                                      QLocale(QStringLiteral("ar_EG")), QLocale(QStringLiteral("sv_SE"))};
    double x = 0;
    std::memcpy(&x, bytes.data(), std::min(bytes.size(), sizeof x));
    if (!qIsFinite(x)) {
        return;
    }
    static RegularExpressionCache cache;
    for (const QLocale& locale : locales) {
        const QString real = realRegular(locale, DigitsProcessing::Native);
        for (const auto presentation : {NumberFormat::Shortest, NumberFormat::Standard}) {
            const QString text = NumberFormat(presentation, true).setLocale(locale).toString(x);
            const auto expression = cache.retrieve(QRegularExpression::anchoredPattern(real));
            demand(expression->match(text).hasMatch(), "a number's text matches the locale's pattern", text);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    std::string_view rest = veltor::fuzz::textOf(bytes, size);
    checkNumbers(rest);
    const QString mask = veltor::fuzz::decoded(veltor::fuzz::takeLine(rest));
    const QString text = veltor::fuzz::decoded(rest);
    const QVector<uint> points = mask.toUcs4();
    for (const char escape : {'\0', '\\', '%', 'a'}) {
        compare(likeToRegular(mask, QLatin1Char(escape)), likeTokens(points, static_cast<uint>(escape)),
                text);
    }
    if (const auto tokens = globTokens(points)) {
        compare(globToRegular(mask), *tokens, text);
    } else {
        static_cast<void>(QRegularExpression(globToRegular(mask)).match(text));
    }
    const QString wildcard = substringToWildcard(mask);
    demand(substringToWildcard(wildcard) == wildcard && wildcard.contains(mask), "a wildcard stays one",
           mask);
    checkNumeral(mask);
    checkNumeral(text);
    static_cast<void>(getDegreeRegExp(9, QLatin1Char(',')).match(text));
    const PlatformMask platforms = toPlatformMask(mask);
    demand((platforms == 0U && fromPlatformMask(platforms) == QLatin1String("none")) ||
               toPlatformMask(fromPlatformMask(platforms)) == platforms,
           "platforms are read as they are written", mask);
    return 0;
}
