// What a durable transaction waits for.

#include "utils/storage/io/Barriers.h"

#include "platform/NameIo.h"
#include "utils/storage/StorageMessages.h"
#include "utils/storage/io/StorageFile.h"

namespace veltor::utils::io {

void Barriers::restart() noexcept
{
    m_durability = m_wanted;
    m_isDirty = true; // whoever wrote it may not have waited
    m_isNamed = false;
    m_fault = {};
}

bool Barriers::syncJournal(const DeviceIo& journal)
{
    if (!m_isDirty) {
        return true;
    }
    if (!journal.sync()) {
        m_fault = {message::journalNotSynced(), journal.reason()};
        return false;
    }
    m_isDirty = false;
    return true;
}

bool Barriers::afterCreation(const DeviceIo& journal, bool hadBytes)
{
    return !areOn() || !(hadBytes || areCareful()) || syncJournal(journal);
}

bool Barriers::beforeLinks(const DeviceIo& journal, bool mayDeceive)
{
    return !areOn() || !(mayDeceive || areCareful()) || syncJournal(journal);
}

bool Barriers::beforeChange(const DeviceIo& journal)
{
    return !areOn() || (syncJournal(journal) && (m_isNamed || afterNames()));
}

bool Barriers::afterChanges(QIODevice& file, const QString& name)
{
    if (!areOn()) {
        return true;
    }
    const DeviceIo io(file);
    const bool done = io.sync();
    if (!done) {
        m_fault = {message::fileNotSynced(name), io.reason()};
    }
    return done;
}

bool Barriers::afterNames()
{
    if (!areOn()) {
        return true;
    }
    if (const int error = platform::nameIo().syncFolder(nativePath(m_folder), {})) {
        m_fault = {message::folderNotSynced(m_folder), qt_error_string(error)};
        return false;
    }
    m_isNamed = true;
    return true;
}

} // namespace veltor::utils::io
