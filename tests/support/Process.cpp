#include "Process.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QMap>
#include <QtCore/QRandomGenerator>

#include <cstdio>

namespace veltor::test {
namespace {

constexpr int LongestMs = 120000;
const QString roleWord = QStringLiteral("--role");

using Roles = QMap<QString, int (*)(const QStringList&)>;

Roles& roles()
{
    static Roles roles;
    return roles;
}

QStringList words(const char* role, const QStringList& arguments)
{
    return QStringList{roleWord, QString::fromLatin1(role)} + arguments;
}

int statusOf(const QProcess& process)
{
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

void start(QProcess& process, const QString& program, const QStringList& arguments)
{
    QStringList words = commandOf(program) + arguments;
    process.start(words.takeFirst(), words);
}

} // namespace

QStringList commandOf(const QString& program)
{
    QStringList words;
#ifdef VELTOR_EMULATOR
    if (QDir::isAbsolutePath(program)) {
        for (const char* word : {VELTOR_EMULATOR}) {
            words.append(QString::fromUtf8(word));
        }
    }
#endif
    return words << program;
}

Outcome run(const QString& program, const QStringList& arguments, const QByteArray& input)
{
    QProcess process;
    start(process, program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(LongestMs)) {
        return {-1, {}, process.errorString().toStdString()};
    }
    return {statusOf(process), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().replace("\r\n", "\n").toStdString()};
}

Role::Role(const char* name, int (*play)(const QStringList& arguments))
{
    roles()[QString::fromLatin1(name)] = play;
}

void sayReady()
{
    std::puts("ready");
    std::fflush(stdout);
}

Actor::Actor(const char* role, const QStringList& arguments)
{
    setProcessChannelMode(QProcess::ForwardedErrorChannel);
    test::start(*this, QCoreApplication::applicationFilePath(), words(role, arguments));
}

Actor::~Actor()
{
    kill();
    waitForFinished(LongestMs);
}

bool Actor::isReady()
{
    return bytesAvailable() > 0 || waitForReadyRead(LongestMs);
}

bool Actor::killWithin(int longestUs)
{
    QElapsedTimer timer;
    timer.start();
    const qint64 moment = 1000LL * QRandomGenerator::global()->bounded(longestUs);
    while (timer.nsecsElapsed() < moment) {
    }
    kill();
    return waitForFinished(LongestMs) && exitStatus() == QProcess::CrashExit;
}

int Actor::result()
{
    return state() == QProcess::NotRunning || waitForFinished(LongestMs) ? statusOf(*this) : -1;
}

Outcome play(const char* role, const QStringList& arguments)
{
    return run(QCoreApplication::applicationFilePath(), words(role, arguments));
}

int playedRole()
{
    const QStringList arguments = QCoreApplication::arguments();
    return arguments.value(1) == roleWord ? roles().value(arguments.value(2))(arguments.mid(3)) : -1;
}

} // namespace veltor::test
