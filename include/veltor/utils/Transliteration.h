#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>

#include <optional>

namespace veltor::utils {

/// @defgroup transliteration Transliteration
/// Cyrillic in Latin letters and back, letter by letter, by a standard. Texts come out in normalization form
/// C. What a standard has no row for stays as it is: Latin letters in a Cyrillic text, digits, signs,
/// letters of other languages. All functions are thread-safe.
///
/// A capital letter that becomes several is written in capitals among capitals, else with one: Щука and ЩУКА
/// become Shhuka and SHHUKA. At a word's end the letter before decides; a letter alone gets one capital.
/// @{

/// A table of letters.
enum class LatinStandard
{
    /// ISO 9:1995, which is GOST 7.79-2000, system A: one letter for one, with marks, for the letters of the
    /// Slavic languages: Щукарь is Ŝukarʹ. Reversible.
    Iso9 = 0,
    /// GOST 7.79-2000, system B, for Russian: the letters of ASCII and the grave accent: Щукарь is Shhukar`.
    /// Reversible, but for ъ and ь where Russian has none: behind е and ь.
    Gost779B = 1,
    /// ICAO Doc 9303, as in Russian passports since 2014: Щукарь is Shchukar. Not reversible.
    Passport = 2,
};

/// Cyrillic to Latin letters.
[[nodiscard]] VELTOR_UTILS_EXPORT QString toLatin(const QString& text, LatinStandard standard);

/// Latin letters back to Cyrillic: of several letters that may be one, the longest run is. What toLatin()
/// made becomes what it was; only a sign behind a single capital letter at a word's end comes out small. By
/// LatinStandard::Gost779B, a `c` that stands alone is ц wherever it stands; by LatinStandard::Iso9 the
/// primes ′ and ″ are taken for the signs ʹ and ʺ.
/// @return nothing for LatinStandard::Passport, which several Cyrillic texts have in common
[[nodiscard]] VELTOR_UTILS_EXPORT std::optional<QString> toCyrillic(const QString& text,
                                                                    LatinStandard standard);

/// @}

} // namespace veltor::utils
