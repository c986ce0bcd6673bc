#pragma once

#include <veltor/Export.h>
#include <veltor/IOPtr.h>
#include <veltor/utils/NumberFormat.h>

#include <QtCore/QByteArray>
#include <QtCore/QJsonValue>

#include <array>

namespace veltor::json {

/// The places where a format puts a delimiter, numbered as Format::fields and the indentation mask
/// count them.
enum FormatField
{
    ObjectOpenBefore = 0,  ///< before {
    ObjectOpenAfter = 1,   ///< after {
    ObjectCloseBefore = 2, ///< before }
    ObjectCloseAfter = 3,  ///< after }
    ArrayOpenBefore = 4,   ///< before [
    ArrayOpenAfter = 5,    ///< after [
    ArrayCloseBefore = 6,  ///< before ]
    ArrayCloseAfter = 7,   ///< after ]
    CommaBefore = 8,       ///< before a comma, of arrays and objects alike
    CommaAfter = 9,        ///< after it
    ColonBefore = 10,      ///< between a member's name and its colon
    ColonAfter = 11,       ///< between the colon and the value
};

/// How JSON text is laid out. A plain value, reentrant.
struct VELTOR_UTILS_EXPORT Format
{
    /// How numbers are written. Its unused() field is the indentation mask: where bit k (0 to 7) is set
    /// and delimiter k ends with a line feed, the depth changes there, up by one at fields 0, 1, 4, 5
    /// and down by one at 2, 3, 6, 7, before the delimiter is written.
    utils::NumberFormat numberFormat;
    /// Written once a depth level at the start of a line; empty means no indentation.
    QByteArray indent;
    /// The delimiters, UTF-8, by FormatField.
    std::array<QByteArray, 12> fields;
};

/// What is written in place of the line feed that ends a delimiter. Line feeds elsewhere stay.
enum class EndOfLine
{
    Lf = 0,   ///< a line feed, as it stands
    CrLf = 1, ///< carriage return and line feed
    Cr = 2,   ///< a carriage return alone
};

/// Writes JSON values to a device as UTF-8 text in a layout that a Format describes.
///
///     QFile file(path);
///     file.open(QIODevice::WriteOnly);
///     JsonFormatter(IOPtr(&file, [](QIODevice*) {}), JsonFormatter::formatIndented).write(value);
///
/// - Each token goes to the device as soon as it is made, by one write() of its own; nothing but one
///   string is held in memory besides. Give it a device that buffers, as QFile does.
/// - **true and false are each followed by a zero byte**, null is not. Readers of these files expect it;
///   other JSON parsers do not.
/// - Empty arrays and objects are "[]" and "{}" in every layout: nothing stands between the brackets.
/// - An undefined value is not written at all. An unpaired surrogate in a string becomes "?".
/// - Infinity and NaN come out as their number text and are not valid JSON; nor are numbers without the
///   zero before their point, as formatSqueeze writes them.
/// - Nesting is limited by memory only, about 50 bytes a level.
/// - No errors are reported. Without a device, and with one that is not writable, nothing is written;
///   after a failed write the following ones are tried all the same. Look at the device.
///
/// Reentrant; the formatter keeps nothing between two calls of write().
class VELTOR_UTILS_EXPORT JsonFormatter
{
public:
    /// All on one line, without blanks; numbers as short as can be.
    static const Format formatCompact;
    /// formatCompact without the zero before a decimal point: for readers that accept it.
    static const Format formatSqueeze;
    /// One member or element a line, indented by four blanks.
    static const Format formatIndented;
    /// formatIndented without the indentation.
    static const Format formatUnindented;
    /// formatIndented with the opening brackets on lines of their own.
    static const Format formatBracketsIndented;
    /// Commas and brackets lead the line, at the depth of what they open.
    static const Format formatCommaFirst;
    /// All on one line, with a blank after each comma and colon.
    static const Format formatDelimited;

    /// @param device  may be empty; opened for writing if it is not open yet
    /// @param format  the layout: one of the above, or one of the caller's making
    JsonFormatter(IOPtr device, Format format);

    /// Writes one value, with nothing before or after it.
    void write(const QJsonValue& value) const;

    /// The format, to be changed at will between two calls of write().
    /// @{
    [[nodiscard]] Format& formatRef() noexcept { return m_format; }
    [[nodiscard]] Format& format() noexcept { return m_format; }
    [[nodiscard]] const Format& format() const noexcept { return m_format; }
    /// @}

    /// Ends lines by @p endOfLine from now on.
    JsonFormatter& setEndOfLine(EndOfLine endOfLine) noexcept;
    /// How lines end, EndOfLine::Lf at first.
    [[nodiscard]] EndOfLine eol() const noexcept { return m_endOfLine; }

private:
    IOPtr m_device;
    Format m_format;
    EndOfLine m_endOfLine = EndOfLine::Lf;
};

} // namespace veltor::json
