#pragma once

#include <QtCore/QIODevice>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace veltor::tool {

/// The bytes of a JSON file of any size, in the form in which RapidJSON's reader takes them, with what its
/// errors and its numbers need besides. The zero byte that ends the input is told from one in the input by
/// atEnd().
class JsonInput
{
public:
    using Ch = char;

    /// Skips a byte-order mark.
    /// @param device  open for reading; outlives this object
    /// @throws std::runtime_error with the reason, as all that reads on
    explicit JsonInput(QIODevice& device);

    [[nodiscard]] char Peek() const
    {
        return *m_at;
    }           // NOLINT(readability-identifier-naming): RapidJSON's names
    char Take() // NOLINT(readability-identifier-naming)
    {
        if (m_at == m_end) {
            return 0;
        }
        const char byte = *m_at++;
        if (m_at == m_end) {
            readOn();
        }
        return byte;
    }
    [[nodiscard]] std::size_t Tell() const // NOLINT(readability-identifier-naming)
    {
        return static_cast<std::size_t>(offset());
    }
    // Of a writable stream; never called.
    char* PutBegin() { return nullptr; }    // NOLINT(readability-identifier-naming)
    void Put(char) {}                       // NOLINT(readability-identifier-naming)
    void Flush() {}                         // NOLINT(readability-identifier-naming)
    std::size_t PutEnd(char*) { return 0; } // NOLINT(readability-identifier-naming)

    [[nodiscard]] bool atEnd() const { return m_at == m_end; }
    /// Bytes before the next one.
    [[nodiscard]] qint64 offset() const { return m_base + (m_at - m_buffer.data()); }
    /// The line of an offset that is not far behind: the next byte's, or a line or so before.
    [[nodiscard]] qint64 lineOf(qint64 offset) const;

    /// The number that ends just before the next byte, as it is written.
    [[nodiscard]] std::string_view numberBefore() const;

    /// From now on what is taken is kept, until takeKept().
    void keep();
    [[nodiscard]] std::string takeKept();

private:
    void readOn();
    bool append();

    QIODevice& m_device;
    std::vector<char> m_buffer;
    char* m_at;
    char* m_end;
    qint64 m_base = 0;  // offset of the buffer's first byte
    qint64 m_lines = 0; // line ends before the buffer
    bool m_isKeeping = false;
    char* m_keepFrom = nullptr;
    std::string m_kept;
};

} // namespace veltor::tool
