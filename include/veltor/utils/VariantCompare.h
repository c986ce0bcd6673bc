#pragma once

#include <veltor/Export.h>

#include <QtCore/QVariant>

namespace veltor::utils {

/// Compares two values as Qt 5 itself orders variants.
///
/// Numbers compare by value after the promotions of C++, so -1 is above 1u. Otherwise the second value is
/// first brought to the first one's type where Qt can, so 9 is below the text "10" while the text "10" is
/// below 9; then dates and times compare in time, values equal by their type's operator are equal, and all
/// else compares by its text regardless of case. Different values with one text (points, lists, texts that
/// differ in case only) compare as 1 either way round, NaN as 1 with everything.
///
/// So this is an order within one type of numbers, dates or times, and over texts that differ in more than
/// case; elsewhere only "equal or not" means something, and sorting by it is not safe.
///
/// @return negative, 0 or positive; how much means nothing. Thread-safe.
[[nodiscard]] VELTOR_UTILS_EXPORT int compare(const QVariant& a, const QVariant& b);

} // namespace veltor::utils
