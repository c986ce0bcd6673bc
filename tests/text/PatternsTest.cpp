#include <veltor/utils/NumberFormat.h>
#include <veltor/utils/Patterns.h>
#include <veltor/utils/RegularExpressionCache.h>

#include "support/Printers.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
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
    const QLocale egypt(u("ar_EG"));
    const QString minus(egypt.negativeSign());
    const QString exponent = QString(egypt.exponential()) + egypt.positiveSign();
    EXPECT_TRUE(real("ar_EG", DigitsProcessing::Ascii, minus + u("12٫5") + exponent.toUpper() + u("3")));
    EXPECT_TRUE(real("ar_EG", DigitsProcessing::Both, minus + u("1٢٫5") + exponent + u("٣")));
    EXPECT_FALSE(real("ar_EG", DigitsProcessing::Ascii, u("١٢٫٥")));
}

QString pattern(int number)
{
    return QStringLiteral("^a{%1}$").arg(number);
}

/// Beside a plain list, the most recently used first: the same expression as long as the list holds it.
TEST(RegularExpressionCache, ForgetsTheLeastRecentlyUsed)
{
    using Key = RegularExpressionCache::ExpressionFlags;
    std::mt19937 random(1);
    RegularExpressionCache cache;
    std::size_t limit = 1024;
    std::vector<std::pair<Key, std::shared_ptr<QRegularExpression>>> model;
    for (int step = 0; step < 30000; ++step) {
        // Among them one that is invalid.
        const int range = step < 10000 ? 1600 : 12;
        const QString text = pattern(static_cast<int>(random() % static_cast<unsigned>(range))) +
                             (random() % 8 == 0 ? u("(") : QString());
        const Key key = {QRegularExpression::PatternOptions(static_cast<int>(random() % 2)), text};
        const auto found =
            std::find_if(model.begin(), model.end(), [&](const auto& entry) { return entry.first == key; });
        const auto what = random() % 50;
        if (what == 0 && found != model.end()) {
            cache.remove(key);
            model.erase(found);
        } else if (what == 1 && step > 10000) {
            limit = random() % 20;
            cache.setLimit(static_cast<unsigned>(limit));
            limit = limit == 0 ? 1024 : limit;
        } else if (found != model.end()) {
            ASSERT_EQ(cache.retrieve(key), found->second) << step;
            std::rotate(model.begin(), found, found + 1);
        } else {
            const auto expression = cache.retrieve(key.pattern, key.options);
            ASSERT_EQ(expression->pattern(), text);
            ASSERT_EQ(expression->patternOptions(), key.options);
            for (const auto& [other, held] : model) {
                ASSERT_NE(expression, held) << step;
            }
            model.insert(model.begin(), {key, expression});
        }
        model.resize(std::min(model.size(), limit));
    }
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
