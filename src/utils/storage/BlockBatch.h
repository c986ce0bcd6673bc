#pragma once

#include "utils/storage/RollbackDevicePrivate.h"

#include <map>
#include <vector>

namespace veltor::utils {

/// Writes to many places of many files at once: first everything that they overwrite is saved, then they are
/// done.
class BlockBatch
{
public:
    explicit BlockBatch(RollbackDevice::Private& device)
        : m_device(device)
    {}

    /// Notes a write. False when it cannot be done: nothing was changed yet.
    bool add(const RollbackDevice::BlockWrite& write);
    /// Saves and writes what was noted.
    bool run();

private:
    struct Target
    {
        explicit Target(StoredFile& stored)
            : file(stored)
            , io(*stored.device())
            , position(io.pos())
        {}

        StoredFile& file;
        io::DeviceIo io;
        qint64 position; ///< the device's own
        quint64 size = 0;
        std::vector<journal::JournalWriter::Range> saves;
    };
    struct Write
    {
        Target* target;
        quint64 position;
        QByteArray data;
    };

    Target* targetOf(RollbackDevice::Key key);
    bool save();
    bool append(std::vector<journal::JournalWriter::Save>& saves);
    bool write();

    RollbackDevice::Private& m_device;
    std::map<RollbackDevice::Key, Target> m_targets;
    std::vector<Write> m_writes;
};

} // namespace veltor::utils
