#include <veltor/utils/NumberFormat.h>
#include <veltor/utils/NumberToText.h>
#include <veltor/utils/Patterns.h>

#include "support/Calls.h"
#include "support/Printers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>

namespace veltor::utils {
namespace {

using test::call;
using test::u;
using Limits = std::numeric_limits<double>;

QLocale localeOf(const char* name)
{
    return QLocale(QLatin1String(name));
}

const NumberFormat bare(NumberFormat::Shortest, true);

const std::map<QByteArray, test::Call> functions = {
    {"castExponentialFormat",
     call(+[](QString text, QLocale locale) { return castExponentialFormat(text, locale, nullptr); })},
    {"toString", call<QString, double>(toString)},
    {"toString.float", call<QString, float>(toString)},
    {"toString.size", call<QString, QSizeF>(toString)},
    {"toString.rect", call<QString, const QRectF&>(toString)},
    {"toStringFull", call(toStringFull)},
    {"toLocalizedStringFull", call(toLocalizedStringFull)},
    {"toStringFixup", call<QString, double, int>(toStringFixup)},
    {"toStringFixup.point", call<QString, QPointF, int>(toStringFixup)},
    {"toLocalizedStringFixup", call(toLocalizedStringFixup)},
    {"toStringRound", call(toStringRound)},
    {"toLocalizedStringRound", call(toLocalizedStringRound)},
    {"toStringByMode", call<QString, double, DigitsAfterPoint, int>(toStringByMode)},
    {"toLocalizedStringByMode.rect",
     call<QString, const QRectF&, DigitsAfterPoint, int, const QLocale&>(toLocalizedStringByMode)},
    {"separateThousands", call(separateThousands)},
    {"presentations", call(+[](double x) {
         return QStringList{bare.standard(x), bare.exponential(x), bare.compactExponential(x),
                            bare.nonExponential(x), bare.toString(x)};
     })},
    {"localized", call(+[](QLocale locale, QChar mark) {
         const NumberFormat f =
             NumberFormat(NumberFormat::Standard, true).setLocale(locale).setExponential(mark);
         return QStringList{f.toString(-1.5e-20), f.toString(-0.5), f.exponential(-1.5e-20),
                            f.compactExponential(-150000), f.compactExponential(12345678912.3)};
     })},
    {"grouped", call(+[](QLocale locale) {
         return QStringList{separateDouble(-1234567.5, locale), separateDouble(-123456.5, locale),
                            separateDouble(1.5e20, locale), separateDoubleFixup(-1234567.5, 3, locale)};
     })},
    {"byMode", call(+[](int number) {
         const auto mode = static_cast<DigitsAfterPoint>(number);
         return QStringList{toLocalizedStringByMode(-0.0012345678, mode, 4, localeOf("sv_SE")),
                            toStringByMode(-0.0012345678F, mode, 4)};
     })},
    {"likeToRegular", call(likeToRegular)},
    {"globToRegular", call(globToRegular)},
    {"substringToWildcard", call(substringToWildcard)},
    {"degreePattern",
     call(+[](int digits, QChar point) { return getDegreeRegExp(digits, point).pattern(); })},
    {"digitRegular", call(digitRegular)},
};

TEST(Texts, CallsGiveTheResultsOfTheTable)
{
    test::expectCalls("text/data/calls.txt", '|', functions);
    EXPECT_EQ(castExponentialFormat(u("1e5"), QLocale::c(), [](int) { return false; }), u("1e5"));
    EXPECT_EQ(toString(QVector<QPointF>{{0, 0}, {1.256, 2}}, 2), u("(0 0) (1.26 2)"));
    EXPECT_EQ(toString(QVector<QPointF>{{1.256, 2}}, -1), u("(1.256 2)"));
}

/// Plain text from the C library's digits: an independent model, but for exact ties.
std::string modelPlainText(double x)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.14e", x);
    const int exponent = std::atoi(std::strchr(text, 'e') + 1);
    if (exponent < -15 || exponent >= 15) {
        std::snprintf(text, sizeof text, "%.15g", x);
        return text;
    }
    std::snprintf(text, sizeof text, "%.*f", 14 - exponent, std::strtod(text, nullptr));
    std::string plain = text;
    if (plain.find('.') != std::string::npos) {
        plain.erase(plain.find_last_not_of('0') + 1);
        plain.erase(plain.find_last_not_of('.') + 1);
    }
    return plain == "-0" ? "0" : plain;
}

bool isTie(double x)
{
    char exact[1100];
    std::snprintf(exact, sizeof exact, "%.780e", std::abs(x));
    const std::string digits = exact; // d.dddddddddddddd5000...
    return digits[16] == '5' && digits.find_first_not_of('0', 17) == digits.find('e');
}

double randomNumber(std::mt19937_64& random, int kind)
{
    const quint64 bits = random();
    double x = 0;
    switch (kind) {
    case 0: // any bits
        std::memcpy(&x, &bits, sizeof x);
        return x;
    case 1: // short decimals
        return static_cast<double>(static_cast<qint64>(bits) >> (20 + bits % 40)) /
               std::pow(10.0, static_cast<double>(random() % 16));
    case 2: // powers of ten and their neighbours
        x = std::pow(10.0, static_cast<double>(bits % 632) - 324.0);
        return (bits >> 32) % 3 == 0 ? x : std::nextafter(x, (bits >> 40) % 2 == 0 ? 0.0 : Limits::max());
    case 3: // subnormals
        return std::ldexp(static_cast<double>(bits >> 12), -1074);
    default: // binary fractions: many exact ties
        return std::ldexp(static_cast<double>(bits >> 11), -static_cast<int>(random() % 8));
    }
}

/// The short way round the locale machinery must not be told from Qt's texts, nor these from the C library's.
TEST(PlainText, EqualsQtAndTheModelOverRandomNumbers)
{
    std::mt19937_64 random(5);
    const auto expanded = [](int exponent) { return exponent >= -15 && exponent < -4; };
    for (int i = 0; i < 300000; ++i) {
        const double x = randomNumber(random, i % 5);
        const QString text = toString(x);
        ASSERT_EQ(text, castExponentialFormat(QLocale::c().toString(x, 'g', 15), QLocale::c(), expanded));
        if (std::isfinite(x) && !isTie(x)) {
            ASSERT_EQ(text.toStdString(), modelPlainText(x));
        }
    }
}

TEST(Separate, LeavesTheCallersLocaleAlone)
{
    QLocale locale = localeOf("C");
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    EXPECT_EQ(separateDoubleFixup(-1234567.5, 3, locale), u("-1,234,567.5"));
    EXPECT_EQ(toLocalizedString(-1234567.5, locale), u("-1234567.5"));
    EXPECT_EQ(locale.numberOptions(), QLocale::OmitGroupSeparator);
}

TEST(NumberFormat, KeepsItsFieldsApart)
{
    NumberFormat format(NumberFormat::Exponential, true, 0xFFFFFFFFU);
    EXPECT_EQ(format.unused(), 0x1FFFFFFFU);
    format.setUnused(5).setPresentation(NumberFormat::Standard);
    EXPECT_TRUE(format.omitLeadingZero());
    EXPECT_EQ(format.setOmitLeadingZero(false).unused(), 5U);
    EXPECT_EQ(format.setLocale(QLocale(QLocale::German)).locale().numberOptions(),
              QLocale::OmitGroupSeparator);
}

/// toString() takes a short way in the C locale; it must not be told from the way that others take.
TEST(NumberFormat, GivesTheSameTextByEitherWay)
{
    std::mt19937_64 random(3);
    for (int i = 0; i < 100000; ++i) {
        const double x = randomNumber(random, i % 5);
        NumberFormat format(NumberFormat::Exponential, i % 3 == 0);
        ASSERT_EQ(format.toString(x), format.exponential(x));
        ASSERT_EQ(format.setPresentation(NumberFormat::NonExponential).toString(x), format.nonExponential(x));
        ASSERT_EQ(format.setPresentation(NumberFormat::Standard).toString(x), format.standard(x));
        const QString plain = format.nonExponential(x);
        const QString compact = format.compactExponential(x);
        ASSERT_EQ(format.setPresentation(NumberFormat::Shortest).toString(x),
                  compact.size() < plain.size() ? compact : plain);
    }
}

} // namespace
} // namespace veltor::utils
