#pragma once

#include "platform/NativeString.h"

#include <QtCore/QString>

#include <system_error>

namespace veltor::utils {

/// A path as the system's calls take it; absolute and without a limit of length on Windows.
[[nodiscard]] platform::NativeString toNative(const QString& path);

/// A single name, without a folder, in the system's own form.
[[nodiscard]] platform::NativeString nativeName(const QString& name);

/// A name or path to show; bytes that are no text stand in it as \xNN. It opens the file only if
/// isExactName() says so.
[[nodiscard]] QString fromNative(const platform::NativeString& name);
/// Whether toNative() of the text gives the name back.
[[nodiscard]] bool isExactName(const platform::NativeString& name);

/// The system's reason, in its own words.
[[nodiscard]] QString reasonText(const std::error_code& error);

} // namespace veltor::utils
