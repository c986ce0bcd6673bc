#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace veltor::utils {

/// @defgroup filenames File names
/// Suffixes, and names that every system takes. Paths may have folders before the name, separated by '/', on
/// Windows by '\\' too; these stay as they are. Nothing here looks at files, except where it says so. All
/// functions are thread-safe.
/// @{

/// The suffix of a file's name without its dot: what stands behind the last dot, or two parts where these
/// belong together: a compressed file's (`tar.gz`, `geojson.zst`), and `aux.xml`, `shp.xml` and their like. A
/// dot at the start of a name begins no suffix, nor does one at its end.
[[nodiscard]] VELTOR_UTILS_EXPORT QString fileSuffix(const QString& path);
/// The same with its dot; empty when there is none.
[[nodiscard]] VELTOR_UTILS_EXPORT QString dottedFileSuffix(const QString& path);
/// The path without the suffix and its dot.
[[nodiscard]] VELTOR_UTILS_EXPORT QString withoutFileSuffix(const QString& path);
/// The path with another suffix in the place of its own, or behind the name when it has none.
/// @param path    with or without folders before the name
/// @param suffix  with or without a dot; an empty one removes
[[nodiscard]] VELTOR_UTILS_EXPORT QString withFileSuffix(const QString& path, const QString& suffix);
/// The path with the suffix behind it, unless it ends with it already.
/// @param path    with or without folders before the name
/// @param suffix  with or without a dot
/// @param cases   how names are compared, see fileNameCase()
[[nodiscard]] VELTOR_UTILS_EXPORT QString addedFileSuffix(const QString& path, const QString& suffix,
                                                          Qt::CaseSensitivity cases = Qt::CaseInsensitive);
/// Whether the name ends with a dot and the suffix, and has something before it.
/// @param path    with or without folders before the name
/// @param suffix  with or without a dot; of any number of parts
/// @param cases   how names are compared, see fileNameCase()
[[nodiscard]] VELTOR_UTILS_EXPORT bool hasFileSuffix(const QString& path, const QString& suffix,
                                                     Qt::CaseSensitivity cases = Qt::CaseInsensitive);

/// How names are compared in a folder, which is asked for: by the rules of its file system, and its own where
/// that has such. Nothing is written.
/// @param folder  or a file in it; of what does not exist, the next folder above it counts
/// @return the system's usual rule where it cannot be learnt
[[nodiscard]] VELTOR_UTILS_EXPORT Qt::CaseSensitivity fileNameCase(const QString& folder);

/// What safeFileName() is to make. A plain value.
struct SafeNameRules
{
    /// The longest name in bytes of UTF-8; at least 20. 255 is what common file systems take.
    int longestBytes = 255;
    /// Takes the place of what a name may not hold; `_` where it is such itself, a blank or a dot.
    QChar replacement = QLatin1Char('_');
    /// When the name is cut, its suffix stays whole if it takes no more than half of the length.
    bool keepSuffix = true;
    /// What an empty name becomes; itself a safe one.
    QString fallback = QStringLiteral("file");
};

/// A name that every system takes for a file, made of any text: one that is safe already stays as it is.
///
/// Of line breaks and other control characters, marks that turn the direction of writing, halves of pairs,
/// and
/// `< > : " / \ | ? *`, each becomes the replacement. Blanks around the name and dots at its end go. Names
/// that Windows keeps for devices (`CON`, `nul.txt`, `COM1`, `LPT²` and so on) get a replacement behind the
/// word. Letters with separate accents become single characters. What is too long is cut between characters.
/// @return never empty, `.` or `..`; made safe again it is the same
[[nodiscard]] VELTOR_UTILS_EXPORT QString safeFileName(const QString& text, const SafeNameRules& rules = {});

/// Whether Windows keeps the name, with whatever suffix, for a device.
[[nodiscard]] VELTOR_UTILS_EXPORT bool isReservedFileName(const QString& name);

/// @}

} // namespace veltor::utils
