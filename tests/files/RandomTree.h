#pragma once

// A random tree of folders, files and links, with the list of what is in it.

#include "support/Files.h"
#include "support/Text.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <map>
#include <random>

namespace veltor::test {

class RandomTree
{
public:
    enum Kind
    {
        File,
        Folder,
        Link
    };

    /// Folders hold a file and a link to @p outside each, and so many more names of chance in all.
    RandomTree(QString root, const QString& outside, unsigned seed, int names)
        : m_root(std::move(root))
        , m_random(seed)
    {
        QDir().mkpath(m_root);
        QStringList folders{QString()};
        for (int i = 0; i < names; ++i) {
            const QString path = folders[below(folders.size())] + name(i);
            switch (below(4)) {
            case 0:
                EXPECT_TRUE(QDir().mkdir(full(path)));
                folders << path + QLatin1Char('/');
                entries[path] = Folder;
                break;
            case 1:
                if (QFile::link(outside, full(path))) {
#ifdef Q_OS_UNIX
                    entries[path] = Link;
                    break;
                }
                [[fallthrough]];
#else
                    QFile::remove(full(path)); // a shortcut file
                }
                [[fallthrough]];
#endif
            default:
                EXPECT_TRUE(QFile(full(path)).open(QIODevice::WriteOnly));
                entries[path] = File;
            }
        }
    }

    [[nodiscard]] QString full(const QString& path) const
    {
        return m_root + QLatin1Char('/') + path;
    }

    int below(int limit)
    {
        return static_cast<int>(m_random() % static_cast<unsigned>(limit));
    }

    std::map<QString, Kind> entries; ///< by path from the root

private:
    QString name(int number)
    {
        static const QStringList words{u("a"),         u(".b"),       u("в г"), u("x.shp"), u("Ё"),
#ifdef Q_OS_UNIX
                                       u("new\nline"), u("tab\t\\x"), u("*?")
#endif
        };
        return words[below(words.size())] + QString::number(number);
    }

    QString m_root;
    std::mt19937 m_random;
};

} // namespace veltor::test
