// Walking and deleting trees, against a model of what lies there.

#include "RandomTree.h"
#include "support/Platform.h"
#include "support/Printers.h"

#include <veltor/utils/TreeRemoval.h>
#include <veltor/utils/TreeWalker.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

using namespace veltor::utils;
using namespace veltor::test;

namespace {

QStringList walked(const QString& root, const TreeRules& rules)
{
    QStringList paths;
    TreeWalker walker(root, rules);
    for (const TreeEntry& entry : walker) {
        EXPECT_EQ(entry.depth, 1 + entry.path.count(QLatin1Char('/')));
        EXPECT_TRUE(entry.path.endsWith(entry.name));
        EXPECT_EQ(entry.bytes, entry.path.toUtf8());
        paths << entry.path;
    }
    EXPECT_EQ(walker.failureCount(), 0);
    return paths;
}

/// Whether a path's place is right with regard to the folder it lies in.
bool comesInOrder(const QStringList& paths, bool foldersLast)
{
    for (int i = 0; i < paths.size(); ++i) {
        const int parent = paths.indexOf(paths[i].section(QLatin1Char('/'), 0, -2));
        if (parent >= 0 && paths[i].contains(QLatin1Char('/')) && (parent > i) != foldersLast) {
            return false;
        }
    }
    return true;
}

} // namespace

TEST(Tree, AWalkShowsWhatTheRulesWant)
{
    const Folder outside;
    outside.write("target/deep/file", "kept");
    for (unsigned seed = 1; seed <= 15; ++seed) {
        SCOPED_TRACE(seed);
        const Folder folder;
        RandomTree tree(folder.path("tree"), outside.path("target"), seed, 60);
        TreeRules rules;
        rules.kinds = TreeEntry::Kinds(TreeEntry::Kind(1 + tree.below(7)));
        rules.hidden = tree.below(2);
        rules.foldersLast = tree.below(2);
        rules.order = tree.below(2) ? TreeRules::ByName : TreeRules::AsFound;
        rules.leastDepth = 1 + tree.below(3);
        rules.longestDepth = 2 + tree.below(4);
        rules.withStatus = tree.below(2);
        rules.names = tree.below(2) ? QStringList() : QStringList{u("x.*"), u("[aЁ]*")};
        QStringList expected;
        for (const auto& [path, kind] : tree.entries) {
            const int depth = 1 + path.count(QLatin1Char('/'));
            const QString name = path.section(QLatin1Char('/'), -1);
            const bool fits = rules.names.isEmpty() || name.startsWith(u("x.")) || name.startsWith(u("a")) ||
                              name.startsWith(u("Ё"));
            const bool hidden = (QLatin1Char('/') + path).contains(u("/."));
            constexpr TreeEntry::Kind kinds[] = {TreeEntry::File, TreeEntry::Folder, TreeEntry::Link};
            if (fits && (rules.hidden || !hidden) && depth >= rules.leastDepth &&
                depth <= rules.longestDepth && rules.kinds.testFlag(kinds[kind])) {
                expected << path;
            }
        }
        QStringList found = walked(folder.path("tree"), rules);
        EXPECT_TRUE(comesInOrder(found, rules.foldersLast)) << found.join(u(" ")).toStdString();
        if (rules.order == TreeRules::ByName) {
            EXPECT_EQ(found, walked(folder.path("tree"), rules));
        }
        std::sort(found.begin(), found.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(found, expected);
    }
}

/// Makes a random tree, some of whose folders are closed, and deletes it; 0 when all was as it should be.
int deletesRandomTree(unsigned seed)
{
    const Folder outside;
    outside.write("target/deep/file", "kept");
    const Folder folder;
    RandomTree tree(folder.path("tree"), outside.path("target"), seed, 80);
    const qint64 count = static_cast<qint64>(tree.entries.size()) + 1;
    for (const auto& [path, kind] : tree.entries) {
        if (kind == RandomTree::Folder && tree.below(2)) {
            QFile::setPermissions(tree.full(path), {});
        }
    }
    const RemovalReport report = removeTree(folder.path("tree"));
    return report.isComplete() && report.removed == count && !QFileInfo::exists(folder.path("tree")) &&
                   outside.read("target/deep/file") == "kept"
               ? 0
               : 1;
}

TEST(Tree, DeletingTakesClosedFoldersAndLeavesWhatLinksLeadTo)
{
    for (unsigned seed = 1; seed <= 8; ++seed) {
        EXPECT_EQ(deletesRandomTree(seed), 0) << seed;
        const int ordinary = forked([seed] { return deletesRandomTree(seed); }, User::Ordinary);
        EXPECT_TRUE(ordinary == 0 || ordinary == NoFork) << seed;
    }
    const Folder outside;
    outside.write("target/file", "kept");
    if (QFile::link(outside.path("target"), outside.path("link"))) {
        EXPECT_EQ(removeTree(outside.path("link")).removed, 1);
    }
    EXPECT_TRUE(removeTree(outside.path("missing/too")).isComplete());
    EXPECT_EQ(removeTree(outside.path("target/..")).failed, 1);
    EXPECT_EQ(outside.read("target/file"), QByteArray("kept"));
}

TEST(Tree, ATreeThatOthersChangeIsRemovedToTheEnd)
{
    const Folder folder;
    const Folder outside;
    outside.write("kept/file", "kept");
    std::atomic<bool> stop{false};
    for (int round = 0; round < 20; ++round) {
        stop = false;
        QDir().mkpath(folder.path("tree/a/b"));
        std::thread other([&, round] {
            // Folders become links and back, move, and get new files.
            for (int i = 0; i < 200 && !stop; ++i) {
                const QString name = folder.path("tree/a/") + QString::number(i % 7);
                QDir().mkpath(name);
                QFile(name + u("/f")).open(QIODevice::WriteOnly);
                QDir().rename(name, folder.path("tree/") + QString::number(i + round));
                QFile::link(outside.path("kept"), name);
            }
        });
        RemovalReport report;
        while (QFileInfo::exists(folder.path("tree"))) {
            report = removeTree(folder.path("tree"));
        }
        stop = true;
        other.join();
        static_cast<void>(removeTree(folder.path("tree")));
    }
    EXPECT_EQ(outside.read("kept/file"), QByteArray("kept"));
}

#ifdef Q_OS_UNIX
TEST(Tree, DepthIsBoundedByNothing)
{
    // More levels than are held open, and a path longer than the system takes as one.
    constexpr int depth = 100;
    const std::string name(200, 'd');
    const Folder folder;
    const auto home = std::filesystem::current_path();
    std::filesystem::create_directory(folder.path("deep").toStdString());
    std::filesystem::current_path(folder.path("deep").toStdString());
    for (int i = 0; i < depth; ++i) {
        std::filesystem::create_directory(name);
        std::ofstream("f").close();
        std::ofstream("g").close();
        std::filesystem::current_path(name);
    }
    std::filesystem::current_path(home);
    TreeRules rules;
    rules.kinds = TreeEntry::Folder | TreeEntry::File;
    rules.foldersLast = true;
    EXPECT_EQ(walked(folder.path("deep"), rules).size(), 3 * depth);
    int calls = 0;
    const RemovalReport cut =
        removeTree(folder.path("deep"), [&calls](const RemovalReport&) { return ++calls < 2; });
    EXPECT_TRUE(cut.canceled);
    const RemovalReport rest = removeTree(folder.path("deep"));
    EXPECT_TRUE(rest.isComplete());
    EXPECT_EQ(cut.removed + rest.removed, 3 * depth + 1);
}

TEST(Tree, FollowedLinksEndAndNamesNeedNotBeText)
{
    const Folder folder;
    folder.write("tree/a/file", "");
    folder.write("other/inner/far", "");
    QFile::link(u(".."), folder.path("tree/a/up"));
    QFile::link(folder.path("other"), folder.path("tree/one"));
    QFile::link(folder.path("other"), folder.path("tree/two"));
    QFile::link(folder.path("tree"), folder.path("other/back"));
    QFile::link(u("nowhere"), folder.path("tree/dangling"));
    TreeRules rules;
    rules.followLinks = true;
    rules.kinds = TreeEntry::File | TreeEntry::Link;
    rules.order = TreeRules::ByName;
    EXPECT_EQ(walked(folder.path("tree"), rules),
              (QStringList{u("a/file"), u("dangling"), u("one/inner/far")}));

    std::ofstream(folder.path("tree").toStdString() + "/raw\xff\n\xd0").close();
    TreeRules raw;
    raw.names = QStringList{u("*xff*")};
    TreeWalker walker(folder.path("tree"), raw);
    ASSERT_TRUE(walker.next());
    EXPECT_EQ(walker.entry().bytes, QByteArray("raw\xff\n\xd0"));
    EXPECT_EQ(walker.entry().name, u("raw\\xff\n\\xd0"));
    EXPECT_FALSE(walker.entry().isText);
    EXPECT_TRUE(removeTree(folder.path("tree")).isComplete());
    EXPECT_TRUE(QFileInfo::exists(folder.path("other/inner/far")));
}
#endif
