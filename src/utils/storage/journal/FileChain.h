#pragma once

#include <QtCore/qglobal.h>

#include <vector>

namespace veltor::utils::journal {

/// A protected file as the journal has it: its entry and the chain of its change blocks.
struct FileChain
{
    /// A block whose bound is below those of all blocks before it: from there on the file was cut.
    struct Floor
    {
        quint64 block;
        quint64 bound;
    };

    quint64 entry = 0; ///< offset of the entry
    quint64 nextFile = 0;
    quint64 firstChange = 0;
    quint64 lastChange = 0;
    quint64 fileSize = 0;
    quint64 blockCount = 0;
    quint64 savedBytes = 0;
    bool whole = true;         ///< false when it breaks off behind lastChange
    std::vector<Floor> floors; ///< bounds descending, all below fileSize

    /// Counts one more block.
    void take(quint64 block, quint64 bound, quint64 length)
    {
        ++blockCount;
        savedBytes += length;
        if (bound < (floors.empty() ? fileSize : floors.back().bound)) {
            floors.push_back({block, bound});
        }
    }
};

} // namespace veltor::utils::journal
