#pragma once

#include "platform/NameIo.h"
#include "utils/storage/journal/Manifest.h"

#include <veltor/utils/Transaction.h>

#include <QtCore/QFileInfo>

#include <optional>
#include <set>

namespace veltor::utils {

/// The names of a transaction on the disk: the hidden folder, the manifest in it, and what a commit makes of
/// both. Whoever calls it holds the journal's lock. TransactionNames.cpp says what is where at every moment.
class TransactionNames
{
public:
    using Result = Transaction::Result;
    using Kind = platform::NameStatus::Kind;

    /// @param durable  each step is on the disk before the next one that counts on it
    TransactionNames(const QFileInfo& journal, bool trustForeign, bool durable);

    /// The name beneath the journal's folder of what @p path leads to; nothing for what lies elsewhere or
    /// belongs to the transaction itself, @p failure says why.
    [[nodiscard]] std::optional<QString> nameOf(const QString& path, Result& failure) const;
    [[nodiscard]] QString pathOf(const QString& name) const;
    [[nodiscard]] QString hiddenPath(quint32 number) const;
    [[nodiscard]] QString manifestPath() const;

    /// Whether a name is that of the hidden folder or of something in it.
    [[nodiscard]] bool isOwn(const QString& name) const;

    [[nodiscard]] platform::NameStatus look(const QString& name) const;

    /// Makes the folder and an empty manifest.
    Result prepare();
    Result createHidden(quint32 number);
    void removeHidden(quint32 number);

    /// Whether the folder is there, or cannot be asked.
    [[nodiscard]] bool exists() const;
    /// What the manifest says now; nothing when it is damaged or cannot be read.
    [[nodiscard]] std::optional<journal::Manifest> read(Result& failure) const;

    /// What is due when the journal holds nothing (any more): finishes the names of a manifest that is
    /// sealed, then removes the folder and all that is its own.
    /// @param finished  set when there were names to finish
    Result settle(bool& finished);
    /// Removes the folder whatever its manifest says.
    Result abandon();
    /// Completes a manifest that a death has left open.
    Result seal();

private:
    [[nodiscard]] QString hiddenName(const QString& leaf) const;
    [[nodiscard]] Result checkFolder() const;
    [[nodiscard]] Result sync(const std::set<QString>& folders) const;
    Result finish(const journal::Manifest& manifest);
    Result moveAside(const journal::NameMap::Plan& plan);
    Result moveToPlace(const journal::NameMap::Plan& plan);
    Result append(const journal::Manifest& manifest, const journal::NameRecord& record);
    [[nodiscard]] bool isReserved(const QString& name) const;
    Result clean();

    QString m_folder;  // of the journal, canonical
    QString m_journal; // its name there
    bool m_trustForeign;
    bool m_durable;
};

} // namespace veltor::utils
