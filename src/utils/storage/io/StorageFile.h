#pragma once

#include "platform/FileLock.h"
#include "platform/FileOpen.h"

#include <QtCore/QFile>

#include <memory>

namespace veltor::utils::io {

/// A regular file with one descriptor from its opening to its end, unbuffered, which knows what file it is.
/// One that could not be opened is closed, and its errorString() says why.
class StorageFile : public QFile
{
public:
    /// Takes over what the platform opened. @p path is what fileName() gives.
    StorageFile(const QString& path, const platform::OpenedFile& opened, bool writable);

    ~StorageFile() override;

    /// Opens by path, links followed.
    [[nodiscard]] static std::unique_ptr<StorageFile> open(const QString& path,
                                                           platform::FileOpening opening);

    /// Without a question to the system: nothing else is opened.
    [[nodiscard]] bool isSequential() const override { return false; }
    /// QFile forgets the name of what is opened by descriptor.
    [[nodiscard]] QString fileName() const override { return m_path; }

    /// What it was when it was opened: its size may have changed since.
    [[nodiscard]] const platform::FileStatus& status() const noexcept { return m_status; }
    /// Its descriptor; on Windows QFile::handle() would take a new one at each call.
    [[nodiscard]] int descriptor() const noexcept { return m_descriptor; }

    /// Takes the file's lock without waiting, until the file is closed.
    platform::LockAnswer lock();
    /// Gives the lock back as well.
    void close() override;
    /// Closes it after all; @p reason becomes its errorString().
    void refuse(const QString& reason);
    /// Sets who may do what with it, as platform::FileStatus::access. False when that is not allowed.
    bool restrictAccess(unsigned access);

    /// True while somebody keeps it whose device it is not: then the device's owner does not delete it.
    [[nodiscard]] bool isKept() const noexcept { return m_kept; }
    void setKept(bool kept) noexcept { m_kept = kept; }
    /// True for a journal's file that was another journal before, which has the header of an empty one now:
    /// what that held may stay behind the end.
    [[nodiscard]] bool isReused() const noexcept { return m_reused; }
    void setReused() noexcept { m_reused = true; }

private:
    const QString m_path;
    platform::FileStatus m_status;
    int m_descriptor;
    bool m_isLocked = false;
    bool m_kept = false;
    bool m_reused = false;
};

/// A path for the platform's calls; on Windows in the form that has no limit of 260 characters.
[[nodiscard]] platform::NativePath nativePath(const QString& path);

/// Why the platform did not open a file, in words.
[[nodiscard]] QString reasonOf(const platform::OpenedFile& opened);

/// The descriptor of a device that may be reached behind Qt's back, else -1; it stays the device's own.
[[nodiscard]] int nativeDescriptor(QIODevice& device);

} // namespace veltor::utils::io
