#pragma once

#include <veltor/utils/Transliteration.h>

#include <string_view>

namespace veltor::utils {

/// A small Cyrillic letter in the standards.
struct LatinRow // NOLINT(clang-analyzer-optin.performance.Padding): in the order in which people read it
{
    char16_t letter;
    std::u16string_view latin[3]; ///< by LatinStandard; of ISO 9 decomposed; empty in one: written as nothing
    bool isIso9Only = false;      ///< the others have no row for it
};

/// All letters. ISO 9:1995, table 1, without the letters of languages that are not Slavic; GOST 7.79-2000,
/// table 3, column Russian; ICAO Doc 9303-3, section 6.
inline constexpr LatinRow latinRows[] = {
    {u'а', {u"a", u"a", u"a"}},
    {u'б', {u"b", u"b", u"b"}},
    {u'в', {u"v", u"v", u"v"}},
    {u'г', {u"g", u"g", u"g"}},
    {u'д', {u"d", u"d", u"d"}},
    {u'е', {u"e", u"e", u"e"}},
    {u'ё', {u"e\u0308", u"yo", u"e"}},
    {u'ж', {u"z\u030C", u"zh", u"zh"}},
    {u'з', {u"z", u"z", u"z"}},
    {u'и', {u"i", u"i", u"i"}},
    {u'й', {u"j", u"j", u"i"}},
    {u'к', {u"k", u"k", u"k"}},
    {u'л', {u"l", u"l", u"l"}},
    {u'м', {u"m", u"m", u"m"}},
    {u'н', {u"n", u"n", u"n"}},
    {u'о', {u"o", u"o", u"o"}},
    {u'п', {u"p", u"p", u"p"}},
    {u'р', {u"r", u"r", u"r"}},
    {u'с', {u"s", u"s", u"s"}},
    {u'т', {u"t", u"t", u"t"}},
    {u'у', {u"u", u"u", u"u"}},
    {u'ф', {u"f", u"f", u"f"}},
    {u'х', {u"h", u"x", u"kh"}},
    {u'ц', {u"c", u"cz", u"ts"}},
    {u'ч', {u"c\u030C", u"ch", u"ch"}},
    {u'ш', {u"s\u030C", u"sh", u"sh"}},
    {u'щ', {u"s\u0302", u"shh", u"shch"}},
    {u'ъ', {u"\u02BA", u"``", u"ie"}},
    {u'ы', {u"y", u"y`", u"y"}},
    {u'ь', {u"\u02B9", u"`", u""}},
    {u'э', {u"e\u0300", u"e`", u"e"}},
    {u'ю', {u"u\u0302", u"yu", u"iu"}},
    {u'я', {u"a\u0302", u"ya", u"ia"}},
    {u'ґ', {u"g\u0300"}, true},
    {u'ђ', {u"\u0111"}, true},
    {u'ѓ', {u"g\u0301"}, true},
    {u'є', {u"e\u0302"}, true},
    {u'ѕ', {u"z\u0302"}, true},
    {u'і', {u"i\u0300"}, true},
    {u'ї', {u"i\u0308"}, true},
    {u'ј', {u"j\u030C"}, true},
    {u'љ', {u"l\u0302"}, true},
    {u'њ', {u"n\u0302"}, true},
    {u'ћ', {u"c\u0301"}, true},
    {u'ќ', {u"k\u0301"}, true},
    {u'ў', {u"u\u0306"}, true},
    {u'џ', {u"d\u0302"}, true},
    {u'ѣ', {u"e\u030C"}, true},
    {u'ѫ', {u"a\u030C"}, true},
    {u'ѳ', {u"f\u0300"}, true},
    {u'ѵ', {u"y\u0300"}, true},
};

} // namespace veltor::utils
