// A text as a number, and its first bytes as one: what is written is read as the same number and written the
// same again, by every presentation and in every locale; texts that are no numbers harm nothing.

#include "Fuzz.h"

#include <veltor/utils/NumberFormat.h>
#include <veltor/utils/NumberToText.h>

#include <cstring>

using namespace veltor::utils;
using veltor::fuzz::demand;

namespace {

const QLocale& plain()
{
    static const QLocale locale = [] {
        QLocale c = QLocale::c();
        c.setNumberOptions(QLocale::RejectGroupSeparator | QLocale::OmitGroupSeparator);
        return c;
    }();
    return locale;
}

double numberOf(const QString& text, const QLocale& locale)
{
    bool isNumber = false;
    const double number = locale.toDouble(text, &isNumber);
    demand(isNumber, "the text of a number is one", text);
    return number;
}

void checkFormats(double x)
{
    const QString text = toString(x);
    const double again = numberOf(text, plain());
    demand(toString(again) == text, "a number read from text and written again reads the same", text);
    for (const auto presentation : {NumberFormat::Shortest, NumberFormat::Exponential,
                                    NumberFormat::NonExponential, NumberFormat::Standard}) {
        for (const bool omit : {false, true}) {
            const QString other = NumberFormat(presentation, omit).toString(x);
            demand(numberOf(other, plain()) == again, "all presentations are the same number", other);
        }
    }
    const auto narrow = static_cast<float>(x);
    if (qIsFinite(narrow)) {
        const QString narrowText = toString(narrow);
        const auto narrowAgain = static_cast<float>(numberOf(narrowText, plain()));
        // Six digits are all that any float keeps; the seventh may be another one.
        demand(!qIsFinite(narrowAgain) ||
                   qAbs(double(narrowAgain) - double(narrow)) <= 1e-6 * qAbs(double(narrow)) + 1e-45,
               "a float's text is near it", narrowText);
    }
}

void checkLocales(double x)
{
    static const QLocale locales[] = {QLocale(QStringLiteral("ru_RU")), QLocale(QStringLiteral("de_CH")),
                                      QLocale(QStringLiteral("ar_EG")), QLocale(QStringLiteral("sv_SE")),
                                      QLocale(QStringLiteral("hi_IN")), QLocale(QStringLiteral("C"))};
    const double again = numberOf(toString(x), plain());
    for (const QLocale& locale : locales) {
        QLocale omitting = locale;
        omitting.setNumberOptions(QLocale::OmitGroupSeparator);
        const QString text = toLocalizedString(x, omitting);
        demand(numberOf(text, omitting) == again, "a locale's text is the same number", text);
        const QString bare = separateDouble(x, locale).remove(locale.groupSeparator());
        demand(bare == QString(text).remove(locale.groupSeparator()), "groups only part the digits", bare);
        static_cast<void>(separateDoubleFixup(x, 3, locale));
    }
    for (int digits = 1; digits < 20; digits += 6) {
        const QString fixed = toStringFixup(x, digits);
        demand(fixed != QLatin1String("-0") && !fixed.endsWith(QLatin1Char('.')), "no bare sign or point",
               fixed);
    }
}

/// A number written with an exponent is the same one without.
void checkExpansion(const QString& text)
{
    const auto mark = text.lastIndexOf(QLatin1Char('e'));
    const QString expanded = castExponentialFormat(text, QLocale::c(), nullptr);
    const bool isPlain = std::all_of(text.begin(), text.end(),
                                     [](QChar c) { return QStringLiteral("0123456789-+.e").contains(c); });
    bool isNumber = false;
    const double number = plain().toDouble(text, &isNumber);
    if (mark > 0 && text.size() - mark <= 5 && isPlain && isNumber && !text.startsWith(QLatin1Char('+'))) {
        demand(numberOf(expanded, plain()) == number, "an expanded number is the same", text);
    }
    for (const char* name : {"ar_EG", "fa_IR", "sv_SE"}) {
        static_cast<void>(castExponentialFormat(text, QLocale(QLatin1String(name)), nullptr));
    }
}

void checkThousands(const QString& text, int first)
{
    const QChar separator(0x2007);
    const QString grouped = separateThousands(text, QLatin1Char('.'), separator, first);
    if (!text.contains(separator)) {
        demand(QString(grouped).remove(separator) == text, "separators alone are added", grouped);
        const auto kept = std::min<qint64>(qint64(first) + 1, text.size());
        demand(first < 0 || grouped.left(int(kept)) == text.left(int(kept)), "none before the first place",
               grouped);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    double x = 0;
    int first = 0;
    std::memcpy(&x, bytes, std::min(size, sizeof x));
    std::memcpy(&first, bytes, std::min(size, sizeof first));
    const QString text = veltor::fuzz::decoded(veltor::fuzz::textOf(bytes, size));
    bool isNumber = false;
    const double read = plain().toDouble(text, &isNumber);
    for (const double number : {x, isNumber ? read : 0}) {
        if (qIsFinite(number)) {
            checkFormats(number);
            checkLocales(number);
        }
        static_cast<void>(toString(number));
    }
    checkExpansion(text);
    checkThousands(text, first);
    checkThousands(text, first % 4);
    NumberFormat format(NumberFormat::Standard, true);
    static_cast<void>(
        format.setLocale(QLocale(QStringLiteral("ar_EG"))).removeLeadingZero(text, QLatin1Char('x')));
    return 0;
}
