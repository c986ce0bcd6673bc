#pragma once

#include <QtCore/QFile>

namespace veltor::tool {

/// A file that an option names for a part of the output.
class OutputFile
{
public:
    /// Creates the file at once: one that cannot be written is told before the work begins.
    /// @param path   empty: there is none
    /// @param input  the file that is read, which this must not be
    /// @throws std::runtime_error, UsageError
    OutputFile(const QString& path, const QString& input);

    [[nodiscard]] bool isOpen() const { return m_file.isOpen(); }
    [[nodiscard]] QIODevice& device() { return m_file; }
    /// Closes the file. @throws std::runtime_error when not all was written
    void finish(bool isWritten);

private:
    QFile m_file;
};

} // namespace veltor::tool
