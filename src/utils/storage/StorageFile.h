#pragma once

#include <QtCore/QFile>

#include <memory>

namespace veltor::utils {

/// Opens @p path unbuffered for the positioned access of DeviceIo; @p mode is what QFile takes, NewOnly and
/// ExistingOnly included, but nothing that truncates, appends or translates. The file is closed when it
/// cannot be opened.
[[nodiscard]] std::unique_ptr<QFile> openStorageFile(const QString& path, QIODevice::OpenMode mode);

/// The descriptor of a device that may be reached behind Qt's back, else -1; it stays the device's own.
///
/// On Windows only files of openStorageFile() have one: there QFile::handle() takes a new descriptor from
/// the C runtime's small table at each call, and nobody gives it back.
[[nodiscard]] int nativeDescriptor(QIODevice& device);

} // namespace veltor::utils
