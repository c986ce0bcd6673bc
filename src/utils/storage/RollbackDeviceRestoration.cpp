// The steps behind a rollback device: putting files back.

#include "utils/storage/RollbackDevicePrivate.h"

#include "utils/storage/StorageMessages.h"
#include "utils/storage/journal/FileRestorer.h"

#include <algorithm>

namespace veltor::utils {

bool RollbackDevice::Private::rollBack()
{
    // Whatever happens now, the map no longer mirrors the journal.
    state = State::RollbackOnly;
    savepoints.clear();
    cancel = false;
    report = {};
    quint64 done = 0;
    quint64 total = 0;
    for (const auto& [key, file] : files.all()) {
        total += file.chain.blockCount;
    }
    const auto observer = [&] {
        ++done;
        if (progress) {
            progress(done, total);
        }
        return !cancel;
    };
    journal::JournalInput input(*journal);
    for (auto file = files.all().begin(); file != files.all().end() && !cancel;) {
        if (restore(file->second, input, observer)) {
            ++report.restored;
            file = files.forget(file);
        } else {
            ++file;
        }
    }
    report.canceled = cancel;
    return files.isEmpty();
}

bool RollbackDevice::Private::restore(StoredFile& file, journal::JournalInput& input,
                                      const std::function<bool()>& observer)
{
    const bool closed = !file.device();
    const auto refuse = [&](const Fault& fault) {
        report.failures.push_back({file.name(), fault.whole()});
        return fail(fault);
    };
    if (closed && !reopen(file)) {
        report.failures.push_back({file.name(), lastError});
        return false;
    }
    if (!file.device()->isOpen()) {
        return refuse({message::fileClosed(file.name()), {}});
    }
    if (barriers.areOn() && file.chain.blockCount == 0) {
        return true; // nothing of it was changed; and its entry alone proves nothing after a loss of power
    }
    journal::FileRestorer restorer(input, file.chain, *file.device(), file.name());
    restorer.setRewrites(barriers.hasFailed());
    const auto outcome = restorer.restore(observer);
    const bool restored = outcome == journal::FileRestorer::Outcome::Restored;
    const bool synced = !restored || barriers.afterChanges(*file.device(), file.name());
    if (closed) {
        file.device() = nullIOPtr();
    }
    if (outcome == journal::FileRestorer::Outcome::Failed || !synced) {
        return refuse(synced ? restorer.fault() : barriers.fault());
    }
    return outcome == journal::FileRestorer::Outcome::Restored;
}

bool RollbackDevice::Private::rollBackTo(const Savepoint& savepoint)
{
    journal::JournalInput input(*journal);
    bool all = true;
    for (auto& [key, file] : files.all()) {
        const auto& then = savepoint.m_lastChanges;
        const auto found = std::find_if(then.begin(), then.end(),
                                        [key = key](const auto& change) { return change.first == key; });
        const quint64 lastChange = found != then.end() ? found->second : 0;
        if (lastChange == file.chain.lastChange) {
            continue;
        }
        if (!openFile(key)) {
            all = fail({lastError, {}});
            continue;
        }
        journal::FileRestorer restorer(input, file.chain, *file.device(), file.name());
        if (restorer.restoreTo(lastChange) != journal::FileRestorer::Outcome::Restored) {
            all = fail(restorer.fault());
            continue;
        }
        // As after a cut: no position beyond the end.
        const io::DeviceIo io(*file.device());
        const auto size = io.size();
        if (size && static_cast<quint64>(io.pos()) > *size) {
            static_cast<void>(io.seek(static_cast<qint64>(*size)));
        }
    }
    return all;
}

} // namespace veltor::utils
