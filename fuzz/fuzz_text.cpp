// Any bytes as text: transliterated and read as dates without a crash or a hang, and what was read is written
// again.

#include <veltor/utils/DateFormats.h>
#include <veltor/utils/Transliteration.h>

#include <algorithm>
#include <cstdlib>

using namespace veltor::utils;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(bytes), static_cast<int>(size));
    for (const auto standard : {LatinStandard::Iso9, LatinStandard::Gost779B, LatinStandard::Passport}) {
        const QString latin = toLatin(text, standard);
        if (const auto cyrillic = toCyrillic(latin, standard)) {
            static_cast<void>(toLatin(*cyrillic, standard));
        }
    }

    static const std::vector<DateFormats> lists{
        DateFormats({QStringLiteral("d/M/yyyy"), QStringLiteral("M/d/yyyy"), QStringLiteral("dMyy"),
                     QStringLiteral("ddd d MMM yyyy")}),
        DateFormats::neutral(), DateFormats::ofLocale(QLocale(QLocale::Russian)),
        DateFormats::ofLocale(QLocale(QLocale::Arabic, QLocale::Egypt))};
    for (const DateFormats& formats : lists) {
        for (const QDate& date : formats.read(text).dates) {
            const auto again = formats.read(formats.toText(date)).dates;
            if (std::find(again.begin(), again.end(), date) == again.end()) {
                std::abort();
            }
        }
        static_cast<void>(formats.explain(text));
    }
    try {
        static_cast<void>(DateFormats({text}).read(text));
    } catch (const std::exception&) {
        // No format.
    }
    return 0;
}
