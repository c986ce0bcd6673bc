// Any text on its way to a terminal: nothing that a terminal obeys is left, and what is shown still says what
// stood there. Numbers of the command line, and as the tool writes them.

#include "Fuzz.h"

#include "Command.h"
#include "Coordinates.h"
#include "Ellipsoid.h"
#include "JsonText.h"
#include "TerminalText.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <cmath>
#include <cstring>

using namespace veltor::tool;
using veltor::fuzz::demand;

extern "C" const char* __asan_default_options() // NOLINT(bugprone-reserved-identifier)
{
    return "detect_leaks=0"; // of Qt 5's JSON parser
}

namespace {

bool isHarmless(const QString& text, bool isLayout = false)
{
    return std::none_of(text.begin(), text.end(), [isLayout](QChar c) {
        return (c.category() == QChar::Other_Control && (!isLayout || c >= QLatin1Char(' '))) ||
               (c >= QChar(0x2028) && c <= QChar(0x202e)) || (c >= QChar(0x2066) && c <= QChar(0x2069));
    });
}

/// What a shell makes of a word.
QString ofShell(const QString& word)
{
    if (!word.startsWith(QLatin1String("$'"))) {
        return word;
    }
    QString text;
    for (int i = 2; i < word.size() - 1; ++i) {
        if (word[i] != QLatin1Char('\\')) {
            text += word[i];
            continue;
        }
        const QChar kind = word[++i];
        const int digits = kind == QLatin1Char('x') ? 2 : kind == QLatin1Char('u') ? 4 : 0;
        text += digits > 0                 ? QChar(word.mid(i + 1, digits).toUShort(nullptr, 16))
                : kind == QLatin1Char('n') ? QChar(QLatin1Char('\n'))
                : kind == QLatin1Char('r') ? QChar(QLatin1Char('\r'))
                : kind == QLatin1Char('t') ? QChar(QLatin1Char('\t'))
                                           : kind;
        i += digits;
    }
    return text;
}

void checkTexts(const QString& text)
{
    demand(isHarmless(shownLine(text)), "a line obeys no one", text);
    const QString name = shownName(text);
    demand(isHarmless(name), "a name obeys no one", text);
    demand(name == text || ofShell(name) == text, "a shown name is the name", name);
    JsonText json(veltor::json::JsonFormatter::formatCompact);
    json.beginObject();
    json.key("a");
    json.value(text);
    json.end();
    const QString shown = shownJson(QString::fromStdString(json.take()));
    demand(isHarmless(shown, true), "JSON obeys no one", shown);
    const QJsonObject again = QJsonDocument::fromJson(shown.toUtf8()).object();
    demand(again.value(QLatin1String("a")).toString() == text, "shown JSON means the same", shown);
}

void checkNumber(double x)
{
    std::string text;
    appendNumber(text, x);
    const auto again = parseNumber(text);
    demand(again && *again == x, "a number is read as it was", QString::fromStdString(text));
}

void checkWord(std::string_view word)
{
    const auto number = parseNumber(word);
    if (number && word.find("\xC2\xB0") == std::string_view::npos) {
        char* end = nullptr;
        const std::string text(word);
        demand(*number == std::strtod(text.c_str(), &end) && *end == 0,
               "a number is what the C library reads", QString::fromStdString(text));
    }
    demand(!number || std::isfinite(*number), "no word is infinite");
}

void checkEllipsoid(const QString& text)
{
    try {
        const Ellipsoid ellipsoid = parseEllipsoid(text);
        demand(ellipsoid.a > 0 && std::isfinite(ellipsoid.a) && !(1 / ellipsoid.rf >= 1),
               "an ellipsoid is one", text);
    } catch (const UsageError& error) {
        demand(isHarmless(QString::fromUtf8(error.what())), "a complaint obeys no one", text);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const std::string_view all = veltor::fuzz::textOf(bytes, size);
    const QString text = veltor::fuzz::decoded(all);
    checkTexts(text);
    checkEllipsoid(text);
    double x = 0;
    std::memcpy(&x, bytes, std::min(size, sizeof x));
    if (std::isfinite(x)) {
        checkNumber(x);
    }
    std::vector<std::string_view> words;
    splitWords(all, words);
    for (const std::string_view word : words) {
        checkWord(word);
    }
    return 0;
}
