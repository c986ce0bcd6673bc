#pragma once

#include <veltor/json/JsonFormatter.h>

#include <QtCore/QJsonValue>
#include <QtCore/QString>

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace veltor::tool {

/// A value as the fewest digits that read back as the same value, at most 17; 1e+300 and beyond with an
/// exponent.
void appendNumber(std::string& text, double value);

/// The tool's one writer of JSON, value after value, in the layouts of JsonFormatter.
///
/// It is not JsonFormatter itself, whose numbers have 15 digits and whose truth values a zero byte behind
/// them, for the readers of its files: here a number reads back as it was, a whole one has no exponent below
/// 2^53, infinity and NaN are null, and the text is JSON to the letter (with the layout "squeeze", but for
/// the zero before the point). Nothing but the text not yet taken is held in memory.
class JsonText
{
public:
    explicit JsonText(json::Format layout, json::EndOfLine endOfLine = json::EndOfLine::Lf);

    void beginObject() { begin('}'); }
    void beginArray() { begin(']'); }
    /// Ends the innermost array or object.
    void end();

    void key(std::string_view utf8);
    void value(double number);
    void value(unsigned long long number) { token(std::to_string(number)); }
    void value(const QString& text);
    void value(const QJsonValue& tree);
    void null() { token("null"); }

    /// What was written since the last call.
    [[nodiscard]] std::string take();

private:
    struct Open
    {
        char close;
        bool empty;
    };

    void begin(char close);
    void element();
    void token(std::string_view text);
    void quote(std::string_view utf8);
    void mark(char c);
    void delimiter(json::FormatField field);
    void changeDepth(json::FormatField field);

    json::Format m_layout;
    std::string m_lineEnd;
    std::array<bool, 12> m_endsLine{};
    std::vector<Open> m_open;
    std::string m_text;
    int m_depth = 0;
    bool m_atLineStart = true;
    bool m_afterKey = false;
};

} // namespace veltor::tool
