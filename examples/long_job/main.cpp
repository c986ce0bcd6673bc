// Reads stations, a line `name;longitude;latitude` each, and tells the user all that went wrong, not only
// the first fault.
//
//     long_job FILE.csv [PAGE.html]

#include <veltor/err/ErrorTracer.h>
#include <veltor/err/Exceptions.h>
#include <veltor/utils/Translation.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QLocale>
#include <QtCore/QPointF>
#include <QtCore/QStringList>

#include <cmath>
#include <cstdio>

namespace err = veltor::err;

namespace {

double degrees(const QString& word, double most)
{
    bool ok = false;
    const double value = word.toDouble(&ok);
    if (!ok) {
        throw err::UnexpectedType(word, QStringLiteral("number"));
    }
    if (!(std::fabs(value) <= most)) {
        throw err::OutOfRange(static_cast<int>(value));
    }
    return value;
}

//! [nested]
QPointF station(const QStringList& words)
{
    try {
        return {degrees(words.value(1), 180), degrees(words.value(2), 90)};
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error("The station has no position"));
    }
}
//! [nested]

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    veltor::utils::installTranslation(QLocale::system());
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.isEmpty() || words.size() > 2) {
        std::fputs("Usage: long_job FILE.csv [PAGE.html]\n", stderr);
        return 2;
    }

    //! [collect]
    err::ErrorTracer errors;
    QFile file(words[0]);
    if (!file.open(QIODevice::ReadOnly)) {
        errors.add(err::ErrorSeverity::Fatal, file.errorString(), {words[0]});
    }
    int stations = 0;
    for (int line = 1; file.isOpen() && !file.atEnd(); ++line) {
        const QStringList fields = QString::fromUtf8(file.readLine()).trimmed().split(QLatin1Char(';'));
        const err::ErrorSource source{words[0], line, fields[0]};
        if (fields[0].isEmpty()) {
            errors.add(err::ErrorSeverity::Warning, QStringLiteral("Left out: no name"), source);
            continue;
        }
        try {
            static_cast<void>(station(fields));
            ++stations;
        } catch (const std::exception&) {
            errors.addCurrentException(source);
        }
    }
    //! [collect]
    std::printf("%d stations\n", stations);

    //! [show]
    if (errors.isEmpty()) {
        return 0;
    }
    std::fputs(errors.toText(QStringLiteral("Stations")).toUtf8().constData(), stdout);
    if (words.size() > 1) {
        QFile page(words[1]);
        if (!page.open(QIODevice::WriteOnly) || !errors.writeHtml(page, QStringLiteral("Stations"))) {
            std::fprintf(stderr, "%s\n", page.errorString().toUtf8().constData());
        }
    }
    return errors.worst() >= err::ErrorSeverity::Error ? 1 : 0;
    //! [show]
}
