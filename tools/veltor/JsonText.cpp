// JSON text with exact numbers in the layouts of the library's formatter.

#include "JsonText.h"

#include "TerminalText.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <charconv>
#include <cmath>
#include <utility>

namespace veltor::tool {
namespace {

using json::FormatField;

/// The fields before and after a punctuation character.
std::pair<FormatField, FormatField> placesOf(char c)
{
    switch (c) {
    case '{':
        return {json::ObjectOpenBefore, json::ObjectOpenAfter};
    case '}':
        return {json::ObjectCloseBefore, json::ObjectCloseAfter};
    case '[':
        return {json::ArrayOpenBefore, json::ArrayOpenAfter};
    case ']':
        return {json::ArrayCloseBefore, json::ArrayCloseAfter};
    case ':':
        return {json::ColonBefore, json::ColonAfter};
    default:
        return {json::CommaBefore, json::CommaAfter};
    }
}

} // namespace

void appendNumber(std::string& text, double value)
{
    constexpr double exactWhole = 9007199254740992; // 2^53
    std::array<char, 32> digits;
    char* const end = digits.data() + digits.size();
    const bool isWhole = std::fabs(value) < exactWhole && std::trunc(value) == value;
    const auto result = isWhole ? std::to_chars(digits.data(), end, static_cast<long long>(value))
                                : std::to_chars(digits.data(), end, value);
    text.append(digits.data(), result.ptr);
}

JsonText::JsonText(json::Format layout, json::EndOfLine endOfLine)
    : m_layout(std::move(layout))
    , m_lineEnd(endOfLine == json::EndOfLine::Lf     ? "\n"
                : endOfLine == json::EndOfLine::CrLf ? "\r\n"
                                                     : "\r")
{
    for (std::size_t i = 0; i < m_endsLine.size(); ++i) {
        m_endsLine[i] = m_layout.fields[i].endsWith('\n');
    }
}

std::string JsonText::take()
{
    return std::exchange(m_text, {});
}

/// What stands before any element: a comma, and what opens a container that has been empty so far.
void JsonText::element()
{
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (m_open.empty()) {
        return;
    }
    Open& container = m_open.back();
    if (std::exchange(container.empty, false)) {
        mark(container.close == '}' ? '{' : '[');
    } else {
        mark(',');
    }
}

void JsonText::begin(char close)
{
    element();
    m_open.push_back({close, true});
}

void JsonText::end()
{
    const Open container = m_open.back();
    m_open.pop_back();
    if (!container.empty) {
        mark(container.close);
        return;
    }
    // Nothing stands between the brackets of an empty one.
    const char open = container.close == '}' ? '{' : '[';
    changeDepth(placesOf(open).first);
    delimiter(placesOf(open).first);
    m_text += open;
    changeDepth(placesOf(open).second);
    changeDepth(placesOf(container.close).first);
    m_text += container.close;
    m_atLineStart = false;
    changeDepth(placesOf(container.close).second);
    delimiter(placesOf(container.close).second);
}

void JsonText::key(std::string_view utf8)
{
    element();
    quote(utf8);
    mark(':');
    m_afterKey = true;
}

void JsonText::value(double number)
{
    if (!std::isfinite(number)) {
        null();
        return;
    }
    element();
    const std::size_t begin = m_text.size();
    appendNumber(m_text, number);
    if (m_layout.numberFormat.omitLeadingZero()) {
        const std::size_t zero = begin + (number < 0 ? 1 : 0);
        if (m_text.compare(zero, 2, "0.") == 0) {
            m_text.erase(zero, 1);
        }
    }
    m_atLineStart = false;
}

void JsonText::value(const QString& text)
{
    element();
    const QByteArray bytes = text.toUtf8();
    const std::size_t begin = m_text.size();
    quote({bytes.constData(), static_cast<std::size_t>(bytes.size())});
    if (bytes.size() != text.size()) { // not ASCII: it may hold what a terminal obeys
        const QString shown = shownJson(QString::fromStdString(m_text.substr(begin)));
        m_text.replace(begin, std::string::npos, shown.toStdString());
    }
    m_atLineStart = false;
}

void JsonText::value(const QJsonValue& tree)
{
    switch (tree.type()) {
    case QJsonValue::Bool:
        token(tree.toBool() ? "true" : "false");
        return;
    case QJsonValue::Double:
        value(tree.toDouble());
        return;
    case QJsonValue::String:
        value(tree.toString());
        return;
    case QJsonValue::Array: {
        beginArray();
        const QJsonArray array = tree.toArray();
        for (const QJsonValue& item : array) {
            value(item);
        }
        end();
        return;
    }
    case QJsonValue::Object: {
        beginObject();
        const QJsonObject object = tree.toObject();
        for (auto member = object.begin(); member != object.end(); ++member) {
            key(member.key().toStdString());
            value(QJsonValue(member.value()));
        }
        end();
        return;
    }
    default:
        null();
    }
}

void JsonText::token(std::string_view text)
{
    element();
    m_text += text;
    m_atLineStart = false;
}

void JsonText::quote(std::string_view utf8)
{
    static constexpr char hexDigits[] = "0123456789abcdef";
    static constexpr std::string_view letters = "btn\vfr"; // of 0x08 to 0x0d; 0x0b has none
    m_text += '"';
    for (const char c : utf8) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            m_text += '\\';
            m_text += c;
        } else if (code >= 0x08 && code <= 0x0d && code != 0x0b) {
            m_text += '\\';
            m_text += letters[code - 0x08U];
        } else if (code < 0x20) {
            m_text += "\\u00";
            m_text += hexDigits[code >> 4U];
            m_text += hexDigits[code & 0xFU];
        } else {
            m_text += c;
        }
    }
    m_text += '"';
}

void JsonText::mark(char c)
{
    const auto [before, after] = placesOf(c);
    // The depth changes first: a line feed in the delimiter is followed by the new indentation.
    changeDepth(before);
    delimiter(before);
    m_text += c;
    m_atLineStart = false;
    changeDepth(after);
    delimiter(after);
}

void JsonText::delimiter(FormatField field)
{
    const QByteArray& text = m_layout.fields[field];
    if (text.isEmpty() || m_atLineStart) {
        return;
    }
    if (!m_endsLine[field]) {
        m_text.append(text.constData(), static_cast<std::size_t>(text.size()));
        return;
    }
    m_text.append(text.constData(), static_cast<std::size_t>(text.size() - 1));
    m_text += m_lineEnd;
    for (int i = 0; i < m_depth; ++i) {
        m_text.append(m_layout.indent.constData(), static_cast<std::size_t>(m_layout.indent.size()));
    }
    m_atLineStart = m_depth > 0 && !m_layout.indent.isEmpty();
}

void JsonText::changeDepth(FormatField field)
{
    const bool isMasked =
        field <= json::ArrayCloseAfter && ((m_layout.numberFormat.unused() >> field) & 1U) != 0;
    if (isMasked && m_endsLine[field]) {
        const bool isOpening = field == json::ObjectOpenBefore || field == json::ObjectOpenAfter ||
                               field == json::ArrayOpenBefore || field == json::ArrayOpenAfter;
        m_depth += isOpening ? 1 : -1;
    }
}

} // namespace veltor::tool
