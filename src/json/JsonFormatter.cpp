#include <veltor/json/JsonFormatter.h>

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
    int size;
    int next = 0;
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
        const QByteArray rest = text.midRef(static_cast<int>(simple)).toUtf8();
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

} // namespace

/// What travels through one write(). The containers that are open stand on a stack of their own, so that
/// no depth of nesting exhausts the thread's.
struct JsonFormatter::State
{
    qint32 depth = 0;
    quint32 flags = lineStart;
    std::vector<Container> open;
    std::string text;
};

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
    State state;
    writeImpl(value, state);
    while (!state.open.empty()) {
        writeNext(state);
    }
}

/// Writes a scalar; of a container only what opens it, the rest follows by writeNext().
void JsonFormatter::writeImpl(const QJsonValue& value, State& state) const
{
    switch (value.type()) {
    case QJsonValue::Null:
        m_device->write("null", 4);
        break;
    case QJsonValue::Bool:
        // With the terminating zero byte, as the readers of these files expect.
        if (value.toBool()) {
            m_device->write("true", 5);
        } else {
            m_device->write("false", 6);
        }
        break;
    case QJsonValue::Double:
        writeNumber(value.toDouble());
        break;
    case QJsonValue::String:
        writeString(value.toString(), state);
        break;
    case QJsonValue::Array:
        writeArray(value.toArray(), state);
        return;
    case QJsonValue::Object:
        writeObject(value.toObject(), state);
        return;
    case QJsonValue::Undefined:
        return;
    }
    state.flags &= ~lineStart;
}

void JsonFormatter::writeObject(const QJsonObject& object, State& state) const
{
    if (object.isEmpty()) {
        writeEmpty('{', '}', state);
        return;
    }
    writeChar('{', state);
    state.open.emplace_back(object);
}

void JsonFormatter::writeArray(const QJsonArray& array, State& state) const
{
    if (array.isEmpty()) {
        writeEmpty('[', ']', state);
        return;
    }
    writeChar('[', state);
    state.open.emplace_back(array);
}

/// Writes the next element of the innermost open container, or closes it.
void JsonFormatter::writeNext(State& state) const
{
    Container& container = state.open.back();
    if (container.next == container.size) {
        const char close = container.isObject ? '}' : ']';
        state.open.pop_back();
        writeChar(close, state);
        return;
    }
    const int index = container.next++;
    if (index > 0) {
        writeChar(',', state);
    }
    if (container.isObject) {
        const auto member = container.object.constBegin() + index;
        // A key leaves the state as it is: the line-start bit holds over to the colon.
        writeString(member.key(), state);
        writeChar(':', state);
        writeImpl(member.value(), state);
    } else {
        writeImpl(container.array.at(index), state);
    }
}

void JsonFormatter::writeNumber(double number) const
{
    char buffer[utils::neutralTextCapacity];
    if (const char* end = utils::neutralText(number, m_format.numberFormat, buffer)) {
        m_device->write(buffer, end - buffer);
    } else {
        m_device->write(m_format.numberFormat.toString(number).toUtf8());
    }
}

void JsonFormatter::writeString(const QString& text, State& state) const
{
    quote(text, state.text);
    m_device->write(state.text.data(), static_cast<qint64>(state.text.size()));
}

/// As writeChar() twice, without the delimiters between the brackets; the depth still changes by them.
void JsonFormatter::writeEmpty(char open, char close, State& state) const
{
    changeDepth(placesOf(open).before, state);
    writeDelimiter(placesOf(open).before, state);
    m_device->write(&open, 1);
    changeDepth(placesOf(open).after, state);
    changeDepth(placesOf(close).before, state);
    m_device->write(&close, 1);
    state.flags &= ~lineStart;
    changeDepth(placesOf(close).after, state);
    writeDelimiter(placesOf(close).after, state);
}

void JsonFormatter::writeChar(char c, State& state) const
{
    const Places places = placesOf(c);
    // The depth changes first: a line feed in the delimiter is followed by the new indentation.
    changeDepth(places.before, state);
    writeDelimiter(places.before, state);
    m_device->write(&c, 1);
    state.flags &= ~lineStart;
    changeDepth(places.after, state);
    writeDelimiter(places.after, state);
}

void JsonFormatter::writeDelimiter(FormatField field, State& state) const
{
    const QByteArray& delimiter = m_format.fields[field];
    if (delimiter.isEmpty() || (state.flags & lineStart) != 0) {
        return;
    }
    if (!isEndOfLine(field, state)) {
        m_device->write(delimiter);
        return;
    }
    if (m_endOfLine == EndOfLine::Lf) {
        m_device->write(delimiter);
    } else {
        if (delimiter.size() > 1) {
            m_device->write(delimiter.constData(), delimiter.size() - 1);
        }
        m_device->write(m_endOfLine == EndOfLine::CrLf ? "\r\n" : "\r");
    }
    writeIndent(state);
}

void JsonFormatter::writeIndent(State& state) const
{
    const QByteArray& indent = m_format.indent;
    if (indent.isEmpty() || state.depth <= 0) {
        return;
    }
    if (indent.size() == 1) {
        m_device->write(QByteArray(state.depth, indent.front()));
    } else {
        for (int i = 0; i < state.depth; ++i) {
            m_device->write(indent);
        }
    }
    state.flags |= lineStart;
}

void JsonFormatter::changeDepth(FormatField field, State& state) const
{
    if (isIndented(field, state)) {
        const bool isOpening = field == ObjectOpenBefore || field == ObjectOpenAfter ||
                               field == ArrayOpenBefore || field == ArrayOpenAfter;
        state.depth += isOpening ? 1 : -1;
    }
}

bool JsonFormatter::isEndOfLine(FormatField field, State& state) const
{
    if ((state.flags & knownBit(field)) == 0) {
        state.flags |= knownBit(field) | (m_format.fields[field].endsWith('\n') ? valueBit(field) : 0);
    }
    return (state.flags & valueBit(field)) != 0;
}

bool JsonFormatter::isIndented(FormatField field, State& state) const
{
    const bool isMasked = field <= ArrayCloseAfter && ((m_format.numberFormat.unused() >> field) & 1) != 0;
    return isMasked && isEndOfLine(field, state);
}

} // namespace veltor::json
