#pragma once

namespace veltor::platform {

/// A moment of the Gregorian calendar, by arithmetic alone: the C library's way takes a lock.
struct UtcTime
{
    long long year;
    int month, day, hour, minute, second;
};

/// @param seconds  since 1970, not negative
constexpr UtcTime utcTime(long long seconds) noexcept
{
    // Years begin in March here, so that the leap day is the last; an era is 400 years.
    const long long days = seconds / 86400 + 719468;
    const long long era = days / 146097;
    const long long dayOfEra = days % 146097;
    const long long yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const long long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const long long march = (5 * dayOfYear + 2) / 153;
    const int month = static_cast<int>(march < 10 ? march + 3 : march - 9);
    const int rest = static_cast<int>(seconds % 86400);
    return {era * 400 + yearOfEra + (month <= 2 ? 1 : 0),
            month,
            static_cast<int>(dayOfYear - (153 * march + 2) / 5 + 1),
            rest / 3600,
            rest / 60 % 60,
            rest % 60};
}

} // namespace veltor::platform
