// Appends a line to a file, or says why that cannot be done.
//
//     why_not_writable FILE LINE

#include <veltor/utils/LockInfo.h>
#include <veltor/utils/Translation.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QLocale>
#include <QtCore/QStringList>

#include <cstdio>

using veltor::utils::LockInfo;
using veltor::utils::WriteObstacle;

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    veltor::utils::installTranslation(QLocale::system());
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.size() != 2) {
        std::fputs("Usage: why_not_writable FILE LINE\n", stderr);
        return 2;
    }

    //! [ask]
    QFile file(words[0]);
    const QByteArray line = words[1].toUtf8() + '\n';
    if (file.open(QIODevice::Append) && file.write(line) == line.size() && file.flush()) {
        return 0;
    }
    // Only now: what is found is true for this moment, and tells why it failed, not whether it will.
    const LockInfo info(file.fileName(), line.size());
    const QString reason = info.whyNotWritable();
    //! [ask]
    std::printf("%s\n", (reason.isEmpty() ? file.errorString() : reason).toUtf8().constData());

    //! [holders]
    for (const auto& holder : info.holders()) {
        std::printf("  %s\n", LockInfo::describe(holder).toUtf8().constData());
    }
    if (!info.whatIsHidden().isEmpty()) {
        std::printf("  (%s)\n", info.whatIsHidden().toUtf8().constData());
    }
    //! [holders]
    return 1;
}
