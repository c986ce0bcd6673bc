#pragma once

#include <veltor/Export.h>

#include <QtCore/QIODevice>

#include <memory>

namespace veltor {

/// Owning pointer to an open device. Whoever makes the device chooses the deleter, so that a device may
/// be owned (makeIOPtr), or merely lent with a deleter that does nothing. Movable, not copyable; an
/// empty pointer carries a deleter that may be called with a null device.
using IOPtr = std::unique_ptr<QIODevice, void (*)(QIODevice*)>;

/// An owning pointer from a device made with `new`; the device is deleted when the pointer goes.
/// A null @p device gives an empty pointer. Reentrant.
VELTOR_UTILS_EXPORT IOPtr makeIOPtr(QIODevice* device) noexcept;

/// An empty pointer with the default deleter. Reentrant.
VELTOR_UTILS_EXPORT IOPtr nullIOPtr() noexcept;

} // namespace veltor
