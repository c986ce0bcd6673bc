#pragma once

#include "utils/storage/io/StorageFile.h"

#include <QtCore/QFileInfo>

#include <memory>

namespace veltor::utils::io {

/// The file of a journal whose transaction has ended, kept for the next one under another name in the same
/// folder, where no recovery looks: ".NAME.spare". To make a new file and give it pages costs more than most
/// transactions.
///
/// Whoever has a spare's lock may rename it, and nobody else; no name is ever taken from another file. What
/// the spare held lies in it until it is overwritten, but its header leads nowhere before it gets the
/// journal's name.
class SpareJournal
{
public:
    /// @param journal  whose spare it is
    /// @param empty  the bytes of a journal that protects nothing; the first 16 are every journal's
    SpareJournal(const QFileInfo& journal, QByteArray empty);
    ~SpareJournal();
    SpareJournal(const SpareJournal&) = delete;
    SpareJournal& operator=(const SpareJournal&) = delete;

    /// Whether the spare stays in its folder when this object goes; otherwise it is deleted.
    void setStays(bool stays) noexcept { m_stays = stays; }

    /// Clears the spare's header and gives it the journal's name, if there is a good one and that is free.
    /// @return the open file, locked, or null
    [[nodiscard]] std::unique_ptr<StorageFile> take();

    /// Makes a spare of a journal, in one step after which the journal is no more. The file is this object's
    /// then, and its owner leaves it (see StorageFile::isKept()). False, and nothing done, when the name is
    /// not that file's, or another one leads to it too, or there is a spare already.
    bool keep(StorageFile& journal);

private:
    [[nodiscard]] std::unique_ptr<StorageFile> openLeft() const;

    QString m_path; // of the journal
    platform::NativePath m_journal;
    platform::NativePath m_spare;
    QByteArray m_empty;
    bool m_stays = false;
    std::unique_ptr<StorageFile> m_file; // has the spare's name and its lock
};

} // namespace veltor::utils::io
