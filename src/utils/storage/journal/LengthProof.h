#pragma once

#include <QtCore/qglobal.h>

#include <map>

namespace veltor::utils::journal {

/// A restoration rehearsed on lengths alone: tells whether the file's old length would end up filled with its
/// own bytes and saved ones, or have stretches that no block gave.
class LengthProof
{
public:
    /// @param oldSize  what the file is to be
    /// @param size  what it is
    LengthProof(quint64 oldSize, quint64 size);

    /// The file is cut to @p bound if it is longer.
    void cut(quint64 bound);
    /// Saved bytes are written to [@p begin, @p end). False when there are more separate gaps than any honest
    /// journal has.
    bool fill(quint64 begin, quint64 end);

    /// Whether all bytes of the old length are explained now.
    [[nodiscard]] bool holds() const { return m_gaps.empty() && m_size >= m_oldSize; }

private:
    quint64 m_oldSize;
    quint64 m_size;
    std::map<quint64, quint64> m_gaps; // begin to end; below the old size
};

} // namespace veltor::utils::journal
