#pragma once

#include <QtCore/QString>

namespace veltor::utils {

/// Appends text as HTML and XML both understand it; what neither may hold becomes U+FFFD.
void appendEscaped(QString& html, const QString& text);

/// The style sheet of a table, without the classes of a model's looks.
[[nodiscard]] QString htmlStyleSheet();

/// Levels of a tree that are indented.
constexpr int mostIndents = 12;

} // namespace veltor::utils
