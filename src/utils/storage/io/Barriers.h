#pragma once

#include "utils/storage/Fault.h"
#include "utils/storage/io/DeviceIo.h"

#include <veltor/utils/RollbackFile.h>

#include <QtCore/QString>

namespace veltor::utils::io {

/// What a durable transaction waits for. It alone knows what of the journal is on the disk; without durability
/// every question is answered with yes, and nothing is waited for.
///
/// A failed sync is never tried again as if nothing had happened: what the system holds of such a file may
/// differ from the disk for good. From then on nothing may be saved, changed or committed.
class Barriers
{
public:
    /// What is wanted of the next journal. @param folder  where its name stands
    void want(Durability durability) noexcept { m_wanted = durability; }
    void setFolder(const QString& folder) { m_folder = folder; }

    /// A journal was taken.
    void restart() noexcept;

    [[nodiscard]] bool areOn() const noexcept { return m_durability != Durability::None; }
    [[nodiscard]] bool areCareful() const noexcept { return m_durability == Durability::Careful; }
    [[nodiscard]] bool hasFailed() const noexcept { return !m_fault.text.isEmpty(); }

    /// Bytes of the journal were written or cut.
    void journalChanged() noexcept { m_isDirty = true; }

    /// A new journal stands. @param hadBytes  of an older one, which must not show through
    [[nodiscard]] bool afterCreation(const DeviceIo& journal, bool hadBytes);
    /// A record stands to which no link leads yet. @param mayDeceive  half of it could pass for a whole one
    [[nodiscard]] bool beforeLinks(const DeviceIo& journal, bool mayDeceive);
    /// Everything is saved and linked; next a protected file's bytes change.
    [[nodiscard]] bool beforeChange(const DeviceIo& journal);
    /// A protected file has its last contents.
    [[nodiscard]] bool afterChanges(QIODevice& file, const QString& name);
    /// Names in the journal's folder changed.
    [[nodiscard]] bool afterNames();

    /// Why the last one failed.
    [[nodiscard]] const Fault& fault() const noexcept { return m_fault; }

private:
    bool syncJournal(const DeviceIo& journal);

    Durability m_wanted = Durability::None;
    Durability m_durability = Durability::None;
    QString m_folder;
    bool m_isDirty = false;
    bool m_isNamed = false; // the disk knows the journal's name
    Fault m_fault;
};

} // namespace veltor::utils::io
