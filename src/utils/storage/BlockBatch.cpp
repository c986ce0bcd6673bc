// Many writes as one: everything is saved before anything changes.

#include "utils/storage/BlockBatch.h"

#include "utils/storage/StorageMessages.h"

#include <limits>

namespace veltor::utils {

using journal::JournalWriter;

BlockBatch::Target* BlockBatch::targetOf(RollbackDevice::Key key)
{
    const auto known = m_targets.find(key);
    if (known != m_targets.end()) {
        return &known->second;
    }
    StoredFile* const file = m_device.openFile(key);
    if (!file) {
        return nullptr;
    }
    Target target(*file);
    const auto size = m_device.sizeOf(*file, target.io);
    if (!size) {
        return nullptr;
    }
    target.size = *size;
    return &m_targets.emplace(key, std::move(target)).first->second;
}

bool BlockBatch::add(const RollbackDevice::BlockWrite& write)
{
    Target* const target = targetOf(write.key);
    if (!target || write.data.isEmpty()) {
        return target != nullptr;
    }
    const auto length = static_cast<quint64>(write.data.size());
    constexpr auto most = static_cast<quint64>(std::numeric_limits<qint64>::max());
    if (write.position > most - length) {
        return m_device.fail({message::fileWriteFailed(target->file.name(), write.position), {}});
    }
    m_writes.push_back({target, write.position, write.data});
    return forEachPiece(target->size, write.position, length, [&](quint64 from, quint32 piece) {
        target->saves.push_back({target->size, from, piece});
        return true;
    });
}

bool BlockBatch::run()
{
    if (m_writes.empty()) {
        return true;
    }
    if (!m_device.canAppend()) {
        return false;
    }
    const bool done = save() && m_device.passBarrier() && write();
    for (auto& [key, target] : m_targets) {
        target.file.mirror();
        static_cast<void>(target.io.seek(target.position)); // which some devices lose by being written to
    }
    return done;
}

bool BlockBatch::save()
{
    std::vector<JournalWriter::Save> saves;
    quint64 bytes = 0;
    for (const auto& [key, target] : m_targets) {
        for (const JournalWriter::Range& range : target.saves) {
            if (bytes + range.length > JournalWriter::MaxAppend && !append(saves)) {
                return false;
            }
            bytes = saves.empty() ? 0 : bytes;
            saves.push_back({&target.file.chain, &target.io, range});
            bytes += JournalWriter::sizeOf(range);
        }
    }
    return append(saves);
}

/// Forgets the ranges that are saved.
bool BlockBatch::append(std::vector<JournalWriter::Save>& saves)
{
    if (saves.empty()) {
        return true;
    }
    JournalWriter& writer = *m_device.writer;
    if (!writer.appendBlocks(saves.data(), saves.data() + saves.size())) {
        QString name;
        for (const auto& [key, target] : m_targets) {
            name = &target.file.chain == writer.unreadable().chain ? target.file.name() : name;
        }
        return m_device.failSaving(name);
    }
    saves.clear();
    return true;
}

bool BlockBatch::write()
{
    for (const Write& write : m_writes) {
        const Target& target = *write.target;
        if (target.io.writeAt(write.position, write.data.constData(), write.data.size()) !=
            write.data.size()) {
            return m_device.fail(
                {message::fileWriteFailed(target.file.name(), write.position), target.io.reason()});
        }
    }
    return true;
}

} // namespace veltor::utils
