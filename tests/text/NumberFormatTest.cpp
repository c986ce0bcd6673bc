#include <veltor/utils/NumberFormat.h>

#include "support/Printers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>

namespace veltor::utils {
namespace {

QString u(const char* text)
{
    return QString::fromUtf8(text);
}

TEST(NumberFormat, KeepsItsFieldsApart)
{
    NumberFormat format(NumberFormat::Exponential, true, 0xFFFFFFFFU);
    EXPECT_EQ(format.unused(), 0x1FFFFFFFU);
    EXPECT_EQ(format.presentation(), NumberFormat::Exponential);
    format.setUnused(5).setPresentation(NumberFormat::Standard);
    EXPECT_TRUE(format.omitLeadingZero());
    EXPECT_EQ(format.setOmitLeadingZero(false).unused(), 5U);
    EXPECT_EQ(format.setLocale(QLocale(QLocale::German)).locale().numberOptions(),
              QLocale::OmitGroupSeparator);
}

TEST(NumberFormat, PresentsNumbers)
{
    struct Row
    {
        double number;
        const char* exponential;
        const char* compact;
        const char* nonExponential;
        const char* standard;
        const char* shortest;
    };
    const Row rows[] = {
        {0, "0e0", "0e0", "0", "0", "0"},
        {12345, "1.2345e4", "12345e0", "12345", "12345", "12345"},
        {-1e-7, "-1e-7", "-1e-7", "-.0000001", "-.0000001", "-1e-7"},
        {150000, "1.5e5", "15e4", "150000", "150000", "15e4"},
        {0.00015, "1.5e-4", "1.5e-4", ".00015", ".00015", ".00015"},
        {0.5, "5e-1", "5e-1", ".5", ".5", ".5"},
        {12345678912.3, "1.23456789123e10", "12.3456789123e9", "12345678912.3", "12345678912.3",
         "12345678912.3"},
        // The point counted from the end of the mantissa, and not inserted at all.
        {1234.56, "1.23456e3", "1.23456e9", "1234.56", "1234.56", "1234.56"},
        {-1234.56, "-1.23456e3", "-12.3456e9", "-1234.56", "-1234.56", "-1234.56"},
        {10.25, "1.025e1", "1025e9", "10.25", "10.25", "10.25"},
        {1.5e20, "1.5e20", "15e19", "150000000000000000000", "1.5e+20", "15e19"},
        {2e-20, "2e-20", "2e-20", ".00000000000000000002", "2e-20", "2e-20"},
        {-std::numeric_limits<double>::infinity(), "-inf", "-inf", "-inf", "-inf", "-inf"},
    };
    const NumberFormat shortest(NumberFormat::Shortest, true);
    for (const Row& row : rows) {
        EXPECT_EQ(shortest.exponential(row.number), u(row.exponential));
        EXPECT_EQ(shortest.compactExponential(row.number), u(row.compact));
        EXPECT_EQ(shortest.nonExponential(row.number), u(row.nonExponential));
        EXPECT_EQ(shortest.standard(row.number), u(row.standard));
        EXPECT_EQ(shortest.toString(row.number), u(row.shortest));
    }
}

TEST(NumberFormat, UsesTheCharactersOfTheLocale)
{
    struct Row
    {
        const char* locale;
        QChar exponential;
        const char* standard; // of -1.5e-20
        const char* compact;  // of -150000
        const char* target;   // compact, of 12345678912.3
        const char* small;    // standard, of -0.5
    };
    const Row rows[] = {
        {"C", QLatin1Char('E'), "-1.5E-20", "-15E4", "12.3456789123E9", "-.5"},
        {"C", QChar(0x2070), "-1.5⁰-20", "-15⁰4", "12.3456789123⁰9", "-.5"},
        {"sv_SE", QChar(), "−1,5e−20", "−15e4", "12,3456789123e9", "−,5"},
        {"uk_UA", QChar(), "-1,5е-20", "-15е4", "12,3456789123е9", "-,5"},
        {"ar_EG", QLatin1Char('E'), "-١٫٥E-٢٠", "-١٥E٤", "١٢٫٣٤٥٦٧٨٩١٢٣E٩", "-٫٥"},
        {"mr_IN", QChar(), "-१.५e-२०", "-१५e४", "१२.३४५६७८९१२३e९", "-.५"},
    };
    for (const Row& row : rows) {
        NumberFormat format(NumberFormat::Standard, true);
        format.setLocale(QLocale(QLatin1String(row.locale))).setExponential(row.exponential);
        EXPECT_EQ(format.toString(-1.5e-20), u(row.standard)) << row.locale;
        EXPECT_EQ(format.exponential(-1.5e-20), u(row.standard)) << row.locale;
        EXPECT_EQ(format.compactExponential(-150000), u(row.compact)) << row.locale;
        EXPECT_EQ(format.compactExponential(12345678912.3), u(row.target)) << row.locale;
        EXPECT_EQ(format.toString(-0.5), u(row.small)) << row.locale;
    }
}

/// toString() takes a short way in the C locale; it must not be told from the way that others take.
TEST(NumberFormat, GivesTheSameTextByEitherWay)
{
    std::mt19937_64 random(3);
    for (int i = 0; i < 100000; ++i) {
        const quint64 bits = random();
        double x = 0;
        std::memcpy(&x, &bits, sizeof x);
        if (i % 2 == 0) {
            x = static_cast<double>(static_cast<qint64>(bits) >> (bits % 60)) / (i % 4 == 0 ? 1000.0 : 1.0);
        }
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
