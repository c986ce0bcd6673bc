#include <veltor/utils/NumberFormat.h>
#include <veltor/utils/NumberToText.h>

#include "support/Printers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <tuple>

namespace veltor::utils {
namespace {

using Limits = std::numeric_limits<double>;

QString u(const char* text)
{
    return QString::fromUtf8(text);
}

QLocale localeOf(const char* name)
{
    return QLocale(QLatin1String(name));
}

TEST(CastExponentialFormat, WritesExponentsOut)
{
    const char* const rows[][3] = {
        {"1.5e-05", "0.000015", "C"},       {"-2.5e+20", "-250000000000000000000", "C"},
        {"007.25e1", "72.5", "C"},          {"e5", "e5", "C"},
        {"-0.00e5", "-00000", "C"},         {"-000e5", "0", "C"},
        {"1e2000000", "1e2000000", "C"},    {"−1,5e−05", "−0,000015", "sv_SE"},
        {"-١٫٥e-٠٥", "-٠٫٠٠٠٠١٥", "ar_EG"}, {"1,5е+02", "150", "uk_UA"},
        {"1,5e+02", "1,5e+02", "uk_UA"}, // a Latin e is no exponent there
    };
    for (const auto& [text, expected, locale] : rows) {
        EXPECT_EQ(castExponentialFormat(u(text), localeOf(locale), nullptr), u(expected)) << text;
    }
    EXPECT_EQ(castExponentialFormat(u("1e5"), QLocale::c(), [](int) { return false; }), u("1e5"));
}

TEST(PlainText, OfNotableNumbers)
{
    const std::pair<double, const char*> rows[] = {
        {-0.0, "0"},
        {0.00001, "0.00001"},
        {1e-15, "0.000000000000001"},
        {-123456.789, "-123456.789"},
        {999999999999999.6, "1e+15"},
        {1000000000000.125, "1000000000000.13"}, // exact ties go away from zero
        {Limits::denorm_min(), "4.94065645841247e-324"},
        {-Limits::infinity(), "-inf"},
        {-Limits::quiet_NaN(), "nan"},
    };
    for (const auto& [number, expected] : rows) {
        EXPECT_EQ(toString(number), u(expected));
    }
    EXPECT_EQ(toString(1.0e-5F), u("0.00001"));
    EXPECT_EQ(toString(12345678.0F), u("1.234568e+07"));
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

TEST(Fixup, RemovesTrailingZeros)
{
    const std::tuple<double, int, const char*> rows[] = {
        {2.5, 3, "2.5"},
        {2.0, 3, "2"},
        {-0.0001, 2, "0"},
        {7.25, 0, "7"},
        {-0.3, 0, "-0"},
        {100, -128, "100"},
        {1.23456789, -1, "1.234568"},
        {Limits::infinity(), 2, "inf"},
    };
    for (const auto& [number, digits, expected] : rows) {
        EXPECT_EQ(toStringFixup(number, digits), u(expected));
    }
    EXPECT_EQ(toLocalizedStringFixup(-0.0001, 2, localeOf("sv_SE")), u("0"));
}

TEST(ByMode, SelectsTheForm)
{
    const std::tuple<DigitsAfterPoint, const char*, const char*> rows[] = {
        {DigitsAfterPoint::Default, "−0,0012345678", "-0.001234568"},
        {DigitsAfterPoint::Significant, "−0,001235", "-0.001235"},
        {DigitsAfterPoint::Round, "−0,0012", "-0.0012"},
        {DigitsAfterPoint::Fixup, "−0,0012", "-0.0012"},
        {static_cast<DigitsAfterPoint>(77), "−0,0012345678", "-0.001234568"},
    };
    for (const auto& [mode, ofDouble, ofFloat] : rows) {
        EXPECT_EQ(toLocalizedStringByMode(-1234.5678e-6, mode, 4, localeOf("sv_SE")), u(ofDouble));
        EXPECT_EQ(toStringByMode(-1234.5678e-6F, mode, 4), u(ofFloat));
    }
    EXPECT_EQ(toStringByMode(123456789.0, DigitsAfterPoint::Significant, 3), u("123000000"));
    EXPECT_EQ(toStringByMode(2.0, DigitsAfterPoint::Fixed, 2), u("2.00"));
    EXPECT_EQ(toStringRound(1234.5, -2), u("1200"));
    EXPECT_EQ(toLocalizedStringRound(-2.345, 1, localeOf("sv_SE")), u("−2,3"));
}

TEST(GeometryText, FollowsItsTemplates)
{
    const QRectF rect(0.5, 0, 10, 5);
    const QLocale german = localeOf("de_DE");
    EXPECT_EQ(toStringFixup(QPointF(1.256, 2), 2), u("(1.26 2)"));
    EXPECT_EQ(toString(QSizeF(1.5, 2)), u("1.5x2"));
    EXPECT_EQ(toString(rect), u("(0.5 0) (10.5 5)"));
    EXPECT_EQ(toLocalizedStringFull(rect, german), u("(0,5 0) (10,5 5) (10x5)"));
    EXPECT_EQ(toStringFull(rect), u("(0.5 0) (10.5 5) (10x5)"));
    EXPECT_EQ(toLocalizedStringByMode(rect, DigitsAfterPoint::Fixed, 1, german), u("(0,5 0,0) (10,5 5,0)"));
    EXPECT_EQ(toString(QVector<QPointF>{{0, 0}, {1.256, 2}}, 2), u("(0 0) (1.26 2)"));
    EXPECT_EQ(toString(QVector<QPointF>{{1.256, 2}}, -1), u("(1.256 2)"));
}

/// Locales whose digits, signs, exponent or group separators are not ASCII.
TEST(Separate, GroupsByThreesInTheCharactersOfTheLocale)
{
    const QChar blank = QLatin1Char(' ');
    EXPECT_EQ(separateThousands(u("-1234567.5"), QLatin1Char('.'), blank, 1), u("-1 234 567.5"));
    EXPECT_EQ(separateThousands(u("-123456"), QLatin1Char('.'), blank, 1), u("-123 456"));
    EXPECT_EQ(separateThousands(u("1234.5"), QChar(), blank, 0), u("123 4.5"));
    const char* const rows[][3] = {
        // -1234567.5, 1.5e20
        {"C", "-1,234,567.5", "1.5e+20"},
        {"sv_SE", "−1\u00A0234\u00A0567,5", "1,5e+20"},
        {"fr_FR", "-1\u202F234\u202F567,5", "1,5e+20"},
        {"uk_UA", "-1\u00A0234\u00A0567,5", "1,5е+20"},
        {"ar_EG", "-١٬٢٣٤٬٥٦٧٫٥", "١٫٥e+٢٠"},
    };
    for (const auto& [name, grouped, large] : rows) {
        QLocale locale = localeOf(name);
        EXPECT_EQ(separateDouble(-1234567.5, locale), u(grouped)) << name;
        EXPECT_EQ(separateDouble(1.5e20, locale), u(large)) << name;
        locale.setNumberOptions(QLocale::OmitGroupSeparator);
        EXPECT_EQ(separateDoubleFixup(-1234567.5, 3, locale), u(grouped)) << name;
        EXPECT_EQ(toLocalizedString(-1234567.5, locale), u(grouped).remove(locale.groupSeparator())) << name;
        EXPECT_EQ(locale.numberOptions(), QLocale::OmitGroupSeparator) << "the caller's locale was changed";
    }
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

TEST(NumberFormat, PresentsNumbers)
{
    const char* const rows[][5] = {
        // standard, exponential, compact, non-exponential, shortest
        {"0", "0e0", "0e0", "0", "0"},
        {"-.0000001", "-1e-7", "-1e-7", "-.0000001", "-1e-7"},
        {"150000", "1.5e5", "15e4", "150000", "15e4"},
        {".00015", "1.5e-4", "1.5e-4", ".00015", ".00015"},
        {"12345678912.3", "1.23456789123e10", "12.3456789123e9", "12345678912.3", "12345678912.3"},
        // The point counted from the end of the mantissa, and not inserted at all.
        {"1234.56", "1.23456e3", "1.23456e9", "1234.56", "1234.56"},
        {"-1234.56", "-1.23456e3", "-12.3456e9", "-1234.56", "-1234.56"},
        {"10.25", "1.025e1", "1025e9", "10.25", "10.25"},
        {"1.5e+20", "1.5e20", "15e19", "150000000000000000000", "15e19"},
        {"-inf", "-inf", "-inf", "-inf", "-inf"},
    };
    const NumberFormat format(NumberFormat::Shortest, true);
    for (const auto& [standard, exponential, compact, nonExponential, shortest] : rows) {
        const double number = u(standard).toDouble();
        EXPECT_EQ(format.standard(number), u(standard));
        EXPECT_EQ(format.exponential(number), u(exponential));
        EXPECT_EQ(format.compactExponential(number), u(compact));
        EXPECT_EQ(format.nonExponential(number), u(nonExponential));
        EXPECT_EQ(format.toString(number), u(shortest));
    }
}

TEST(NumberFormat, UsesTheCharactersOfTheLocale)
{
    const char* const rows[][6] = {
        // exponential character, -1.5e-20, -150000 compact, 12345678912.3 compact, -0.5
        {"C", "E", "-1.5E-20", "-15E4", "12.3456789123E9", "-.5"},
        {"C", "⁰", "-1.5⁰-20", "-15⁰4", "12.3456789123⁰9", "-.5"},
        {"sv_SE", "", "−1,5e−20", "−15e4", "12,3456789123e9", "−,5"},
        {"uk_UA", "", "-1,5е-20", "-15е4", "12,3456789123е9", "-,5"},
        {"ar_EG", "E", "-١٫٥E-٢٠", "-١٥E٤", "١٢٫٣٤٥٦٧٨٩١٢٣E٩", "-٫٥"},
    };
    for (const auto& [locale, mark, standard, compact, target, small] : rows) {
        NumberFormat format(NumberFormat::Standard, true);
        format.setLocale(localeOf(locale)).setExponential(u(mark).isEmpty() ? QChar() : u(mark).at(0));
        EXPECT_EQ(format.toString(-1.5e-20), u(standard)) << locale;
        EXPECT_EQ(format.exponential(-1.5e-20), u(standard)) << locale;
        EXPECT_EQ(format.compactExponential(-150000), u(compact)) << locale;
        EXPECT_EQ(format.compactExponential(12345678912.3), u(target)) << locale;
        EXPECT_EQ(format.toString(-0.5), u(small)) << locale;
    }
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
