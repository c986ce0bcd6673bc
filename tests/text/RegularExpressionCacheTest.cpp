#include <veltor/utils/RegularExpressionCache.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace veltor::utils {
namespace {

QString pattern(int number)
{
    return QStringLiteral("^a{%1}$").arg(number);
}

/// Whether the expression is still in the cache. Asking does bring it back, and to the front.
bool holds(RegularExpressionCache& cache, int number, const std::shared_ptr<QRegularExpression>& expression)
{
    return cache.retrieve(pattern(number)) == expression;
}

TEST(RegularExpressionCache, HandsOutOneExpressionPerPatternAndOptions)
{
    RegularExpressionCache cache;
    const auto first = cache.retrieve(pattern(1));
    EXPECT_TRUE(first->match(QStringLiteral("a")).hasMatch());
    EXPECT_EQ(cache.retrieve(pattern(1)), first);
    const auto caseless = cache.retrieve(pattern(1), QRegularExpression::CaseInsensitiveOption);
    EXPECT_NE(caseless, first);
    EXPECT_TRUE(caseless->match(QStringLiteral("A")).hasMatch());
    const auto invalid = cache.retrieve(QStringLiteral("("));
    EXPECT_FALSE(invalid->isValid());
    EXPECT_EQ(cache.retrieve(QStringLiteral("(")), invalid);
}

TEST(RegularExpressionCache, ForgetsTheLeastRecentlyUsed)
{
    RegularExpressionCache cache(2);
    const auto a = cache.retrieve(pattern(1));
    const auto b = cache.retrieve(pattern(2));
    EXPECT_TRUE(holds(cache, 1, a));
    const auto c = cache.retrieve(pattern(3)); // forgets the second
    EXPECT_TRUE(holds(cache, 1, a));
    EXPECT_TRUE(holds(cache, 3, c));
    EXPECT_FALSE(holds(cache, 2, b));
    EXPECT_TRUE(b->match(QStringLiteral("aa")).hasMatch()) << "a forgotten expression is still usable";
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
    cache.remove(pattern(0), QRegularExpression::CaseInsensitiveOption);
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
