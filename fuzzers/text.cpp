// Any bytes as text: transliterated and read as dates without a crash or a hang, and what was read is written
// again.

#include "Fuzz.h"

#include <veltor/utils/DateFormats.h>
#include <veltor/utils/Transliteration.h>

#include <algorithm>

using namespace veltor::utils;
using veltor::fuzz::demand;

namespace {

/// The Russian letters of a text; without the signs that Russian has none of, behind е and each other.
QString russianOf(const QString& text)
{
    QString letters;
    for (const QChar c : text.toLower()) {
        const bool isSign = c == QChar(u'ь') || c == QChar(u'ъ');
        const bool isLetter =
            (c >= QChar(u'а') && c <= QChar(u'я')) || c == QChar(u'ё') || c == QLatin1Char(' ');
        if (isLetter && !(isSign && QStringLiteral("еъь").contains(letters.right(1)))) {
            letters += c;
        }
    }
    return letters;
}

void checkLetters(const QString& text)
{
    for (const auto standard : {LatinStandard::Iso9, LatinStandard::Gost779B, LatinStandard::Passport}) {
        static_cast<void>(toCyrillic(toLatin(text, standard), standard));
        if (standard != LatinStandard::Passport) {
            const QString russian = russianOf(text);
            demand(*toCyrillic(toLatin(russian, standard), standard) == russian, "Russian letters come back",
                   russian);
            const QString capitals = russian.toUpper();
            demand(toCyrillic(toLatin(capitals, standard), standard)->toLower() == russian,
                   "Russian capitals come back", capitals);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const QString text = veltor::fuzz::decoded(veltor::fuzz::textOf(bytes, size));
    checkLetters(text);
    static const std::vector<DateFormats> lists{
        DateFormats({QStringLiteral("d/M/yyyy"), QStringLiteral("M/d/yyyy"), QStringLiteral("dMyy"),
                     QStringLiteral("ddd d MMM yyyy")}),
        DateFormats::neutral(), DateFormats::ofLocale(QLocale(QLocale::Russian)),
        DateFormats::ofLocale(QLocale(QLocale::Arabic, QLocale::Egypt))};
    for (const DateFormats& formats : lists) {
        for (const QDate& date : formats.read(text).dates) {
            const auto again = formats.read(formats.toText(date)).dates;
            demand(std::find(again.begin(), again.end(), date) != again.end(),
                   "a date is read as it is written");
        }
        demand(formats.explain(text).isEmpty() == formats.read(text).isDate(),
               "what is no date is explained");
    }
    try {
        static_cast<void>(DateFormats({text}).read(text));
    } catch (const std::exception&) {
        // No format.
    }
    return 0;
}
