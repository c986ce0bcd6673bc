// A transaction from its first file to its end. The names are changed at the end alone: until then they are
// records in the manifest; TransactionNames.cpp has the order of everything.

#include <veltor/utils/Transaction.h>

#include "utils/storage/TransactionMessages.h"
#include "utils/storage/TransactionPrivate.h"

#include <algorithm>

namespace veltor::utils {
namespace {

namespace message = transaction::message;
using Meaning = journal::NameMap::Meaning;
using Kind = platform::NameStatus::Kind;
using Record = journal::NameRecord;

} // namespace

Transaction::Transaction(std::unique_ptr<Private> p) noexcept
    : m_p(std::move(p))
{}

Transaction::Transaction(Transaction&& other) noexcept = default;

Transaction& Transaction::operator=(Transaction&& other) noexcept
{
    const Transaction ended(std::move(*this));
    m_p = std::move(other.m_p);
    return *this;
}

Transaction::~Transaction()
{
    try {
        if (isActive()) {
            rollback();
        }
    } catch (...) {
        // Out of the progress: the journal is left to the next owner.
    }
}

bool Transaction::isActive() const noexcept
{
    return m_p && m_p->state != Private::State::Ended && m_p->state != Private::State::GivenUp;
}

const Transaction::Result& Transaction::beginning() const noexcept
{
    static const Result moved{Status::Failed, {}, 0};
    return m_p ? m_p->beginning : moved;
}

const Transaction::Recovery& Transaction::recovery() const noexcept
{
    static const Recovery moved;
    return m_p ? m_p->recovery : moved;
}

QString Transaction::errorString() const
{
    return m_p ? m_p->journal.errorString() : message::notActive();
}

std::unique_ptr<SecuredFile> Transaction::open(const QString& name)
{
    if (!m_p || m_p->state != Private::State::Active) {
        if (m_p) {
            m_p->journal.fail(message::notActive());
        }
        return nullptr;
    }
    Result elsewhere; // the journal's rule decides of what lies beyond its folder
    const std::optional<QString> own = m_p->journal.names().nameOf(name, elsewhere);
    const journal::NameMap::Found found = own ? m_p->names.find(*own) : journal::NameMap::Found();
    if (found.meaning == Meaning::Nothing) {
        m_p->journal.fail(message::noFile(name));
        return nullptr;
    }
    const TransactionNames& names = m_p->journal.names();
    const QString path = found.meaning == Meaning::Untouched ? name
                         : found.place.hidden != 0           ? names.hiddenPath(found.place.hidden)
                                                             : names.pathOf(found.place.name);
    auto file = std::make_unique<SecuredFile>();
    if (!file->open(path, m_p->journal)) {
        return nullptr;
    }
    auto& files = m_p->files;
    const auto isClosed = [](const auto& opened) { return !opened.file || !opened.file->isOpen(); };
    files.erase(std::remove_if(files.begin(), files.end(), isClosed), files.end());
    const auto isSame = [&](const auto& opened) { return opened.file->fileName() == file->fileName(); };
    if (std::none_of(files.begin(), files.end(), isSame) && !file->seek(0)) {
        return nullptr;
    }
    files.push_back({file.get(), found.place.hidden});
    return file;
}

bool Transaction::exists(const QString& name) const
{
    if (!isActive()) {
        return false;
    }
    Result failure;
    const std::optional<QString> own = m_p->journal.names().nameOf(name, failure);
    if (!own) {
        return QFileInfo(name).isFile();
    }
    const Meaning meaning = m_p->names.find(*own).meaning;
    return meaning == Meaning::File ||
           (meaning == Meaning::Untouched && m_p->journal.names().look(*own).kind == Kind::File);
}

std::optional<QString> Transaction::Private::nameToChange(const QString& path, Result& failure) const
{
    if (state != State::Active) {
        failure = {Status::Failed, message::notActive(), 0};
        return std::nullopt;
    }
    return journal.names().nameOf(path, failure);
}

Transaction::Result Transaction::Private::checkFree(const QString& name) const
{
    const TransactionNames& own = journal.names();
    const Meaning meaning = names.find(name).meaning;
    const platform::NameStatus there = own.look(name);
    if (meaning == Meaning::File ||
        (meaning == Meaning::Untouched && there.kind != Kind::Missing && there.kind != Kind::Unknown)) {
        return {Status::Failed, message::nameTaken(own.pathOf(name)), 0};
    }
    if (there.kind == Kind::Unknown) {
        return {Status::Failed, message::cannotLook(own.pathOf(name), qt_error_string(there.error)), 0};
    }
    if (!there.changeable) {
        return {Status::Failed, message::notChangeable(own.pathOf(name)), 0};
    }
    return {};
}

Transaction::Result Transaction::Private::checkFile(const QString& name, bool& first) const
{
    const TransactionNames& own = journal.names();
    const Meaning meaning = names.find(name).meaning;
    first = meaning == Meaning::Untouched;
    if (!first) {
        return meaning == Meaning::File ? Result()
                                        : Result{Status::Failed, message::noFile(own.pathOf(name)), 0};
    }
    const platform::NameStatus there = own.look(name);
    switch (there.kind) {
    case Kind::File:
        return there.changeable ? Result()
                                : Result{Status::Failed, message::notChangeable(own.pathOf(name)), 0};
    case Kind::Missing:
        return {Status::Failed, message::noFile(own.pathOf(name)), 0};
    case Kind::Unknown:
        return {Status::Failed, message::cannotLook(own.pathOf(name), qt_error_string(there.error)), 0};
    default:
        return {Status::Failed, message::notRegular(own.pathOf(name)), 0};
    }
}

Transaction::Result Transaction::Private::appendToManifest(const QByteArray& bytes)
{
    if (manifestSize + bytes.size() > journal::Manifest::MaxSize) {
        return {Status::Failed, message::tooManyNames(), 0};
    }
    if (journal.fileSeek(manifest, manifestSize) && journal.writeBlock(manifest, bytes)) {
        manifestSize += bytes.size();
        return {};
    }
    Result failure{Status::Failed, journal.errorString(), 0};
    if (!journal.fileResize(manifest, manifestSize)) {
        state = State::Broken; // half a record stands there: nothing may follow it
    }
    return failure;
}

/// Makes sure that there is a manifest, protected before its first byte.
Transaction::Result Transaction::Private::openManifest()
{
    if (manifest != 0) {
        return {};
    }
    Result prepared = journal.names().prepare();
    if (!prepared) {
        return prepared;
    }
    manifest = journal.addFile(QFileInfo(journal.names().manifestPath()));
    return manifest != 0 ? Result() : Result{Status::Failed, journal.errorString(), 0};
}

Transaction::Result Transaction::Private::note(const Record& record)
{
    Result opened = openManifest();
    if (!opened) {
        return opened;
    }
    const QByteArray head = manifestSize == 0 ? journal::manifestHead() : QByteArray();
    Result written = appendToManifest(head + encodeRecord(record));
    if (written) {
        static_cast<void>(names.apply(record));
        ++recordCount;
    }
    return written;
}

Transaction::Result Transaction::create(const QString& name)
{
    if (!m_p) {
        return {Status::Failed, message::notActive(), 0};
    }
    Result result;
    const std::optional<QString> own = m_p->nameToChange(name, result);
    if (!own) {
        return m_p->fail(result);
    }
    result = m_p->checkFree(*own);
    TransactionNames& names = m_p->journal.names();
    if (result) {
        result = m_p->openManifest();
    }
    const quint32 number = ++m_p->lastNumber;
    if (result) {
        result = names.createHidden(number);
    }
    if (!result) {
        return m_p->fail(result);
    }
    result = m_p->note({Record::Kind::Create, number, 0, *own, {}});
    if (!result) {
        names.removeHidden(number);
        return m_p->fail(result);
    }
    return result;
}

Transaction::Result Transaction::remove(const QString& name)
{
    if (!m_p) {
        return {Status::Failed, message::notActive(), 0};
    }
    Result result;
    const std::optional<QString> own = m_p->nameToChange(name, result);
    bool first = false;
    if (own) {
        result = m_p->checkFile(*own, first);
    }
    if (result) {
        result = m_p->note({Record::Kind::Remove, first ? ++m_p->lastNumber : 0, 0, *own, {}});
    }
    return result ? result : m_p->fail(result);
}

Transaction::Result Transaction::rename(const QString& from, const QString& to)
{
    if (!m_p) {
        return {Status::Failed, message::notActive(), 0};
    }
    Result result;
    const std::optional<QString> name = m_p->nameToChange(from, result);
    const std::optional<QString> target = name ? m_p->nameToChange(to, result) : std::nullopt;
    if (!target) {
        return m_p->fail(result);
    }
    bool first = false;
    bool replaces = false;
    result = m_p->checkFile(*name, first);
    if (result && *name == *target) {
        return result;
    }
    if (result && !m_p->checkFree(*target)) {
        result = m_p->checkFile(*target, replaces);
    }
    const TransactionNames& names = m_p->journal.names();
    if (result && first && replaces && names.look(*name).identity == names.look(*target).identity) {
        result = {Status::Failed, message::sameFile(from, to), 0};
    }
    if (result) {
        const quint32 number = first ? ++m_p->lastNumber : 0;
        const quint32 replaced = replaces ? ++m_p->lastNumber : 0;
        result = m_p->note({Record::Kind::Rename, number, replaced, *name, *target});
    }
    return result ? result : m_p->fail(result);
}

Transaction::Savepoint Transaction::savepoint()
{
    Savepoint point;
    if (m_p && m_p->state == Private::State::Active) {
        point.m_files = m_p->journal.savepoint();
        point.m_number = ++m_p->lastSavepoint;
        m_p->savepoints.push_back(point.m_number);
    }
    return point;
}

Transaction::Result Transaction::rollbackTo(const Savepoint& savepoint)
{
    if (!m_p || m_p->state != Private::State::Active) {
        return {Status::Failed, message::notActive(), 0};
    }
    auto& points = m_p->savepoints;
    const auto found = std::find(points.begin(), points.end(), savepoint.m_number);
    if (found == points.end()) {
        return m_p->journal.fail(message::savepointUnknown());
    }
    points.erase(found + 1, points.end()); // what they would undo is undone
    if (!m_p->journal.rollbackTo(savepoint.m_files)) {
        m_p->state = Private::State::Broken;
        return {Status::Failed, m_p->journal.errorString(), 0};
    }
    Result result = m_p->reloadNames();
    if (!result) {
        m_p->state = Private::State::Broken;
        return m_p->fail(result);
    }
    m_p->closeFiles(false);
    return result;
}

Transaction::Result Transaction::Private::reloadNames()
{
    if (manifest == 0) {
        return {};
    }
    Result result;
    const std::optional<journal::Manifest> read = journal.names().read(result);
    if (read) {
        names = read->names;
        recordCount = static_cast<quint32>(read->records.size());
        manifestSize = read->size;
    }
    return result;
}

/// Closes the files that were opened here: all, or those whose making was undone.
void Transaction::Private::closeFiles(bool all)
{
    for (const Opened& opened : files) {
        if (opened.file && (all || (opened.hidden != 0 && !names.knows(opened.hidden)))) {
            opened.file->close();
        }
    }
}

void Transaction::Private::end()
{
    closeFiles(true);
    files.clear();
    savepoints.clear();
    journal.close();
    state = State::Ended;
}

/// Completes the manifest, when nothing stands in the way of the new names that can be known before.
Transaction::Result Transaction::Private::seal()
{
    if (recordCount == 0 || state != State::Active) {
        return {};
    }
    const journal::NameMap::Plan plan = names.plan();
    for (const journal::NameMap::Move& move : plan.moves) {
        const auto isTarget = [&](const auto& aside) { return aside.first == move.to; };
        const bool vacated = std::any_of(plan.aside.begin(), plan.aside.end(), isTarget);
        const Kind there = journal.names().look(move.to).kind;
        if (!vacated && !move.replaces && there != Kind::Missing) {
            return {Status::Failed, message::nameTaken(journal.names().pathOf(move.to)), 0};
        }
    }
    Record record;
    record.kind = Record::Kind::Sealed;
    record.number = recordCount;
    return appendToManifest(encodeRecord(record));
}

Transaction::Result Transaction::commit()
{
    if (!isActive() || m_p->state == Private::State::Broken) {
        return {Status::Failed, message::notActive(), 0};
    }
    const Result sealed = m_p->seal();
    if (!sealed) {
        return m_p->fail(sealed);
    }
    m_p->closeFiles(true);
    const JournalRemoval removal = m_p->journal.commit();
    if (removal.effective) {
        m_p->state = m_p->journal.isOpen() ? Private::State::Sealed : Private::State::Ended;
        return {Status::Failed, removal.reason, 0};
    }
    Result settled = m_p->journal.settled();
    if (settled && !removal.synced) {
        settled = {Status::Unsynced, removal.reason, 0};
    }
    m_p->end();
    return settled;
}

Transaction::Result Transaction::rollback()
{
    if (!isActive()) {
        return {Status::Failed, message::notActive(), 0};
    }
    m_p->closeFiles(true);
    m_p->state = Private::State::Broken; // also when the progress throws
    m_p->recovery = Recovery();
    Result result = m_p->journal.restore(m_p->recovery);
    m_p->recovery.result = result;
    if (result || result.status == Status::NamesPending || result.status == Status::Unsynced) {
        m_p->end();
    } else if (result.status == Status::Canceled) {
        m_p->end();
        m_p->state = Private::State::GivenUp;
    } else if (!m_p->journal.isOpen()) {
        m_p->state = Private::State::Ended;
    }
    return result;
}

} // namespace veltor::utils
