// Names and paths.

#include "RandomTree.h"
#include "support/Printers.h"
#include "support/Process.h"

#include <veltor/utils/FileNames.h>
#include <veltor/utils/Paths.h>
#include <veltor/utils/UniqueFile.h>

#include <filesystem>

using namespace veltor::utils;
using namespace veltor::test;

TEST(Names, SuffixesAreFoundAndReplaced)
{
    const char* const rows[][3] = {
        // path, without its suffix, its suffix
        {"map.shp", "map", "shp"},
        {"/a.b/map", "/a.b/map", ""},
        {"/a.b/map.tar.gz", "/a.b/map", "tar.gz"},
        {"d/my.map.v2.GeoJSON.ZST", "d/my.map.v2", "GeoJSON.ZST"},
        {"2024.gz", "2024", "gz"},
        {"report.2024.gz", "report.2024", "gz"},
        {"a.long suffix.gz", "a.long suffix", "gz"},
        {"roads.shp.xml", "roads", "shp.xml"},
        {"roads.old.xml", "roads.old", "xml"},
        {".bashrc", ".bashrc", ""},
        {".tar.gz", ".tar", "gz"},
        {"..x", "..x", ""},
        {"..", "..", ""},
        {"end.", "end.", ""},
        {"a..gz", "a.", "gz"},
        {"дом.тар.gz", "дом", "тар.gz"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row[0]);
        const QString path = u(row[0]);
        const QString suffix = u(row[2]);
        EXPECT_EQ(withoutFileSuffix(path), u(row[1]));
        EXPECT_EQ(fileSuffix(path), suffix);
        EXPECT_EQ(dottedFileSuffix(path), suffix.isEmpty() ? suffix : u(".") + suffix);
        EXPECT_EQ(withFileSuffix(path, suffix), path);
        EXPECT_EQ(withFileSuffix(path, u(".q")), u(row[1]) + u(".q"));
        EXPECT_EQ(addedFileSuffix(addedFileSuffix(path, u("z.y")), u(".Z.y")), path + u(".z.y"));
        EXPECT_EQ(hasFileSuffix(path, suffix.toUpper(), Qt::CaseInsensitive), !suffix.isEmpty());
        EXPECT_FALSE(hasFileSuffix(path, u("shq")));
    }
    EXPECT_FALSE(hasFileSuffix(u("a.SHP"), u("shp"), Qt::CaseSensitive));
    EXPECT_FALSE(hasFileSuffix(u("d/.shp"), u("shp")));
#ifdef Q_OS_UNIX
    EXPECT_EQ(fileNameCase(u("/tmp/no/such/folder")), Qt::CaseSensitive);
#else
    EXPECT_EQ(fileNameCase(QDir::tempPath()), Qt::CaseInsensitive);
#endif
}

TEST(Names, SafeNamesOfAwkwardTexts)
{
    const char* const rows[][2] = {
        {"plan", "plan"},
        {"", "file"},
        {" . ", "file"},
        {"..", "file"},
        {"a/b\\c:d*e?f\"g<h>i|j", "a_b_c_d_e_f_g_h_i_j"},
        {"  two words. . ", "two words"},
        {"line\r\nbreak\t", "line__break_"},
        {"con", "con_"},
        {"NUL.tar.gz", "NUL_.tar.gz"},
        {"Aux .txt", "Aux_.txt"},
        {"com1", "com1_"},
        {"COM\xC2\xB2.x", "COM\xC2\xB2_.x"},
        {"COM10", "COM10"},
        {"lpt0", "lpt0_"},
        {"CONIN$", "CONIN$_"},
        {"console", "console"},
        {".hidden", ".hidden"},
        {"\xE2\x80\xAEtxt.exe", "_txt.exe"},
        {"\xD0\xB8\xCC\x86", "\xD0\xB9"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(safeFileName(u(row[0])), u(row[1])) << row[0];
    }
    SafeNameRules rules;
    rules.longestBytes = 20;
    EXPECT_EQ(safeFileName(u("длинное название.shp"), rules), u("длинное.shp"));
    EXPECT_EQ(safeFileName(u("CONIN$     and more.geojs"), rules), u("CONIN$     and.geojs"));
    EXPECT_EQ(safeFileName(u("CON                          .tar.gz"), rules), u("CON_.tar.gz"));
}

TEST(Names, SafeNamesOfAnyTextAreTakenByTheSystem)
{
    const Folder folder;
    std::mt19937 random(7);
    const QString letters = u("aZ.. /\\:*CONul1$\"\n\x7f-~é\xCC\x86") + QChar(0xD801) + QChar(0xDC37) +
                            QChar(0x202E) + QChar(0xFFFF) + u("жЖ日本€");
    for (int i = 0; i < 1500; ++i) {
        QString text;
        const auto length = random() % (i % 10 == 0 ? 400u : 12u);
        for (unsigned c = 0; c < length; ++c) {
            text += letters[static_cast<int>(random() % static_cast<unsigned>(letters.size()))];
        }
        SafeNameRules rules;
        rules.longestBytes = i % 3 == 0 ? 20 : 255;
        const QString name = safeFileName(text, rules);
        ASSERT_EQ(safeFileName(name, rules), name);
        ASSERT_FALSE(isReservedFileName(name)) << name.toStdString();
        ASSERT_LE(name.toUtf8().size(), rules.longestBytes);
        ASSERT_EQ(QString::fromUtf8(name.toUtf8()), name);
        QFile file(folder.path(name.toUtf8()));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
        ASSERT_TRUE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).contains(name));
        file.remove();
    }
}

namespace {

const Role wants("want", [](const QStringList& arguments) {
    for (int i = 0; i < 40; ++i) {
        const auto file = createUniqueFile(arguments[0]);
        if (!file || file->write("x") != 1 || createUniqueFolder(arguments[1]).isEmpty()) {
            return 1;
        }
        const QString source = file->fileName();
        file->close();
        if (moveToUniqueName(source, arguments[2]).isEmpty()) {
            return 1;
        }
    }
    return 0;
});

} // namespace

TEST(Names, UniqueNamesAreUniqueAmongProcesses)
{
    const Folder folder;
    {
        const QStringList paths{folder.path("map.tar.gz"), folder.path("dir"), folder.path("done.tar.gz")};
        std::vector<std::unique_ptr<Actor>> actors;
        for (int i = 0; i < 4; ++i) {
            actors.push_back(std::make_unique<Actor>("want", paths));
        }
        for (const auto& actor : actors) {
            EXPECT_EQ(actor->result(), 0);
        }
    }
    QDir found(folder.path());
    EXPECT_EQ(found.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 160);
    EXPECT_EQ(found.entryList({u("done*.tar.gz")}, QDir::Files).size(), 160);
    EXPECT_EQ(found.entryList(QDir::Files).size(), 160);
    EXPECT_TRUE(found.exists(u("done (2).tar.gz")));
    const QString longest = QString(251, QLatin1Char('n')) + u(".shp");
    EXPECT_EQ(QFileInfo(*createUniqueFile(folder.path(longest.toUtf8()))).fileName(), longest);
    EXPECT_EQ(QFileInfo(*createUniqueFile(folder.path(longest.toUtf8()))).fileName(),
              QString(247, QLatin1Char('n')) + u(" (2).shp"));
    EXPECT_EQ(createUniqueFolder(folder.path("solo/")), folder.path("solo"));
    EXPECT_EQ(createUniqueFolder(folder.path("solo//")), folder.path("solo (2)"));
    EXPECT_EQ(moveToUniqueName(createUniqueFolder(folder.path("lone")), folder.path("solo/")),
              folder.path("solo (3)"));
    QString error;
    EXPECT_EQ(createUniqueFile(folder.path("no/such/file"), &error), nullptr);
    EXPECT_TRUE(error.contains(u("no/such/file"))) << error.toStdString();
#ifdef Q_OS_UNIX
    QFile::link(u("nowhere"), folder.path("link"));
    EXPECT_NE(createUniqueFile(folder.path("link"))->fileName(), folder.path("link"));
#endif
}

/// Where the system comes to on a path; empty when there is nothing.
QString systemPath(const QString& path)
{
#ifdef Q_OS_WIN
    return QFileInfo(path).canonicalFilePath();
#else
    std::error_code error;
    const auto found = std::filesystem::canonical(path.toStdString(), error);
    return error ? QString() : QString::fromStdString(found.string());
#endif
}

TEST(Paths, TypedPathsFollowTheirRule)
{
    const Folder folder;
    const QString canonical = QDir(folder.path()).canonicalPath();
    folder.write("in/a..b", "");
    folder.write("in/plain", "");
    const QDir in(folder.path("in"));
    const QDir sub(folder.path("in/sub"));
    const QString plain = folder.path("in/plain");
    EXPECT_EQ(typedFilePath(in, plain, PathType::Relative), u("plain"));
    EXPECT_EQ(typedFilePath(in, plain, PathType::Canonical), canonical + u("/in/plain"));
    EXPECT_EQ(typedFilePath(in, plain, PathType::RelativeUnlessOutside), u("plain"));
    EXPECT_EQ(typedFilePath(sub, plain, PathType::Relative), u("../plain"));
    EXPECT_EQ(typedFilePath(sub, plain, PathType::RelativeUnlessOutside), canonical + u("/in/plain"));
    EXPECT_EQ(typedFilePath(in, folder.path("in/a..b"), PathType(7)), canonical + u("/in/a..b"));
    EXPECT_EQ(typedFilePath(in, folder.path("in/none"), PathType::Canonical), QString());
    EXPECT_EQ(pathOpenError(u("%0: no%1"), u("a%1%2"), u("why")), u("a%1%2: no: why"));
    EXPECT_EQ(pathOpenError(u("%0: no%1"), u("a"), QString()), u("a: no"));
}

TEST(Paths, RelativePathsLeadThereThroughLinks)
{
    const Folder outside;
    outside.write("target/deep/file", "");
    for (unsigned seed = 1; seed <= 12; ++seed) {
        const Folder folder;
        RandomTree tree(folder.path("tree"), outside.path("target/deep"), seed, 40);
        std::vector<QString> folders;
        std::vector<QString> all;
        for (const auto& [path, kind] : tree.entries) {
            all.push_back(tree.full(path));
            if (kind != RandomTree::File) {
                folders.push_back(tree.full(path));
                all.push_back(tree.full(path) + u("/..")); // out of where a link leads to
                all.push_back(tree.full(path) + u("/file"));
            }
        }
        for (int i = 0; i < 100 && !folders.empty(); ++i) {
            const QString from =
                folders[static_cast<std::size_t>(tree.below(static_cast<int>(folders.size())))];
            const QString to = all[static_cast<std::size_t>(tree.below(static_cast<int>(all.size())))];
            SCOPED_TRACE((from + u(" -> ") + to).toStdString());
            const auto way = relativePath(from, to);
            ASSERT_TRUE(way);
            EXPECT_FALSE(QDir::isAbsolutePath(*way));
            // The system itself goes the way; canonicalFilePath() of what does not exist is empty.
            EXPECT_EQ(systemPath(from + u("/") + *way), systemPath(to)) << way->toStdString();
            EXPECT_EQ(resolvedPath(resolvedPath(to)), resolvedPath(to));
            if (!systemPath(to).isEmpty()) {
                EXPECT_EQ(resolvedPath(to), systemPath(to));
            }
            const QString common = commonPath({from, to});
            EXPECT_TRUE(resolvedPath(to).startsWith(common) && resolvedPath(from).startsWith(common));
            EXPECT_EQ(commonPath({to, from, to}), common);
        }
    }
    EXPECT_EQ(relativePath(u("/a/b"), u("/a/b")), u("."));
    EXPECT_EQ(commonPath({}), QString());
    EXPECT_EQ(commonPath({u("/usr/a"), u("/usr/ab")}), resolvedPath(u("/usr")));
}
