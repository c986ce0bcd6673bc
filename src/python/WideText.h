#pragma once

#include <QtCore/QString>

#include <string>

namespace veltor::python {

/// The text in the platform's wide characters: UTF-16 code units as they are where these have 16 bits;
/// where they have 32, surrogate pairs are joined and lone surrogates kept (QString::toStdWString()
/// replaces those).
[[nodiscard]] std::wstring toWideText(const QString& text);

} // namespace veltor::python
