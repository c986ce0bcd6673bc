#pragma once

#include <QtCore/QString>

/// What a transaction says when something is wrong: each text once, translated in the context of
/// veltor::utils::Transaction. The reasons are the system's words.
namespace veltor::utils::transaction::message {

QString notActive();
QString canceled(const QString& journal);
QString journalDamaged(const QString& journal, const QString& fault);
QString notRestored(int count, const QString& journal, const QString& reason);
QString restoredInPart();
QString notRestorable();
QString savepointUnknown();

QString badName(const QString& name);
QString nameReserved(const QString& name);
QString nameTaken(const QString& name);
QString noFile(const QString& name);
QString notRegular(const QString& name);
QString sameFile(const QString& name, const QString& other);
QString cannotLook(const QString& name, const QString& reason);
QString cannotCreate(const QString& name, const QString& reason);
QString cannotMove(const QString& from, const QString& to, const QString& reason);
QString cannotRemove(const QString& name, const QString& reason);
QString cannotSync(const QString& name, const QString& reason);
QString notChangeable(const QString& name);
QString tooManyNames();

QString manifestDamaged(const QString& manifest);
QString manifestUnreadable(const QString& manifest, const QString& reason);
QString folderForeign(const QString& folder);
QString folderTaken(const QString& folder);

} // namespace veltor::utils::transaction::message
