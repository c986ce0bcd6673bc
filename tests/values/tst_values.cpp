#include <veltor/BaseTypeInfo.h>
#include <veltor/utils/ActiveMouseStatus.h>
#include <veltor/utils/PageRange.h>
#include <veltor/utils/PlatformMask.h>
#include <veltor/utils/VariantCompare.h>

#include "support/Printers.h"
#include "support/Text.h"

#include <QtCore/QDate>

#include <gtest/gtest.h>

#include <limits>
#include <thread>
#include <tuple>

namespace veltor::utils {
namespace {

using test::u;

TEST(PageRange, isCroppedToTheNumberOfPages)
{
    constexpr quint32 most = std::numeric_limits<quint32>::max();
    const std::tuple<PageRange, quint32, PageRange> rows[] = {
        {{5, 10}, 8, {5, 3}},
        {{5, 10}, 4, {0, 0}},
        {{5, 10}, 5, {5, 0}},
        {{5, 10}, 15, {5, 10}},
        {{most, most}, most, {most, 0}},
        {{1, most}, most, {1, most - 1}},
    };
    for (const auto& [given, size, cropped] : rows) {
        PageRange range = given;
        range.cropToSize(size);
        EXPECT_TRUE(range == cropped) << range.start << ' ' << range.count << " of " << size;
        EXPECT_TRUE(given.croppedToSize(size).isEqual(cropped));
    }
    EXPECT_TRUE((PageRange{1, 2} != PageRange{1, 3}));
}

TEST(PlatformMask, isReadFromText)
{
    const std::pair<const char*, unsigned> rows[] = {
        {"", 15},          {"   ", 0},        {"none", 0},        {"Windows, macOS", 6},
        {"UNIX", 1},       {"Apple-iOS", 4},  {"linux;linux", 1}, {"win_32/android9", 10},
        {"darwin", 0},     {"xmac, 7win", 0}, {"MACwin", 4},      {"ыlinuxы unix", 1},
        {"; ,Linux. ", 1}, {"an-droid", 0},
    };
    for (const auto& [text, mask] : rows) {
        EXPECT_EQ(toPlatformMask(QString::fromUtf8(text)), mask) << text;
    }
    EXPECT_EQ(toPlatformMask(QString()), 15U);
}

TEST(PlatformMask, isWrittenInItsFixedOrderAndReadBack)
{
    EXPECT_EQ(fromPlatformMask(15), QStringLiteral("mac;win;linux;android"));
    EXPECT_EQ(fromPlatformMask(16), QStringLiteral("none"));
    for (unsigned mask = 0; mask < 32; ++mask) {
        EXPECT_EQ(toPlatformMask(fromPlatformMask(mask)), mask & 15U) << mask;
    }
}

TEST(ActiveMouseStatus, keepsButtonsAndFlagApart)
{
    const auto flagBit = static_cast<Qt::MouseButton>(0x4000000);
    ActiveMouseStatus status;
    EXPECT_TRUE(status.expects(Qt::NoButton));
    status.setExpectedButtons(Qt::LeftButton | Qt::RightButton | flagBit);
    EXPECT_FALSE(status.isActive());
    EXPECT_EQ(status.expectedButtons(), Qt::LeftButton | Qt::RightButton);
    EXPECT_TRUE(status.expects(Qt::LeftButton));
    EXPECT_FALSE(status.expects(Qt::MiddleButton));
    EXPECT_FALSE(status.expects(Qt::NoButton));
    EXPECT_FALSE(status.expects(flagBit));
    EXPECT_TRUE(status.expects(static_cast<Qt::MouseButton>(3)));
    EXPECT_FALSE(status.expects(static_cast<Qt::MouseButton>(5)));

    status.setActiveStatus(true);
    EXPECT_FALSE(status.expects(flagBit));
    status.setExpectedButtons(static_cast<Qt::MouseButton>(0x80000000));
    EXPECT_TRUE(status.isActive());
    status.setActiveStatus(false);
    EXPECT_FALSE(status.isActive());
}

TEST(BaseTypeInfo, answersWhileOthersRead)
{
    struct Base
    {};
    struct Derived : Base
    {};
    EXPECT_EQ(BaseTypeInfo::baseType(typeid(Derived)), typeid(Derived));
    {
        const QWriteLocker lock(&BaseTypeInfo::lock);
        BaseTypeInfo::baseTypeMap.emplace(typeid(Derived), typeid(Base));
    }
    {
        const QReadLocker lock(&BaseTypeInfo::lock);
        std::thread([] {
            EXPECT_EQ(BaseTypeInfo::baseType(typeid(Derived)), typeid(Base));
            EXPECT_EQ(BaseTypeInfo::baseType(typeid(Base)), typeid(Base));
        }).join();
    }
    const QWriteLocker lock(&BaseTypeInfo::lock);
    BaseTypeInfo::baseTypeMap.erase(typeid(Derived));
}

TEST(VariantCompare, isQtsOwnOrder)
{
    EXPECT_LT(compare(1, 2.5), 0);
    EXPECT_GT(compare(-1, 1U), 0);
    EXPECT_LT(compare(u("a"), u("B")), 0);
    EXPECT_EQ(compare(u("a"), u("a")), 0);
    EXPECT_LT(compare(9, u("10")), 0);
    EXPECT_LT(compare(u("10"), 9), 0);
    EXPECT_GT(compare(QDate(2020, 1, 2), QDate(2019, 12, 31)), 0);
}

} // namespace
} // namespace veltor::utils
