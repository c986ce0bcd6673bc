// A window with a list of background tasks, in the user's language: Russian, or English for everybody else.
// Files named on the command line are checksummed at once.

#include "ProgressWindow.h"

#include <veltor/utils/Translation.h>

#include <QtCore/QTranslator>
#include <QtWidgets/QApplication>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    //! [language]
    const bool russian = QLocale().language() == QLocale::Russian;
    veltor::utils::installTranslation(russian ? QLocale() : QLocale(QLocale::English)); // the library's texts
    QTranslator english;                                                                // and our own
    if (!russian && english.load(QStringLiteral(":/progress_window/progress_window_en.qm"))) {
        QCoreApplication::installTranslator(&english);
    }
    //! [language]
    ProgressWindow window;
    const QStringList paths = QCoreApplication::arguments().mid(1);
    for (const QString& path : paths) {
        window.addChecksums(path, {path});
    }
    window.show();
    return QApplication::exec();
}
