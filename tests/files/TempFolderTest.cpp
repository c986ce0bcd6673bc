// Temporary folders: who may remove them, and when; with other processes and other users.

#include "support/Files.h"
#include "support/LogCapture.h"
#include "support/Platform.h"
#include "support/Printers.h"
#include "support/Process.h"
#include "support/Text.h"

#include <veltor/utils/TempFileCleanup.h>
#include <veltor/utils/TemporaryDir.h>

#include <QtCore/QThread>

#include <gtest/gtest.h>

#include <cstdio>
#include <optional>
#include <thread>

using namespace veltor::utils;
using namespace veltor::test;

namespace {

/// Names in a folder, hidden ones too.
QStringList namesIn(const QString& path)
{
    return QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

void fill(const TemporaryDir& folder, int files)
{
    for (int i = 0; i < files; ++i) {
        const QString place = folder.filePath(QString::number(i % 5));
        QDir().mkpath(place);
        EXPECT_TRUE(QFile(place + QStringLiteral("/%1").arg(i)).open(QIODevice::WriteOnly));
    }
}

/// Makes temporary folders and removes them for as long as it lives.
const Role makes("make", [](const QStringList& arguments) {
    const LogCapture log;
    std::optional<TemporaryDir> former;
    sayReady();
    for (;;) {
        TemporaryDir folder(arguments[0], u("maker"));
        if (!folder.isValid()) {
            return 1;
        }
        fill(folder, 20);
        former = std::move(folder);
    }
});

/// Holds one folder until it is killed.
const Role holds("hold", [](const QStringList& arguments) {
    const TemporaryDir folder(arguments[0], u("holder"));
    fill(folder, 10);
    std::puts(folder.path().toUtf8().constData());
    std::fflush(stdout);
    for (;;) {
        QThread::sleep(1000);
    }
    return 0;
});

const Role cleans("clean", [](const QStringList& arguments) {
    TempFileCleanup cleanup(arguments[0]);
    cleanup.setAllPrograms(true);
    const TempCleanupReport report = cleanup.run();
    return report.error.isEmpty() && report.contents.isComplete() ? 0 : 1;
});

} // namespace

TEST(TempFolder, IsTheUsersAloneAndGoesWithItsObject)
{
    const Folder base;
    QString path;
    {
        TemporaryDir folder(base.path(), u("пр/ог"));
        ASSERT_TRUE(folder.isValid()) << folder.errorString().toStdString();
        path = folder.path();
        EXPECT_TRUE(QFileInfo(path).fileName().startsWith(u("пр_ог-")));
        EXPECT_EQ(folder.filePath(u("/etc/passwd")), QString());
#ifdef Q_OS_UNIX
        EXPECT_EQ(QFileInfo(path).permissions() & 0x77, QFile::Permissions());
#endif
        fill(folder, 300);
        TempFileCleanup cleanup(base.path());
        cleanup.setAllPrograms(true);
        EXPECT_EQ(cleanup.run().inUse, 1);
        TemporaryDir moved = std::move(folder);
        EXPECT_EQ(moved.path(), path);
        EXPECT_FALSE(folder.isValid()); // NOLINT(bugprone-use-after-move)
    }
    EXPECT_EQ(namesIn(base.path()), QStringList());

    TemporaryDir kept(base.path(), u("p"));
    QFile(kept.filePath(u("result"))).open(QIODevice::WriteOnly);
    const LogCapture log;
    EXPECT_FALSE(kept.keepAs(base.path("no/such/place")));
    EXPECT_TRUE(kept.keepAs(base.path("kept")));
    EXPECT_FALSE(kept.isValid());
    EXPECT_EQ(namesIn(base.path("kept")), QStringList{u("result")});
    EXPECT_FALSE(TemporaryDir(base.path("missing")).isValid());
}

TEST(TempFolder, WhatAKilledProcessLeftIsRemovedAndNothingElse)
{
    const Folder base;
    QStringList left;
    for (int round = 0; round < 5; ++round) {
        Actor holder("hold", {base.path()});
        ASSERT_TRUE(holder.isReady());
        left << QString::fromUtf8(holder.readLine()).trimmed();
        if (round == 0) {
            EXPECT_EQ(TempFileCleanup(base.path(), u("holder")).run().inUse, 1);
        }
    }
    const QString genuine = QFileInfo(left[0]).fileName();
    base.write("other/file", "");
    // Names of the same form that are not such folders: without the mark, a file, a link.
    const auto planted = [&genuine](char last) {
        return genuine.chopped(7) + u("00") + QLatin1Char(last) + u(".tmp");
    };
    base.write((planted('0') + u("/precious")).toUtf8(), "kept");
    base.write(planted('1').toUtf8(), "kept");
    QFile::link(base.path("other"), base.path(planted('2').toUtf8()));
    const TempCleanupReport report = TempFileCleanup(base.path(), u("holder")).run();
    EXPECT_EQ(report.removed, 5);
    EXPECT_TRUE(report.contents.isComplete());
    EXPECT_EQ(report.contents.removed, 5 * (1 + 1 + 5 + 10));
    EXPECT_EQ(base.read((planted('0') + u("/precious")).toUtf8()), QByteArray("kept"));
    EXPECT_EQ(base.read(planted('1').toUtf8()), QByteArray("kept"));
    EXPECT_TRUE(QFileInfo::exists(base.path("other/file")));
#ifdef Q_OS_UNIX
    EXPECT_EQ(report.refused.size(), 3u);
#endif
    EXPECT_EQ(TempFileCleanup(base.path(), u("another")).run().removed, 0);
}

TEST(TempFolder, ManyCleanersAndKilledMakersLeaveNoLitter)
{
    const Folder base;
    const LogCapture log;
    for (int round = 0; round < 10; ++round) {
        Actor maker("make", {base.path()});
        Actor second("make", {base.path()});
        ASSERT_TRUE(maker.isReady() && second.isReady());
        Actor cleaner("clean", {base.path()});
        Actor rival("clean", {base.path()});
        EXPECT_TRUE(maker.killWithin(20000));
        EXPECT_EQ(cleaner.result(), 0);
        rival.killWithin(3000);
        EXPECT_TRUE(second.killWithin(20000)) << "a maker's own folder was taken from it";
    }
    EXPECT_EQ(play("clean", {base.path()}).status, 0);
    EXPECT_EQ(namesIn(base.path()), QStringList());
}

TEST(TempFolder, ACutCleanupIsContinuedByTheNext)
{
    const Folder base;
    {
        Actor holder("hold", {base.path()});
        ASSERT_TRUE(holder.isReady());
    }
    TempFileCleanup cleanup(base.path(), u("holder"));
    cleanup.setProgress([](const RemovalReport&) { return false; });
    const QString place = base.path(namesIn(base.path())[0].toUtf8());
    for (int i = 0; i < 200; ++i) {
        base.write(QStringLiteral("%1/more%2").arg(QFileInfo(place).fileName()).arg(i).toUtf8(), "");
    }
    const TempCleanupReport cut = cleanup.run();
    EXPECT_TRUE(cut.contents.canceled)
        << cut.inUse << " in use, " << cut.waiting << " waiting, " << cut.refused.size() << " refused"
        << (cut.refused.empty() ? "" : cut.refused[0].reason.toUtf8().constData());
    EXPECT_EQ(cut.removed, 0);
    const QStringList aside = namesIn(base.path());
    ASSERT_EQ(aside.size(), 1);
    EXPECT_TRUE(aside[0].endsWith(u(".old")));
    cleanup.setProgress({});
    EXPECT_EQ(cleanup.run().removed, 1);
    EXPECT_EQ(namesIn(base.path()), QStringList());
}

TEST(TempFolder, AForkHasNoPartInTheLock)
{
    const Folder base;
    // The child goes on for as long as it likes: its parent's folder is the parent's.
    auto folder = std::make_unique<TemporaryDir>(base.path(), u("forker"));
    const int removed = forked([&] {
        const bool mine = folder->isValid();
        folder.reset();
        return mine ? 1 : 0;
    });
    if (removed == NoFork) {
        GTEST_SKIP() << "no fork here";
    }
    EXPECT_EQ(removed, 0);
    EXPECT_TRUE(QFileInfo::exists(folder->path()));
    EXPECT_EQ(TempFileCleanup(base.path(), u("forker")).run().inUse, 1);
}

TEST(TempFolder, OthersFoldersStayAndOpenPlacesAreRefused)
{
    const Folder base;
    QFile::setPermissions(base.path(), QFile::Permissions(0x7777));
    const LogCapture log;
    const TemporaryDir refused(base.path());
#ifdef Q_OS_UNIX
    EXPECT_FALSE(refused.isValid()) << "every user may rename what lies here";
    EXPECT_FALSE(TempFileCleanup(base.path()).run().error.isEmpty());
#endif
    const QString shared = QDir::tempPath(); // with the mark against that
    const int made = forked(
        [&] {
            auto* const left = new TemporaryDir(shared, u("veltor-test-other"));
            return left->isValid() ? 0 : 1; // and ends without removing it
        },
        User::Ordinary);
    if (made == NoFork) {
        GTEST_SKIP() << "no other user here";
    }
    ASSERT_EQ(made, 0);
    const auto clean = [&] {
        return TempFileCleanup(shared, u("veltor-test-other")).run().removed == 1 ? 1 : 0;
    };
    const int another = forked(clean, User::Another);
    if (another != NoFork) {
        EXPECT_EQ(another, 0);
    }
    EXPECT_EQ(forked(clean, User::Ordinary), 1);
}
