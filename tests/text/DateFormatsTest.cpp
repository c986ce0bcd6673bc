// Dates as text.

#include "support/Printers.h"
#include "support/Text.h"

#include <veltor/err/Exceptions.h>
#include <veltor/utils/DateFormats.h>

#include <gtest/gtest.h>

#include <random>

using namespace veltor::utils;
using veltor::test::u;

namespace {

QString isoOf(const DateReading& reading)
{
    QStringList dates;
    for (const QDate& date : reading.dates) {
        dates << date.toString(Qt::ISODate);
    }
    return dates.join(QLatin1Char(' '));
}

TEST(Dates, AreReadByEveryFormatThatFits)
{
    const DateFormats english({u("M/d/yyyy"), u("d/M/yyyy"), u("d.M.yy"), u("ddd, d MMM yyyy"), u("dMyyyy"),
                               u("d 'of' MMMM yyyy")});
    const DateFormats russian = DateFormats::ofLocale(QLocale(u("ru_RU")));
    const DateFormats neutral = DateFormats::neutral();
    const struct
    {
        const DateFormats& formats;
        const char* text;
        const char* dates;
    } rows[] = {
        {english, "3/4/2024", "2024-03-04 2024-04-03"},
        {english, "4/4/2024", "2024-04-04"},
        {english, " 13/4/2024\t", "2024-04-13"},
        {english, "13/14/2024", ""},
        {english, "1112024", "2024-01-11 2024-11-01"},
        {english, "29.2.00", "2000-02-29"},
        {english, "29.2.50", ""},
        {english, "1.1.49", "2049-01-01"},
        {english, "thu, 29 FEB 2024", "2024-02-29"},
        {english, "Fri, 29 Feb 2024", ""},
        {english, "3 OF \xC2\xA0 may 2024", "2024-05-03"},
        {english, "\xD9\xA3/\xD9\xA3/\xD9\xA2\xD9\xA0\xD9\xA2\xD9\xA4", "2024-03-03"},
        {english, "0/1/2024", ""},
        {english, "1/1/0000", ""},
        {english, "1/1/2024x", ""},
        {english, "", ""},
        {russian, "3.4.2024", "2024-04-03"},
        {russian, "03.04.24", "2024-04-03"},
        {russian, "3 апреля 2024 г.", "2024-04-03"},
        {russian, "3 Апрель 2024", "2024-04-03"},
        {russian, "2024-04-03", "2024-04-03"},
        {russian, "31.4.2024", ""},
        {neutral, "20240403", "2024-04-03"},
        {neutral, "3 April 2024", "2024-04-03"},
        {neutral, "03.04.2024", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(isoOf(row.formats.read(u(row.text))), u(row.dates)) << row.text;
        EXPECT_EQ(row.formats.explain(u(row.text)).isEmpty(), row.formats.read(u(row.text)).isDate())
            << row.text;
    }
    EXPECT_EQ(english.explain(u("3/4/2024")),
              u("'3/4/2024' может быть и Monday, 4 March 2024, и Wednesday, 3 April 2024"));
    EXPECT_EQ(russian.explain(u("x")), u("'x' — не дата; пример даты: 31.12.2024"));
    for (const char* format : {"d.M", "d.M.y", "d.M.yyyy d", "d.M.yyyy h", "ddddd.M.yyyy", "d.M.'yyyy", ""}) {
        EXPECT_THROW(DateFormats({u(format)}), veltor::err::UnexpectedValue) << format;
    }
}

TEST(Dates, AreWrittenSoThatTheyAreReadAgain)
{
    std::mt19937 random(11); // NOLINT
    const auto anyDate = [&random] { return QDate(1, 1, 1).addDays(qint64(random() % 3652059)); };
    for (const char* name :
         {"C", "ru_RU", "en_US", "de_DE", "fr_FR", "zh_CN", "ja_JP", "ar_EG", "fa_IR", "he_IL", "lt_LT"}) {
        const DateFormats formats = DateFormats::ofLocale(QLocale(u(name)));
        EXPECT_GE(formats.formats().size(), 4) << name;
        for (int i = 0; i < 100; ++i) {
            const QDate date = anyDate();
            const QString text = formats.toText(date);
            EXPECT_EQ(formats.read(text).date(), date) << name << ' ' << text.toStdString();
        }
        // Long texts too: all formats but the first one by one.
        for (const QString& format : formats.formats().mid(1)) {
            const DateFormats one({format}, QLocale(u(name)), 2000);
            const QDate date = QDate(2000, 1, 1).addDays(int(random() % 36525));
            EXPECT_EQ(one.read(one.toText(date)).date(), date) << name << ' ' << format.toStdString();
        }
    }
    const DateFormats two({u("d.M.yy"), u("d.M.yyyy")});
    EXPECT_EQ(two.toText(QDate(2049, 12, 31)), u("31.12.49"));
    EXPECT_EQ(two.toText(QDate(2050, 1, 1)), u("1.1.2050"));
    EXPECT_EQ(two.toText(QDate(10000, 1, 1)), QString());
    EXPECT_EQ(two.toText(QDate()), QString());
}

} // namespace
