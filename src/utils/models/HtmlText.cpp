// Text and style sheet of the HTML that item models become.
#include "utils/models/HtmlText.h"

#include "utils/models/CellLook.h"

namespace veltor::utils {
namespace {

/// What stands in a document as it is, and is most of every text.
bool isPlain(ushort code)
{
    if (code < 0x80) {
        return code >= 0x20 && code != '&' && code != '<' && code != '>' && code != '"' && code != 0x7f;
    }
    return code >= 0xa0 && code < 0xd800 && code != 0x2028 && code != 0x2029;
}

/// Whether a unit may stand in a document; of a surrogate, with its neighbours in sight.
bool mayStand(const QString& text, decltype(text.size()) at)
{
    const QChar c = text.at(at);
    if (c.isHighSurrogate()) {
        return at + 1 < text.size() && text.at(at + 1).isLowSurrogate();
    }
    if (c.isLowSurrogate()) {
        return at > 0 && text.at(at - 1).isHighSurrogate();
    }
    const ushort code = c.unicode();
    const bool isControl = code < 0x20 || (code >= 0x7f && code < 0xa0);
    return (!isControl || code == '\t' || code == '\n') && code != 0xfffe && code != 0xffff;
}

} // namespace

void appendEscaped(QString& html, const QString& text)
{
    const auto end = text.size();
    for (decltype(text.size()) i = 0; i < end; ++i) {
        const auto run = i;
        while (i < end && isPlain(text.at(i).unicode())) {
            ++i;
        }
        html.append(text.constData() + run, i - run);
        if (i == end) {
            return;
        }
        const QChar c = text.at(i);
        switch (c.unicode()) {
        case '&':
            html += QLatin1String("&amp;");
            break;
        case '<':
            html += QLatin1String("&lt;");
            break;
        case '>':
            html += QLatin1String("&gt;");
            break;
        case '"':
            html += QLatin1String("&quot;");
            break;
        case '\r':
            // A break however it is written; the one of two signs is written by the second.
            if (i + 1 == end || text.at(i + 1) != QLatin1Char('\n')) {
                html += QLatin1Char('\n');
            }
            break;
        case 0x2028:
        case 0x2029:
            html += QLatin1Char('\n');
            break;
        default:
            html += mayStand(text, i) ? c : QChar(QChar::ReplacementCharacter);
        }
    }
}

QString htmlStyleSheet()
{
    QString sheet =
        QStringLiteral(
            ":root{color-scheme:light dark;%1--line:#c9ced6;--head:#eef1f5}\n"
            "html,body{margin:0;height:100%}\n"
            "body{color:var(--ink);background:var(--ground);"
            "font:15px/1.4 system-ui,sans-serif}\n"
            ".sheet{height:100%;overflow:auto}\n"
            "table{border-collapse:separate;border-spacing:0;background:var(--ground)}\n"
            "caption{position:sticky;left:0;max-width:100vw;box-sizing:border-box;"
            "padding:.7em .8em;text-align:start;font-size:1.2em;font-weight:600;"
            "overflow-wrap:anywhere}\n"
            "th,td{padding:.3em .8em;border-bottom:1px solid var(--line);max-width:26em;"
            "text-align:start;vertical-align:top;white-space:pre-wrap;"
            "overflow-wrap:break-word;unicode-bidi:plaintext}\n"
            "th{background:var(--head);font-weight:600}\n"
            "thead th{position:sticky;top:0;z-index:1;border-bottom-width:2px;vertical-align:bottom}\n"
            ".n{text-align:end;white-space:nowrap;font-variant-numeric:tabular-nums}\n"
            ".al{text-align:left}.ar{text-align:right}.ac{text-align:center}.aj{text-align:justify}\n"
            ".vm{vertical-align:middle}.vb{vertical-align:bottom}.vs{vertical-align:baseline}\n")
            .arg(CellLooks::lightColors());
    for (int depth = 1; depth <= mostIndents; ++depth) {
        sheet += QStringLiteral(".d%1{padding-inline-start:%2em}").arg(depth).arg(0.8 + 1.4 * depth);
    }
    sheet += QStringLiteral(
                 "\n@media (max-width:40em){body{font-size:14px}th,td{padding:.3em .5em;max-width:16em}}\n"
                 "@media (prefers-color-scheme:dark){:root{%1--line:#3a424c;--head:#232a32}}\n"
                 "@media print{.sheet{height:auto;overflow:visible}thead th{position:static}}\n")
                 .arg(CellLooks::darkColors());
    return sheet;
}

} // namespace veltor::utils
