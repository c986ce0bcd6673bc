// Makes the register of a foreign partner of a Russian one: names in Latin letters, dates as ISO 8601. Lines
// are `name;date`, the date as people write it.
//
//     register_names FILE

#include <veltor/utils/DateFormats.h>
#include <veltor/utils/Transliteration.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <cstdio>

using namespace veltor::utils;

namespace {

void print(const QString& line)
{
    std::printf("%s\n", line.toUtf8().constData());
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QFile file(QCoreApplication::arguments().value(1));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fputs("Usage: register_names FILE\n", stderr);
        return 2;
    }

    //! [formats]
    const DateFormats iso = DateFormats::neutral();
    // What both sides have typed in the years before: theirs begin with the month.
    const DateFormats accepted(DateFormats::ofLocale(QLocale(QLocale::Russian)).formats() +
                                   QStringList{QStringLiteral("d/M/yyyy"), QStringLiteral("M/d/yyyy")},
                               QLocale(QLocale::Russian));
    //! [formats]
    bool isWhole = true;
    while (!file.atEnd()) {
        const QStringList words = QString::fromUtf8(file.readLine()).trimmed().split(QLatin1Char(';'));
        //! [line]
        const QString passport = toLatin(words[0], LatinStandard::Passport); // as in their documents
        const QString library =
            toLatin(words[0], LatinStandard::Iso9); // from which the name can be had again
        const DateReading reading = accepted.read(words.value(1));
        if (!reading.isDate()) {
            print(passport + QStringLiteral(": ") + accepted.explain(words.value(1)));
            isWhole = false;
            continue;
        }
        print(QStringList{passport, library, iso.toText(reading.date())}.join(QLatin1Char(';')));
        //! [line]
        if (toCyrillic(library, LatinStandard::Iso9) != words[0]) {
            print(QStringLiteral("This cannot be."));
        }
    }
    return isWhole ? 0 : 1;
}
