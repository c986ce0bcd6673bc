// The names of a transaction on the disk.
//
// Beside the journal J lies, while names are changed, the folder H = ".J.transaction" with the manifest M and
// files whose names are numbers: those made in the transaction, and those that a commit has put aside. M is
// protected by J like any file, so that J rolled back makes it empty again, whoever does that. Until the
// commit files keep their names: J can always be read by those who know nothing of M.
//
//   1. No name in the journal's folder changes while J holds anything.
//   2. M is sealed before J is emptied, so: J empty and M sealed = committed, names to be finished;
//      J empty and M not sealed = undone, nothing to do for M.
//   3. J keeps its name, and so its lock, until H is gone. Everything below is done under that lock.
//   4. A number is used once. What lies under it was made or put aside by this transaction.
//
// Where a kill may fall, in this order, and what the next owner does under the lock:
//
//   J              H, M                              then
//   empty          none                              nothing
//   empty          H, perhaps M, empty               removes H
//   holds blocks   M empty, open or torn, numbers    J rolled back: M is empty, the numbers too; J emptied
//   (the last
//                                                    step of the rollback); removes H
//   holds blocks   M sealed or half sealed           the same
//   half rolled    any of these                      rolls back once more, the same
//   empty          M sealed                          finishes: see below
//   empty          M sealed, "moved" torn or whole   finishes from there on
//   empty          numbers without M, or an empty H  removes H
//   gone           any of these                      the same (somebody without knowledge of H removed J)
//   damaged        any                               refuses; salvaged on demand: removes H, whatever M says
//
// Finishing has two halves, and each can be begun anew at any point:
//
//   aside    every file that gives its name to another one, or loses it, moves to its number. Done for
//            a file whose number is there. No name is given yet, so a name still means the old file.
//   "moved"  is appended to M
//   places   every file moves to its new name, from its number, or from its old name if nobody else gets
//   that. Done for
//            a file that is not there. A name that somebody has taken meanwhile is not overwritten: the
//            names stay pending until it is free.
//
// Where a loss of power is to be survived, the disk gets to know each of these before the next: H, M and
// every number when it is made; the files, M's seal and J's emptiness before a name changes; what was moved
// aside before "moved", that before the places, and these before H is emptied.
//
// Then H is emptied: numbers, M, H itself. M and what is in H are bytes from anywhere: names lead nowhere but
// beneath the journal's folder, no link is followed, and only numbers are ever deleted.

#include "utils/storage/TransactionNames.h"

#include "base/QtDifferences.h"
#include "utils/storage/TransactionMessages.h"
#include "utils/storage/io/DeviceIo.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <algorithm>

namespace veltor::utils {
namespace {

namespace message = transaction::message;
using platform::NameIo;
using platform::NameStatus;
using Status = Transaction::Status;

const QLatin1String manifestLeaf("manifest");

NameIo::Path native(const QString& path)
{
#ifdef Q_OS_WIN
    return path.toStdWString();
#else
    return QFile::encodeName(path).toStdString();
#endif
}

QString folderOf(const QString& name)
{
    return name.left(std::max<base::Length>(name.lastIndexOf(QLatin1Char('/')), 0));
}

QString textOf(const NameIo::Path& path)
{
#ifdef Q_OS_WIN
    return QString::fromStdWString(path.wstring());
#else
    return QFile::decodeName(path.c_str());
#endif
}

Transaction::Result failed(const QString& reason, Status status = Status::Failed)
{
    return {status, reason, 0};
}

} // namespace

TransactionNames::TransactionNames(const QFileInfo& journal, bool trustForeign, bool durable)
    : m_folder(QFileInfo(journal.absolutePath()).canonicalFilePath())
    , m_journal(journal.fileName())
    , m_trustForeign(trustForeign)
    , m_durable(durable)
{}

QString TransactionNames::hiddenName(const QString& leaf) const
{
    const QString folder = QLatin1Char('.') + m_journal + QStringLiteral(".transaction");
    return leaf.isEmpty() ? folder : folder + QLatin1Char('/') + leaf;
}

QString TransactionNames::pathOf(const QString& name) const
{
    return QDir(m_folder).filePath(name);
}

QString TransactionNames::hiddenPath(quint32 number) const
{
    return pathOf(hiddenName(QString::number(number)));
}

QString TransactionNames::manifestPath() const
{
    return pathOf(hiddenName(manifestLeaf));
}

std::optional<QString> TransactionNames::nameOf(const QString& path, Result& failure) const
{
    const QFileInfo file(path);
    // Links on the way are the caller's to use; what counts is where they lead.
    const QString parent = QFileInfo(file.absolutePath()).canonicalFilePath();
    const QString top = m_folder.endsWith(QLatin1Char('/')) ? m_folder : m_folder + QLatin1Char('/');
    const QString whole = parent.endsWith(QLatin1Char('/')) ? parent + file.fileName()
                                                            : parent + QLatin1Char('/') + file.fileName();
    const QString name = parent.isEmpty() || !whole.startsWith(top) ? QString() : whole.mid(top.size());
    if (!journal::isNameBeneath(name)) {
        failure = failed(message::badName(path));
        return std::nullopt;
    }
    if (isReserved(name)) {
        failure = failed(message::nameReserved(path));
        return std::nullopt;
    }
    return name;
}

bool TransactionNames::isOwn(const QString& name) const
{
    const QString folder = hiddenName({});
    return name == folder || name.startsWith(folder + QLatin1Char('/'));
}

bool TransactionNames::isReserved(const QString& name) const
{
    return name == m_journal || isOwn(name);
}

NameStatus TransactionNames::look(const QString& name) const
{
    return platform::nameIo().look(native(m_folder), native(name));
}

bool TransactionNames::exists() const
{
    const NameStatus folder = look(hiddenName({}));
    return folder.kind != Kind::Missing && !folder.impossible;
}

/// Done when the folder can be worked with.
TransactionNames::Result TransactionNames::checkFolder() const
{
    const QString path = pathOf(hiddenName({}));
    const NameStatus folder = look(hiddenName({}));
    if (folder.kind == Kind::Unknown) {
        return failed(message::cannotLook(path, qt_error_string(folder.error)));
    }
    if (folder.kind != Kind::Folder) {
        return failed(message::folderTaken(path), Status::Damaged);
    }
    if (folder.foreign && !m_trustForeign) {
        return failed(message::folderForeign(path), Status::Foreign);
    }
    return {};
}

/// Waits, where that is wanted, until the names in these folders are on the disk.
TransactionNames::Result TransactionNames::sync(const std::set<QString>& folders) const
{
    for (const QString& folder : folders) {
        const int error = m_durable ? platform::nameIo().syncFolder(native(m_folder), native(folder)) : 0;
        if (error != 0) {
            return failed(message::cannotSync(pathOf(folder), qt_error_string(error)));
        }
    }
    return {};
}

TransactionNames::Result TransactionNames::prepare()
{
    for (const QString& leaf : {QString(), QString(manifestLeaf)}) {
        const QString name = hiddenName(leaf);
        if (look(name).kind == Kind::Missing || !exists()) {
            NameIo& io = platform::nameIo();
            const int error = leaf.isEmpty() ? io.createFolder(native(m_folder), native(name))
                                             : io.createFile(native(m_folder), native(name));
            if (error != 0) {
                return failed(message::cannotCreate(pathOf(name), qt_error_string(error)));
            }
        }
    }
    const Result usable = checkFolder();
    return usable ? sync({QString(), hiddenName({})}) : usable;
}

TransactionNames::Result TransactionNames::createHidden(quint32 number)
{
    const int error =
        platform::nameIo().createFile(native(m_folder), native(hiddenName(QString::number(number))));
    return error == 0 ? sync({hiddenName({})})
                      : failed(message::cannotCreate(hiddenPath(number), qt_error_string(error)));
}

void TransactionNames::removeHidden(quint32 number)
{
    platform::nameIo().removeFile(native(m_folder), native(hiddenName(QString::number(number))));
}

std::optional<journal::Manifest> TransactionNames::read(Result& failure) const
{
    if (look(hiddenName(manifestLeaf)).kind == Kind::Missing) {
        return journal::Manifest();
    }
    int fd = -1;
    const int error = platform::nameIo().open(native(m_folder), native(hiddenName(manifestLeaf)), fd);
    QFile file;
    if (error != 0 || !file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        failure = failed(message::manifestUnreadable(manifestPath(), qt_error_string(error)));
        return std::nullopt;
    }
    const QByteArray bytes = file.read(journal::Manifest::MaxSize + 1);
    if (file.error() != QFileDevice::NoError) {
        failure = failed(message::manifestUnreadable(manifestPath(), file.errorString()));
        return std::nullopt;
    }
    std::optional<journal::Manifest> manifest;
    if (bytes.size() <= journal::Manifest::MaxSize) {
        manifest = journal::Manifest::parse(bytes);
    }
    const auto touchesOwn = [this](const journal::NameRecord& record) {
        return isReserved(record.name) || isReserved(record.target);
    };
    if (!manifest || std::any_of(manifest->records.begin(), manifest->records.end(), touchesOwn)) {
        failure = failed(message::manifestDamaged(manifestPath()), Status::Damaged);
        return std::nullopt;
    }
    return manifest;
}

TransactionNames::Result TransactionNames::settle(bool& finished)
{
    finished = false;
    if (!exists()) {
        return {};
    }
    Result result = checkFolder();
    if (!result) {
        return result;
    }
    const std::optional<journal::Manifest> manifest = read(result);
    if (!manifest) {
        return result;
    }
    if (manifest->sealed) {
        result = finish(*manifest);
        if (!result) {
            return result;
        }
        finished = true;
    }
    return clean();
}

TransactionNames::Result TransactionNames::abandon()
{
    if (!exists()) {
        return {};
    }
    const Result result = checkFolder();
    return result ? clean() : result;
}

TransactionNames::Result TransactionNames::seal()
{
    if (!exists()) {
        return {};
    }
    Result result = checkFolder();
    if (!result) {
        return result;
    }
    const std::optional<journal::Manifest> manifest = read(result);
    if (!manifest || manifest->sealed || manifest->records.empty()) {
        return result;
    }
    journal::NameRecord record;
    record.kind = journal::NameRecord::Kind::Sealed;
    record.number = static_cast<quint32>(manifest->records.size());
    return append(*manifest, record);
}

TransactionNames::Result TransactionNames::finish(const journal::Manifest& manifest)
{
    const journal::NameMap::Plan plan = manifest.names.plan();
    if (!manifest.moved) {
        Result result = moveAside(plan);
        if (result && !plan.aside.empty()) {
            std::set<QString> folders{hiddenName({})};
            for (const auto& aside : plan.aside) {
                folders.insert(folderOf(aside.first));
            }
            result = sync(folders);
        }
        if (result && !plan.aside.empty()) {
            journal::NameRecord record;
            record.kind = journal::NameRecord::Kind::Moved;
            result = append(manifest, record);
        }
        if (!result) {
            result.status = Status::NamesPending;
            return result;
        }
    }
    Result result = moveToPlace(plan);
    if (result) {
        std::set<QString> folders{hiddenName({})};
        for (const auto& [from, to, replaces] : plan.moves) {
            folders.insert(folderOf(to));
            folders.insert(folderOf(from.hidden != 0 ? hiddenName(QString::number(from.hidden)) : from.name));
        }
        result = sync(folders);
    }
    if (!result) {
        result.status = Status::NamesPending;
    }
    return result;
}

TransactionNames::Result TransactionNames::moveAside(const journal::NameMap::Plan& plan)
{
    for (const auto& [name, number] : plan.aside) {
        const QString hidden = hiddenName(QString::number(number));
        if (look(hidden).kind == Kind::File) {
            continue; // done
        }
        const NameStatus file = look(name);
        if (file.kind == Kind::Missing || file.kind == Kind::Folder || file.kind == Kind::Other) {
            continue; // somebody else has removed it
        }
        const int error =
            file.kind == Kind::Unknown
                ? file.error
                : platform::nameIo().move(native(m_folder), native(name), native(hidden), false, m_durable);
        if (error != 0) {
            return failed(message::cannotMove(pathOf(name), pathOf(hidden), qt_error_string(error)));
        }
    }
    return {};
}

TransactionNames::Result TransactionNames::moveToPlace(const journal::NameMap::Plan& plan)
{
    for (const auto& [from, to, replaces] : plan.moves) {
        const QString name = from.hidden != 0 ? hiddenName(QString::number(from.hidden)) : from.name;
        const NameStatus file = look(name);
        if (file.kind == Kind::Missing) {
            continue; // done
        }
        if (file.kind == Kind::Folder || file.kind == Kind::Other) {
            return failed(message::notRegular(pathOf(name)));
        }
        const int error =
            file.kind == Kind::Unknown
                ? file.error
                : platform::nameIo().move(native(m_folder), native(name), native(to), replaces, m_durable);
        if (error != 0) {
            return failed(message::cannotMove(pathOf(name), pathOf(to), qt_error_string(error)));
        }
    }
    return {};
}

/// Behind what is whole; so a torn record of an earlier try is overwritten.
TransactionNames::Result TransactionNames::append(const journal::Manifest& manifest,
                                                  const journal::NameRecord& record)
{
    int fd = -1;
    const int error = platform::nameIo().open(native(m_folder), native(hiddenName(manifestLeaf)), fd);
    QFile file;
    if (error != 0 || !file.open(fd, QIODevice::ReadWrite, QFileDevice::AutoCloseHandle)) {
        return failed(message::manifestUnreadable(manifestPath(), qt_error_string(error)));
    }
    const QByteArray bytes = encodeRecord(record);
    const qint64 written = platform::fileIo().writeAt(fd, manifest.size, bytes.constData(), bytes.size());
    if (written != bytes.size()) {
        return failed(message::manifestUnreadable(manifestPath(), qt_error_string(-1)));
    }
    return !m_durable || platform::fileIo().sync(fd)
               ? Result()
               : failed(message::cannotSync(manifestPath(), qt_error_string(-1)));
}

TransactionNames::Result TransactionNames::clean()
{
    NameIo& io = platform::nameIo();
    std::vector<NameIo::Path> names;
    int error = io.list(native(m_folder), native(hiddenName({})), names);
    if (error != 0) {
        return failed(message::cannotLook(pathOf(hiddenName({})), qt_error_string(error)));
    }
    const auto remove = [&](const QString& leaf) {
        const QString name = hiddenName(leaf);
        const int failure = leaf.isEmpty() ? io.removeFolder(native(m_folder), native(name))
                                           : io.removeFile(native(m_folder), native(name));
        return failure == 0 ? Result()
                            : failed(message::cannotRemove(pathOf(name), qt_error_string(failure)));
    };
    bool manifest = false;
    for (const NameIo::Path& path : names) {
        const QString leaf = textOf(path);
        manifest = manifest || leaf == manifestLeaf;
        const bool own = !leaf.isEmpty() && std::all_of(leaf.begin(), leaf.end(), [](QChar character) {
            return character >= QLatin1Char('0') && character <= QLatin1Char('9');
        });
        if (own) {
            if (Result result = remove(leaf); !result) {
                return result;
            }
        }
    }
    if (manifest) {
        if (Result result = remove(manifestLeaf); !result) {
            return result;
        }
    }
    return remove({});
}

} // namespace veltor::utils
