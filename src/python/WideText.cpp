// UTF-16 as the platform's wide characters.

#include "python/WideText.h"

namespace veltor::python {

std::wstring toWideText(const QString& text)
{
    std::wstring wide;
    wide.reserve(static_cast<std::size_t>(text.size()));
    for (int i = 0; i < text.size(); ++i) {
        char32_t unit = text[i].unicode();
        if constexpr (sizeof(wchar_t) > sizeof(char16_t)) {
            if (QChar::isHighSurrogate(unit) && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
                ++i;
                unit = QChar::surrogateToUcs4(static_cast<ushort>(unit), text[i].unicode());
            }
        }
        wide.push_back(static_cast<wchar_t>(unit));
    }
    return wide;
}

} // namespace veltor::python
