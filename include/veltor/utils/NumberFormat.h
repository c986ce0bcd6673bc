#pragma once

#include <veltor/Export.h>

#include <QtCore/QLocale>
#include <QtCore/QString>

namespace veltor::utils {

/// How a double is presented as text: a cheap value that is set up once and used for many numbers.
///
///     NumberFormat(NumberFormat::Shortest, true).toString(0.5)                           // .5
///     NumberFormat(NumberFormat::Exponential).setExponential(QLatin1Char('E')).toString(12345) // 1.2345E4
///
/// Texts carry at most 15 significant digits, no group separators, and the digits, signs and decimal
/// point of the format's locale. Ties are rounded away from zero; a zero of either sign is "0".
/// Infinity and NaN come out in Qt's words (inf, -inf, nan). Reentrant.
class VELTOR_UTILS_EXPORT NumberFormat
{
public:
    /// Which of the notations below toString() writes.
    enum Presentation
    {
        Shortest = 0,       ///< the shorter of nonExponential() and compactExponential(), if equal the former
        Exponential = 1,    ///< exponential()
        NonExponential = 2, ///< nonExponential()
        Standard = 3,       ///< standard()
    };

    /// A format of the C locale with that locale's exponent character. The defaults give what
    /// utils::toString(double) gives.
    /// @param presentation     what toString() writes
    /// @param omitLeadingZero  drop the zero before the decimal point: 0.5 becomes .5
    /// @param unused           see setUnused()
    explicit NumberFormat(Presentation presentation = Standard, bool omitLeadingZero = false,
                          unsigned unused = 0);

    /// The locale whose characters are used. Its number options are replaced: group separators are
    /// left out, all else as usual.
    NumberFormat& setLocale(QLocale locale);
    /// The locale set, with its number options replaced.
    [[nodiscard]] const QLocale& locale() const noexcept { return m_locale; }

    /// The character shown in place of the locale's exponent character; a null one keeps the locale's.
    NumberFormat& setExponential(QChar exponential) noexcept;
    /// The character set; null when the locale's is shown.
    [[nodiscard]] QChar exponential() const noexcept { return m_exponential; }

    /// Chooses what toString() writes.
    NumberFormat& setPresentation(Presentation presentation) noexcept;
    /// What toString() writes.
    [[nodiscard]] Presentation presentation() const noexcept;

    /// Whether the zero before the decimal point is dropped.
    NumberFormat& setOmitLeadingZero(bool omit) noexcept;
    /// Whether it is.
    [[nodiscard]] bool omitLeadingZero() const noexcept;

    /// A number that the format stores for its owner and does not use; its low 29 bits are kept.
    NumberFormat& setUnused(unsigned unused) noexcept;
    /// The number stored, below 2^29.
    [[nodiscard]] unsigned unused() const noexcept;

    /// @p x by the presentation set.
    [[nodiscard]] QString toString(double x) const;

    /// One digit, the point and the others, an exponent without leading zeros or plus sign: 12345 gives
    /// 1.2345e4, 1 gives 1e0. The leading zero is never dropped.
    [[nodiscard]] QString exponential(double x) const;

    /// exponential() without the point where the exponent is positive and reaches to the last digit:
    /// 1.5e5 becomes 15e4. A number with a positive exponent and more digits than that is brought to the
    /// exponent 9, 12345678901.5 to 12.3456789015e9. The latter is meant for exponents from 10 up; with
    /// a smaller one the point is inserted counting from the end of the mantissa, or left out, and
    /// **the text is not the number**.
    [[nodiscard]] QString compactExponential(double x) const;

    /// All digits written out, whatever the exponent: up to 309 before the point, 340 characters in all.
    [[nodiscard]] QString nonExponential(double x) const;

    /// Digits written out from 1e-15 to below 1e15, the locale's exponential form outside of that.
    [[nodiscard]] QString standard(double x) const;

    /// Drops the zero digit that begins @p text, after the negative sign or without one, when the format
    /// omits leading zeros and more follows; then replaces the locale's exponent character by
    /// @p exponential unless that is null.
    [[nodiscard]] QString removeLeadingZero(QString text, QChar exponential) const;

private:
    QLocale m_locale;
    QChar m_exponential;
    quint32 m_bits; // bits 0-1 presentation, bit 2 omitLeadingZero, bits 3-31 unused
};

} // namespace veltor::utils
