// Cyrillic and Latin letters by the tables of standards.

#include <veltor/utils/Transliteration.h>

#include "base/QtDifferences.h"

#include "LatinTable.h"

#include <algorithm>
#include <array>
#include <vector>

namespace veltor::utils {
namespace {

using base::Length;

constexpr char16_t cyrillicBegin = 0x400;
constexpr std::size_t cyrillicSize = 0x100;

/// The place of each letter's row, one more than that; 0 for what has none.
constexpr std::array<unsigned char, cyrillicSize> makeRowIndex()
{
    std::array<unsigned char, cyrillicSize> index{};
    unsigned char place = 0;
    for (const LatinRow& row : latinRows) {
        index[static_cast<std::size_t>(row.letter - cyrillicBegin)] = ++place;
    }
    return index;
}
constexpr auto rowIndex = makeRowIndex();

std::size_t columnOf(LatinStandard standard)
{
    return std::min<std::size_t>(static_cast<std::size_t>(standard), 2);
}

QStringView viewOf(std::u16string_view text)
{
    return {text.data(), static_cast<Length>(text.size())};
}

/// The row of a letter, large or small; null when the standard has none.
const LatinRow* rowOf(QChar letter, LatinStandard standard)
{
    const auto offset = static_cast<std::size_t>(letter.toLower().unicode()) - cyrillicBegin;
    if (offset >= cyrillicSize || rowIndex[offset] == 0) {
        return nullptr;
    }
    const LatinRow& row = latinRows[rowIndex[offset] - 1];
    return row.isIso9Only && standard != LatinStandard::Iso9 ? nullptr : &row;
}

/// A character of a text; a blank outside of it.
QChar at(const QString& text, Length index)
{
    return index >= 0 && index < text.size() ? text.at(index) : QChar(QLatin1Char(' '));
}

/// Whether the capital letter stands among capitals, so that all letters for it are such.
bool isAmongCapitals(const QString& text, Length index)
{
    const QChar next = at(text, index + 1);
    return next.isLetter() ? next.isUpper() : at(text, index - 1).isUpper();
}

/// By system B, ц is one letter before those that cannot be taken for a part of another.
bool isShortTse(const QString& text, Length index, LatinStandard standard)
{
    if (standard != LatinStandard::Gost779B || text.at(index).toLower() != QChar(u'ц')) {
        return false;
    }
    const LatinRow* const next = rowOf(at(text, index + 1), standard);
    return next && std::u16string_view(u"ieyj").find(next->latin[1].front()) != std::u16string_view::npos;
}

/// A run of small Latin letters and marks, and the letter that it is.
struct CyrillicRow
{
    QStringView latin;
    char16_t letter;

    bool operator<(const CyrillicRow& other) const { return latin < other.latin; }
};

std::vector<CyrillicRow> makeCyrillicRows(LatinStandard standard)
{
    std::vector<CyrillicRow> rows;
    for (const LatinRow& row : latinRows) {
        if (!row.isIso9Only || standard == LatinStandard::Iso9) {
            rows.push_back({viewOf(row.latin[columnOf(standard)]), row.letter});
        }
    }
    if (standard == LatinStandard::Iso9) {
        rows.push_back({QStringView(u"\u2032", 1), u'ь'});
        rows.push_back({QStringView(u"\u2033", 1), u'ъ'});
    } else {
        rows.push_back({QStringView(u"c", 1), u'ц'});
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

const std::vector<CyrillicRow>& cyrillicRows(LatinStandard standard)
{
    static const std::vector<CyrillicRow> iso9 = makeCyrillicRows(LatinStandard::Iso9);
    static const std::vector<CyrillicRow> systemB = makeCyrillicRows(LatinStandard::Gost779B);
    return standard == LatinStandard::Iso9 ? iso9 : systemB;
}

/// The longest run that begins the text, which is not empty; null when none does.
const CyrillicRow* longestRun(QStringView smallText, const std::vector<CyrillicRow>& rows)
{
    const QChar first = smallText.front();
    const auto isBefore = [](const CyrillicRow& row, QChar unit) { return row.latin.front() < unit; };
    const CyrillicRow* longest = nullptr;
    for (auto row = std::lower_bound(rows.begin(), rows.end(), first, isBefore);
         row != rows.end() && row->latin.front() == first; ++row) {
        if ((!longest || row->latin.size() > longest->latin.size()) && smallText.startsWith(row->latin)) {
            longest = &*row;
        }
    }
    return longest;
}

bool hasSize(QChar letter)
{
    return letter.isLower() || letter.isUpper();
}

/// The place of the last letter with a size before @p end, in the same word; -1 for none.
Length lastSized(const QString& text, Length end)
{
    const auto isPassed = [](QChar unit) {
        return unit.isMark() || unit == QLatin1Char('`') || unit.category() == QChar::Letter_Modifier;
    };
    constexpr Length mostPassed = 8; // so that no text takes the square of its length
    const Length first = std::max<Length>(0, end - mostPassed);
    Length index = end - 1;
    while (index >= first && isPassed(text.at(index))) {
        --index;
    }
    return index >= 0 && hasSize(text.at(index)) ? index : -1;
}

/// Whether the letter of a run is a capital one. A sign, which has no size of its own, is one among capitals.
bool isCapital(const QString& text, Length begin, Length end)
{
    if (hasSize(text.at(begin))) {
        return text.at(begin).isUpper();
    }
    const Length before = lastSized(text, begin);
    const Length other = hasSize(at(text, end)) ? end : lastSized(text, before);
    return at(text, before).isUpper() && at(text, other).isUpper();
}

} // namespace

QString toLatin(const QString& text, LatinStandard standard)
{
    const QString source = text.normalized(QString::NormalizationForm_C);
    QString latin;
    latin.reserve(source.size() * 2);
    for (Length i = 0; i < source.size(); ++i) {
        const QChar letter = source.at(i);
        const LatinRow* const row = rowOf(letter, standard);
        if (!row) {
            latin += letter;
            continue;
        }
        const QStringView letters = viewOf(row->latin[columnOf(standard)]);
        const auto length = static_cast<Length>(letters.size()) - (isShortTse(source, i, standard) ? 1 : 0);
        const Length begin = latin.size();
        latin.append(letters.data(), length);
        if (letter.isUpper()) {
            const Length capitals = isAmongCapitals(source, i) ? length : std::min<Length>(length, 1);
            for (Length k = begin; k < begin + capitals; ++k) {
                latin[k] = latin.at(k).toUpper();
            }
        }
    }
    return latin.normalized(QString::NormalizationForm_C);
}

std::optional<QString> toCyrillic(const QString& text, LatinStandard standard)
{
    if (columnOf(standard) == columnOf(LatinStandard::Passport)) {
        return std::nullopt;
    }
    const std::vector<CyrillicRow>& rows = cyrillicRows(standard);
    const QString source = text.normalized(QString::NormalizationForm_D);
    QString smallText = source;
    std::transform(source.begin(), source.end(), smallText.begin(),
                   [](QChar unit) { return unit.toLower(); });
    QString cyrillic;
    cyrillic.reserve(source.size());
    for (Length i = 0; i < source.size();) {
        const CyrillicRow* const row = longestRun(QStringView(smallText).mid(i), rows);
        if (!row) {
            cyrillic += source.at(i++);
            continue;
        }
        const Length end = i + static_cast<Length>(row->latin.size());
        cyrillic += isCapital(source, i, end) ? QChar(row->letter).toUpper() : QChar(row->letter);
        i = end;
    }
    return cyrillic.normalized(QString::NormalizationForm_C);
}

} // namespace veltor::utils
