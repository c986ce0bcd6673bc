// Writes JSON values token by token in the layout of a format.

#include <veltor/json/JsonFormatter.h>

#include "base/QtDifferences.h"

#include "utils/text/NeutralText.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace veltor::json {
namespace {

// The flags of a state: for field k, bit 2k tells that bit 2k + 1 holds whether its delimiter ends with a
// line feed. While the line-start bit is set, delimiters are left out.
constexpr quint32 lineStart = quint32(1) << 24;

constexpr quint32 knownBit(FormatField field)
{
    return quint32(1) << (2 * field);
}

constexpr quint32 valueBit(FormatField field)
{
    return quint32(2) << (2 * field);
}

/// The fields before and after a punctuation character.
struct Places
{
    FormatField before;
    FormatField after;
};

constexpr Places placesOf(char c)
{
    switch (c) {
    case '{':
        return {ObjectOpenBefore, ObjectOpenAfter};
    case '}':
        return {ObjectCloseBefore, ObjectCloseAfter};
    case '[':
        return {ArrayOpenBefore, ArrayOpenAfter};
    case ']':
        return {ArrayCloseBefore, ArrayCloseAfter};
    case ':':
        return {ColonBefore, ColonAfter};
    default:
        return {CommaBefore, CommaAfter};
    }
}

/// An array or object of which some elements are written.
struct Container
{
    explicit Container(QJsonArray elements)
        : array(std::move(elements))
        , size(array.size())
        , isObject(false)
    {}
    explicit Container(QJsonObject members)
        : object(std::move(members))
        , size(object.size())
        , isObject(true)
    {}

    QJsonArray array;
    QJsonObject object;
    base::Length size;
    base::Length next = 0;
    bool isObject;
};

constexpr bool isEscaped(unsigned char c)
{
    return c < 0x20 || c == '"' || c == '\\';
}

void appendEscaped(unsigned char c, std::string& out)
{
    static constexpr char hexDigits[] = "0123456789abcdef";
    static constexpr std::pair<char, char> letters[] = {{'"', '"'},  {'\\', '\\'}, {'\b', 'b'}, {'\t', 't'},
                                                        {'\n', 'n'}, {'\f', 'f'},  {'\r', 'r'}};
    out += '\\';
    for (const auto& [character, letter] : letters) {
        if (static_cast<char>(c) == character) {
            out += letter;
            return;
        }
    }
    out += "u00";
    out += hexDigits[c >> 4];
    out += hexDigits[c & 0xF];
}

/// Puts the text between quotes, as UTF-8. `out` is a buffer that is used again and again.
void quote(const QString& text, std::string& out)
{
    const auto isSimple = [](QChar c) {
        return c.unicode() < 0x80 && !isEscaped(static_cast<unsigned char>(c.unicode()));
    };
    // Most texts are plain ASCII, which needs neither a conversion nor a search for escapes.
    const auto stop = std::find_if_not(text.begin(), text.end(), isSimple);
    const auto simple = static_cast<std::size_t>(stop - text.begin());
    out.resize(simple + 1);
    out.front() = '"';
    std::transform(text.begin(), stop, out.begin() + 1, [](QChar c) { return c.toLatin1(); });
    if (stop != text.end()) {
        const QByteArray rest = QStringView(text).mid(static_cast<base::Length>(simple)).toUtf8();
        const auto* run = rest.begin();
        while (run != rest.end()) {
            const auto* const end = std::find_if(
                run, rest.end(), [](char c) { return isEscaped(static_cast<unsigned char>(c)); });
            out.append(run, end);
            run = end;
            if (run != rest.end()) {
                appendEscaped(static_cast<unsigned char>(*run++), out);
            }
        }
    }
    out += '"';
}

/// One write(): the layout's state, and the way of each token to the device. The containers that are open
/// stand on a stack of their own, so that no depth of nesting exhausts the thread's.
class Writer
{
public:
    Writer(QIODevice& device, const Format& format, EndOfLine endOfLine)
        : m_device(device)
        , m_format(format)
        , m_endOfLine(endOfLine)
    {}

    void write(const QJsonValue& value)
    {
        writeValue(value);
        while (!m_open.empty()) {
            writeNext();
        }
    }

private:
    void writeValue(const QJsonValue& value);
    void writeObject(const QJsonObject& object);
    void writeArray(const QJsonArray& array);
    void writeNext();
    void writeNumber(double number);
    void writeString(const QString& text);
    void writeEmpty(char open, char close);
    void writeChar(char c);
    void writeDelimiter(FormatField field);
    void writeIndent();
    void changeDepth(FormatField field);
    bool isEndOfLine(FormatField field);
    bool isIndented(FormatField field);

    QIODevice& m_device;
    const Format& m_format;
    EndOfLine m_endOfLine;
    qint32 m_depth = 0;
    quint32 m_flags = lineStart;
    std::vector<Container> m_open;
    std::string m_text;
};

/// Writes a scalar; of a container only what opens it, the rest follows by writeNext().
void Writer::writeValue(const QJsonValue& value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        m_device.write("null", 4);
        break;
    case QJsonValue::Bool:
        // With the terminating zero byte, as the readers of these files expect.
        if (value.toBool()) {
            m_device.write("true", 5);
        } else {
            m_device.write("false", 6);
        }
        break;
    case QJsonValue::Double:
        writeNumber(value.toDouble());
        break;
    case QJsonValue::String:
        writeString(value.toString());
        break;
    case QJsonValue::Array:
        writeArray(value.toArray());
        return;
    case QJsonValue::Object:
        writeObject(value.toObject());
        return;
    case QJsonValue::Undefined:
        return;
    }
    m_flags &= ~lineStart;
}

void Writer::writeObject(const QJsonObject& object)
{
    if (object.isEmpty()) {
        writeEmpty('{', '}');
        return;
    }
    writeChar('{');
    m_open.emplace_back(object);
}

void Writer::writeArray(const QJsonArray& array)
{
    if (array.isEmpty()) {
        writeEmpty('[', ']');
        return;
    }
    writeChar('[');
    m_open.emplace_back(array);
}

/// Writes the next element of the innermost open container, or closes it.
void Writer::writeNext()
{
    Container& container = m_open.back();
    if (container.next == container.size) {
        const char close = container.isObject ? '}' : ']';
        m_open.pop_back();
        writeChar(close);
        return;
    }
    const base::Length index = container.next++;
    if (index > 0) {
        writeChar(',');
    }
    if (container.isObject) {
        const auto member = container.object.constBegin() + index;
        // A key leaves the state as it is: the line-start bit holds over to the colon.
        writeString(member.key());
        writeChar(':');
        writeValue(member.value());
    } else {
        writeValue(container.array.at(index));
    }
}

void Writer::writeNumber(double number)
{
    char buffer[utils::neutralTextCapacity];
    if (const char* end = utils::neutralText(number, m_format.numberFormat, buffer)) {
        m_device.write(buffer, end - buffer);
    } else {
        m_device.write(m_format.numberFormat.toString(number).toUtf8());
    }
}

void Writer::writeString(const QString& text)
{
    quote(text, m_text);
    m_device.write(m_text.data(), static_cast<qint64>(m_text.size()));
}

/// As writeChar() twice, without the delimiters between the brackets; the depth still changes by them.
void Writer::writeEmpty(char open, char close)
{
    changeDepth(placesOf(open).before);
    writeDelimiter(placesOf(open).before);
    m_device.write(&open, 1);
    changeDepth(placesOf(open).after);
    changeDepth(placesOf(close).before);
    m_device.write(&close, 1);
    m_flags &= ~lineStart;
    changeDepth(placesOf(close).after);
    writeDelimiter(placesOf(close).after);
}

void Writer::writeChar(char c)
{
    const Places places = placesOf(c);
    // The depth changes first: a line feed in the delimiter is followed by the new indentation.
    changeDepth(places.before);
    writeDelimiter(places.before);
    m_device.write(&c, 1);
    m_flags &= ~lineStart;
    changeDepth(places.after);
    writeDelimiter(places.after);
}

void Writer::writeDelimiter(FormatField field)
{
    const QByteArray& delimiter = m_format.fields[field];
    if (delimiter.isEmpty() || (m_flags & lineStart) != 0) {
        return;
    }
    if (!isEndOfLine(field)) {
        m_device.write(delimiter);
        return;
    }
    if (m_endOfLine == EndOfLine::Lf) {
        m_device.write(delimiter);
    } else {
        if (delimiter.size() > 1) {
            m_device.write(delimiter.constData(), delimiter.size() - 1);
        }
        m_device.write(m_endOfLine == EndOfLine::CrLf ? "\r\n" : "\r");
    }
    writeIndent();
}

void Writer::writeIndent()
{
    const QByteArray& indent = m_format.indent;
    if (indent.isEmpty() || m_depth <= 0) {
        return;
    }
    if (indent.size() == 1) {
        m_device.write(QByteArray(m_depth, indent.front()));
    } else {
        for (int i = 0; i < m_depth; ++i) {
            m_device.write(indent);
        }
    }
    m_flags |= lineStart;
}

void Writer::changeDepth(FormatField field)
{
    if (isIndented(field)) {
        const bool isOpening = field == ObjectOpenBefore || field == ObjectOpenAfter ||
                               field == ArrayOpenBefore || field == ArrayOpenAfter;
        m_depth += isOpening ? 1 : -1;
    }
}

bool Writer::isEndOfLine(FormatField field)
{
    if ((m_flags & knownBit(field)) == 0) {
        m_flags |= knownBit(field) | (m_format.fields[field].endsWith('\n') ? valueBit(field) : 0);
    }
    return (m_flags & valueBit(field)) != 0;
}

bool Writer::isIndented(FormatField field)
{
    const bool isMasked = field <= ArrayCloseAfter && ((m_format.numberFormat.unused() >> field) & 1) != 0;
    return isMasked && isEndOfLine(field);
}

} // namespace

JsonFormatter::JsonFormatter(IOPtr device, Format format)
    : m_device(std::move(device))
    , m_format(std::move(format))
{
    if (m_device && !m_device->isOpen()) {
        m_device->open(QIODevice::WriteOnly);
    }
}

JsonFormatter& JsonFormatter::setEndOfLine(EndOfLine endOfLine) noexcept
{
    m_endOfLine = endOfLine;
    return *this;
}

void JsonFormatter::write(const QJsonValue& value) const
{
    // A device that is not writable would take nothing and complain at each token.
    if (!m_device || !m_device->isWritable()) {
        return;
    }
    Writer(*m_device, m_format, m_endOfLine).write(value);
}

} // namespace veltor::json
