#include <veltor/utils/NumberFormat.h>
#include <veltor/utils/Patterns.h>

#include "support/Printers.h"

#include <gtest/gtest.h>

#include <random>

namespace veltor::utils {
namespace {

QString u(const char* text)
{
    return QString::fromUtf8(text);
}

QString anchored(const char* pattern)
{
    return QRegularExpression::anchoredPattern(u(pattern));
}

bool matches(const QString& pattern, const QString& subject)
{
    const QRegularExpression expression(pattern, QRegularExpression::DotMatchesEverythingOption);
    EXPECT_TRUE(expression.isValid()) << pattern.toStdString();
    return expression.match(subject).hasMatch();
}

TEST(LikeToRegular, TranslatesMasks)
{
    const QChar backslash = QLatin1Char('\\');
    EXPECT_EQ(likeToRegular(u("a%b_c"), QChar()), anchored("a.*b.c"));
    EXPECT_EQ(likeToRegular(u("100\\%"), backslash), anchored("100\\%"));
    EXPECT_EQ(likeToRegular(u("a\\"), backslash), anchored("a"));
    EXPECT_EQ(likeToRegular(u("😀\\😀"), backslash), anchored("\\😀\\😀"));
    EXPECT_TRUE(matches(likeToRegular(u("_\\😀%"), backslash), u("😀😀.")));
}

TEST(GlobToRegular, TranslatesGlobs)
{
    EXPECT_EQ(globToRegular(u("*.[!t]xt")), anchored(".*\\.[^t]xt"));
    EXPECT_EQ(globToRegular(u("[]a]?")), anchored("[]a]."));
    EXPECT_EQ(globToRegular(u("[ab")), anchored("[ab]"));
    // Members keep their low byte; U+015D, whose low byte is that of "]", does not end the class.
    EXPECT_EQ(globToRegular(u("[ŝяa]b")), anchored("[]Oa]b"));
    EXPECT_EQ(globToRegular(u("😀")), anchored("\\😀"));
}

/// Matching as it is taught, without a pattern.
bool plainMatch(const QString& mask, int m, const QString& subject, int s, QChar any, QChar one)
{
    if (m == mask.size()) {
        return s == subject.size();
    }
    if (mask.at(m) == any) {
        return plainMatch(mask, m + 1, subject, s, any, one) ||
               (s < subject.size() && plainMatch(mask, m, subject, s + 1, any, one));
    }
    return s < subject.size() && (mask.at(m) == one || mask.at(m) == subject.at(s)) &&
           plainMatch(mask, m + 1, subject, s + 1, any, one);
}

TEST(MaskPatterns, MatchWhatAPlainMatcherMatches)
{
    std::mt19937 random(1);
    const auto text = [&](const QString& alphabet, std::size_t length) {
        QString result;
        for (std::size_t i = 0; i < length; ++i) {
            result += alphabet.at(static_cast<int>(random() % static_cast<unsigned>(alphabet.size())));
        }
        return result;
    };
    for (int i = 0; i < 20000; ++i) {
        const QString subject = text(u("ab.\nЖ^$(\\"), random() % 6);
        const QString like = text(u("ab.\nЖ^$(\\%%__"), random() % 6);
        const bool expected = plainMatch(like, 0, subject, 0, QLatin1Char('%'), QLatin1Char('_'));
        ASSERT_EQ(matches(likeToRegular(like, QChar()), subject), expected) << like.toStdString();
        const QString glob = text(u("ab.\nЖ^$(\\**??"), random() % 6);
        ASSERT_EQ(matches(globToRegular(glob), subject),
                  plainMatch(glob, 0, subject, 0, QLatin1Char('*'), QLatin1Char('?')))
            << glob.toStdString();
    }
}

TEST(SmallHelpers, LookAtTheEndsAndTheCharacters)
{
    for (const char* text : {"abc", "*abc", "abc*", "*abc*"}) {
        EXPECT_EQ(substringToWildcard(u(text)), u("*abc*"));
    }
    EXPECT_FALSE(containNonAscii(u("a\x7F\n")));
    EXPECT_TRUE(containNonAscii(u("a\xC2\x80")));
}

TEST(DegreeExpression, FindsCoordinates)
{
    EXPECT_EQ(getDegreeRegExp(2, QLatin1Char(',')).pattern(),
              u("[-+]?\\d{1,3}°\\d{1,2}'\\d{1,2}(\\,\\d{0,2})?\""));
    EXPECT_EQ(getDegreeRegExp(0, QLatin1Char('.')).match(u("at -12°30'15.12345678\" N")).captured(),
              u("-12°30'15.12345678\""));
    EXPECT_FALSE(getDegreeRegExp(0, QLatin1Char('.')).match(u("12°30'15.123456789\"")).hasMatch());
}

TEST(StringAndNumeral, SplitsAsItsExpressionDoes)
{
    EXPECT_EQ(stringAndNumeral(u("a2147483648")), std::make_pair(u("a"), 2147483647));
    const QRegularExpression model(u("^(.*?)([0-9]+)$"));
    for (const char* text :
         {"", "7", "007", "a1b22", "a1\n", "a1\n\n", "a\n1", "12\n", "1٢", "٢1", "\n", "я9"}) {
        const auto match = model.match(u(text));
        const auto expected = match.hasMatch() ? std::make_pair(match.captured(1), match.captured(2).toInt())
                                               : std::make_pair(u(text), -1);
        EXPECT_EQ(stringAndNumeral(u(text)), expected) << text;
    }
}

TEST(LocalePatterns, MatchWhatIsWrittenForTheLocale)
{
    using Processing = DigitsProcessing;
    for (const char* name : {"C", "sv_SE", "fr_FR", "uk_UA", "ar_EG", "mr_IN"}) {
        const QLocale locale{QLatin1String(name)};
        NumberFormat format;
        format.setLocale(locale);
        const QString native = QRegularExpression::anchoredPattern(realRegular(locale, Processing::Native));
        for (const double x : {0.0, -12.5, 1e-30, -2.5e100, 123456.75}) {
            EXPECT_TRUE(matches(native, format.toString(x))) << name << ' ' << x;
            EXPECT_TRUE(matches(native, format.setOmitLeadingZero(true).toString(x))) << name << ' ' << x;
        }
        EXPECT_FALSE(matches(native, u("1x5"))) << "the decimal point is not escaped";
        EXPECT_FALSE(matches(native, QString(locale.decimalPoint())));
    }
    const auto real = [](const char* text, Processing processing) {
        const QString pattern = realRegular(QLocale(QLatin1String("ar_EG")), processing);
        return matches(QRegularExpression::anchoredPattern(pattern), u(text));
    };
    EXPECT_TRUE(real("-١٢٫٥e+٣", Processing::Native));
    EXPECT_TRUE(real("-12٫5E+3", Processing::Ascii));
    EXPECT_TRUE(real("-1٢٫5e+٣", Processing::Both));
    EXPECT_FALSE(real("12٫5", Processing::Native));
    EXPECT_FALSE(real("١٢٫٥", Processing::Ascii));
    const QLocale arabic(QLatin1String("ar_EG"));
    EXPECT_EQ(digitRegular(arabic, false), u("[٠-٩]+"));
    EXPECT_EQ(digitRegular(arabic, true), u("[٠-٩0-9]+"));
    EXPECT_EQ(digitRegular(QLocale::c(), true), u("[0-9]+"));
}

} // namespace
} // namespace veltor::utils
