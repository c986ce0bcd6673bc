// A window with a list of background tasks. Files named on the command line are checksummed at once.

#include "ProgressWindow.h"

#include <QtWidgets/QApplication>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    ProgressWindow window;
    const QStringList paths = QCoreApplication::arguments().mid(1);
    for (const QString& path : paths) {
        window.addChecksum(path, {path});
    }
    window.show();
    return QApplication::exec();
}
