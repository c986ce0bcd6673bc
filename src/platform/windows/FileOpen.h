#pragma once

#include <string>

namespace veltor::platform {

struct FileOpening
{
    bool write = false;     ///< for reading and writing, not for reading alone
    bool createNew = false; ///< the file must not exist yet; otherwise it must
};

/// Opens a file by its Windows path, in binary mode. Others may read and write it meanwhile, not delete it.
/// Not handed on to child processes. Thread-safe.
/// @return a descriptor of the C runtime, to be closed by it; -1 on failure
int openFile(const std::wstring& path, FileOpening opening) noexcept;

} // namespace veltor::platform
