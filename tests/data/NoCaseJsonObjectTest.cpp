#include <veltor/utils/NoCaseJsonObject.h>

#include "support/Printers.h"

#include <gtest/gtest.h>

namespace veltor::utils {
namespace {

QString u(const char* text)
{
    return QString::fromUtf8(text);
}

TEST(NoCaseJsonObject, FindsMembersAndAliasesInAnyCase)
{
    NoCaseJsonObject object({{u("Name"), 1}, {u("Ключ"), 2}}, {{u("NAME"), u("title")},
                                                               {u("title"), u("caption")},
                                                               {u("Ключ"), u("name")},
                                                               {u("missing"), u("nothing")}});
    for (const char* name : {"Name", "NAME", "nAmE", "TITLE", "Caption"}) {
        EXPECT_TRUE(object.contains(u(name))) << name;
        EXPECT_EQ(object.value(u(name)), QJsonValue(1)) << name;
    }
    EXPECT_EQ(object.value(u("кЛЮЧ")), QJsonValue(2));
    EXPECT_FALSE(object.contains(u("nothing")));
    EXPECT_TRUE(object.value(u("nothing")).isNull());
    EXPECT_EQ(object.size(), 2);
    EXPECT_EQ(object.value(object.begin()), QJsonValue(1)); // by its alias "caption"
    object.set({{u("b"), 1}});
    EXPECT_FALSE(object.contains(u("title")));
    EXPECT_EQ(object.size(), 1);
}

TEST(NoCaseJsonObject, OfSpellingsTheLastMemberWins)
{
    const NoCaseJsonObject object({{u("NAME"), 1}, {u("Name"), 2}, {u("name"), 3}});
    EXPECT_EQ(object.value(u("NAME")), QJsonValue(3));
    EXPECT_EQ(object.size(), 3);
    EXPECT_EQ(object.begin()->first, u("NAME"));
    EXPECT_EQ(object.begin()->second, u("name"));
}

TEST(JsonToLocalizedString, PicksTheLanguage)
{
    const QJsonObject both = {{u("en"), u("Yes")}, {u("ru"), u("Da")}};
    const struct Row
    {
        const char* locale;
        QJsonValue value;
        const char* expected;
    } rows[] = {
        {"ru_RU", both, "Da"},
        {"de_DE", both, "Yes"},
        {"en_US", QJsonObject{{u("aa"), u("no")}, {u("en_us"), u("found")}}, "found"},
        {"en_US", QJsonObject{{u("aa"), u("first")}, {u("en_US"), u("never")}}, "first"},
        {"zh_CN", QJsonObject{{u("aa"), u("no")}, {u("zh_hans"), u("found")}}, "found"},
        {"ru_RU", QJsonObject{{u("en"), u("no")}, {u("ru"), 5}}, ""},
        {"ru_RU", QJsonObject(), ""},
        {"ru_RU", 5, ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(jsonToLocalizedString(row.value, QLocale(QLatin1String(row.locale))), u(row.expected))
            << row.locale << ' ' << row.expected;
    }
}

} // namespace
} // namespace veltor::utils
