#include <veltor/utils/NumberFormat.h>
#include <veltor/utils/Patterns.h>
#include <veltor/utils/RegularExpressionCache.h>

#include "support/Printers.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

namespace veltor::utils {
namespace {

using test::u;

bool matches(const QString& pattern, const QString& subject)
{
    const QRegularExpression expression(pattern, QRegularExpression::DotMatchesEverythingOption);
    EXPECT_TRUE(expression.isValid()) << pattern.toStdString();
    return expression.match(subject).hasMatch();
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
    const auto text = [&](const char* letters) {
        const QString alphabet = u(letters);
        QString result;
        for (auto length = random() % 6; length > 0; --length) {
            result += alphabet.at(static_cast<int>(random() % static_cast<unsigned>(alphabet.size())));
        }
        return result;
    };
    for (int i = 0; i < 20000; ++i) {
        const QString subject = text("ab.\nЖ^$(\\");
        const QString like = text("ab.\nЖ^$(\\%%__");
        ASSERT_EQ(matches(likeToRegular(like, QChar()), subject),
                  plainMatch(like, 0, subject, 0, QLatin1Char('%'), QLatin1Char('_')))
            << like.toStdString();
        const QString glob = text("ab.\nЖ^$(\\**??");
        ASSERT_EQ(matches(globToRegular(glob), subject),
                  plainMatch(glob, 0, subject, 0, QLatin1Char('*'), QLatin1Char('?')))
            << glob.toStdString();
    }
}

TEST(SmallPatterns, LookAtTheEndsAndTheCharacters)
{
    EXPECT_TRUE(matches(likeToRegular(u("_\\😀%"), QLatin1Char('\\')), u("😀😀."))) << "half a pair was escaped";
    EXPECT_FALSE(containNonAscii(u("a\x7F\n")));
    EXPECT_TRUE(containNonAscii(u("a\xC2\x80")));
    EXPECT_EQ(getDegreeRegExp(0, QLatin1Char('.')).match(u("at -12°30'15.12345678\" N")).captured(),
              u("-12°30'15.12345678\""));
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
    const auto real = [](const char* locale, DigitsProcessing processing, const QString& text) {
        const QString pattern = realRegular(QLocale(QLatin1String(locale)), processing);
        return matches(QRegularExpression::anchoredPattern(pattern), text);
    };
    for (const char* name : {"C", "sv_SE", "fr_FR", "uk_UA", "ar_EG", "mr_IN"}) {
        NumberFormat format(NumberFormat::Standard, true);
        format.setLocale(QLocale(QLatin1String(name)));
        for (const double x : {0.0, -12.5, 0.5, 1e-30, -2.5e100}) {
            EXPECT_TRUE(real(name, DigitsProcessing::Native, format.toString(x))) << name << ' ' << x;
        }
        EXPECT_FALSE(real(name, DigitsProcessing::Both, u("1x5"))) << "the decimal point is not escaped";
    }
    EXPECT_TRUE(real("ar_EG", DigitsProcessing::Ascii, u("-12٫5E+3")));
    EXPECT_TRUE(real("ar_EG", DigitsProcessing::Both, u("-1٢٫5e+٣")));
    EXPECT_FALSE(real("ar_EG", DigitsProcessing::Ascii, u("١٢٫٥")));
}

QString pattern(int number)
{
    return QStringLiteral("^a{%1}$").arg(number);
}

/// Whether the expression is still in the cache. Asking does bring it back, and to the front.
bool holds(RegularExpressionCache& cache, int number, const std::shared_ptr<QRegularExpression>& expression)
{
    return cache.retrieve(pattern(number)) == expression;
}

TEST(RegularExpressionCache, HandsOutOneExpressionUntilItForgetsTheLeastRecentlyUsed)
{
    RegularExpressionCache cache(2);
    const auto first = cache.retrieve(pattern(1));
    const auto caseless = cache.retrieve(pattern(1), QRegularExpression::CaseInsensitiveOption);
    EXPECT_NE(caseless, first);
    EXPECT_TRUE(holds(cache, 1, first));
    const auto invalid = cache.retrieve(QStringLiteral("(")); // forgets the second
    EXPECT_FALSE(invalid->isValid());
    EXPECT_EQ(cache.retrieve(QStringLiteral("(")), invalid);
    EXPECT_TRUE(holds(cache, 1, first));
    EXPECT_NE(cache.retrieve(pattern(1), QRegularExpression::CaseInsensitiveOption), caseless);
    EXPECT_TRUE(caseless->match(QStringLiteral("A")).hasMatch()) << "a forgotten expression is still usable";
}

TEST(RegularExpressionCache, RemovesOnRequestAndByItsLimit)
{
    RegularExpressionCache cache(5);
    cache.setLimit(0); // 1024
    const auto first = cache.retrieve(pattern(0));
    for (int i = 1; i < 1024; ++i) {
        (void)cache.retrieve(pattern(i));
    }
    EXPECT_TRUE(holds(cache, 0, first));
    cache.remove(pattern(0));
    const auto second = cache.retrieve(pattern(0));
    EXPECT_NE(second, first);
    const auto third = cache.retrieve(pattern(1));
    cache.setLimit(1);
    EXPECT_TRUE(holds(cache, 1, third));
    EXPECT_FALSE(holds(cache, 0, second));
}

TEST(RegularExpressionCache, ServesManyThreadsWhileTheLimitChanges)
{
    RegularExpressionCache cache(8);
    const auto work = [&cache](int seed) {
        for (int i = 0; i < 3000; ++i) {
            const int number = (i * seed) % 16;
            const auto expression = cache.retrieve(pattern(number));
            ASSERT_EQ(expression->pattern(), pattern(number));
            ASSERT_TRUE(expression->match(QString(number, QLatin1Char('a'))).hasMatch());
            if (i % 97 == 0) {
                cache.remove(pattern(number));
            }
            if (i % 31 == 0) {
                cache.setLimit(static_cast<unsigned>(1 + i % 12));
            }
        }
    };
    std::vector<std::thread> threads;
    for (const int seed : {1, 3, 5, 7}) {
        threads.emplace_back(work, seed);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace
} // namespace veltor::utils
