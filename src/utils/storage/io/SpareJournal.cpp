// A journal's file between two transactions. A kill may fall between any two of these steps:
//
//   journal named -> spare named     the end of the transaction: no journal is there any more
//   spare named -> header cleared    by whoever takes the spare
//   header cleared -> journal named  a journal that protects nothing

#include "utils/storage/io/SpareJournal.h"

#include "utils/storage/io/DeviceIo.h"

#include <optional>
#include <utility>

namespace veltor::utils::io {
namespace {

/// What lies further back is given up.
constexpr qint64 MaxKept = 4 * 1024 * 1024;

QString sparePath(const QFileInfo& journal)
{
    return journal.absolutePath() + QStringLiteral("/.") + journal.fileName() + QStringLiteral(".spare");
}

/// What a file is if it has this one name. Asked anew: after a fork the descriptor leads to nothing, and
/// another name may have come.
std::optional<platform::FileStatus> statusIfNamed(const platform::NativePath& path, const StorageFile& file)
{
    platform::FileStatus status;
    const bool named = platform::fileIo().status(file.descriptor(), status) && status.names == 1 &&
                       platform::names(path, status.identity);
    return named ? std::make_optional(status) : std::nullopt;
}

} // namespace

SpareJournal::SpareJournal(const QFileInfo& journal, QByteArray empty)
    : m_path(journal.absoluteFilePath())
    , m_journal(nativePath(m_path))
    , m_spare(nativePath(sparePath(journal)))
    , m_empty(std::move(empty))
{}

SpareJournal::~SpareJournal()
{
    if (m_file && !m_stays && statusIfNamed(m_spare, *m_file)) {
        platform::fileIo().removeName(m_spare);
    }
}

std::unique_ptr<StorageFile> SpareJournal::take()
{
    if (!m_file || !statusIfNamed(m_spare, *m_file)) { // somebody who minds no locks may have taken its name
        m_file = openLeft();
    }
    const bool isClear = m_file && DeviceIo(*m_file).writeAt(0, m_empty.constData(), m_empty.size()) ==
                                       static_cast<qint64>(m_empty.size());
    if (!isClear || platform::fileIo().moveName(m_spare, m_journal) != 0) {
        return nullptr;
    }
    m_file->setKept(false);
    m_file->setReused();
    return std::move(m_file);
}

/// A spare that somebody left, if nobody has it and it cannot have been planted.
std::unique_ptr<StorageFile> SpareJournal::openLeft() const
{
    auto file = std::make_unique<StorageFile>(m_path, platform::openFile(m_spare, {true, false, true}), true);
    if (!file->isOpen() || !platform::belongsToUser(file->descriptor()) ||
        file->lock().state != platform::LockState::Taken ||
        !statusIfNamed(m_spare, *file)) { // until the lock was ours another could rename it
        return nullptr;
    }
    QByteArray version(m_empty.left(16)); // a file under that name may be anything
    const bool read = DeviceIo(*file).readAt(0, version.data(), version.size()) == version.size();
    return read && m_empty.startsWith(version) ? std::move(file) : nullptr;
}

bool SpareJournal::keep(StorageFile& journal)
{
    const auto status = statusIfNamed(m_journal, journal);
    if (m_file || !status || platform::fileIo().moveName(m_journal, m_spare) != 0) {
        return false;
    }
    m_file.reset(&journal);
    journal.setKept(true);
    if (status->size > MaxKept) {
        static_cast<void>(DeviceIo(journal).resize(MaxKept));
    }
    return true;
}

} // namespace veltor::utils::io
