// Colours and fonts of a model's items as classes of a style sheet.
#include "utils/models/CellLook.h"

#include "base/QtDifferences.h"
#include "utils/models/Color.h"

#include <QtCore/QStringList>
#include <QtCore/QVariant>

namespace veltor::utils {
namespace {

constexpr int mostLooks = 1000; // that are remembered

const Color lightGround{1.0, 1.0, 1.0};
const Color lightInk{0.106, 0.122, 0.141};
const Color darkGround{0.086, 0.102, 0.118};
const Color darkInk{0.882, 0.898, 0.918};

/// A name within quotes: what is neither a letter, a digit nor a blank stands there by its code.
QString quotedCss(const QString& name)
{
    QString text;
    for (const QChar c : name) {
        if (c.isLetterOrNumber() || c.isSurrogate() || c == QLatin1Char(' ') || c == QLatin1Char('-')) {
            text += c;
        } else {
            text += QStringLiteral("\\%1 ").arg(c.unicode(), 6, 16, QLatin1Char('0'));
        }
    }
    return QLatin1Char('"') + text + QLatin1Char('"');
}

/// What Qt writes of a font: the family, which may hold commas, and numbers.
struct FontText
{
    enum Field
    {
        Points,
        Pixels,
        Hint,
        Weight,
        Slant,
        Underline,
        StrikeOut,
        Fixed,
        FieldCount
    };

    QString family;
    QStringList fields; // as many as above; none when the text is not understood

    explicit FontText(const QString& text)
    {
        const QStringList parts = text.split(QLatin1Char(','));
        for (int first = 1; first + FieldCount <= parts.size(); ++first) {
            bool numbers = true;
            for (int i = first; i < first + FieldCount && numbers; ++i) {
                parts[i].toDouble(&numbers);
            }
            if (numbers) {
                family = parts.mid(0, first).join(QLatin1Char(','));
                fields = parts.mid(first, FieldCount);
                return;
            }
        }
    }

    [[nodiscard]] bool on(Field field) const { return fields[field].toInt() != 0; }
};

/// Weights as style sheets count them.
int cssWeight(const QString& weight)
{
    const int given = weight.toInt();
    if (given > 99) {
        return given; // Qt 6
    }
    constexpr std::pair<int, int> weights[] = {{0, 100},  {12, 200}, {25, 300}, {50, 400}, {57, 500},
                                               {63, 600}, {75, 700}, {81, 800}, {87, 900}};
    int css = 100;
    for (const auto& [qt, as] : weights) {
        css = given >= qt ? as : css;
    }
    return css;
}

/// Declarations for what a font has and the usual one has not.
QString fontCss(const QString& text, const QString& usualText)
{
    const FontText font(text);
    const FontText usual(usualText);
    if (font.fields.isEmpty() || usual.fields.isEmpty()) {
        return {};
    }
    QString css;
    if (font.family != usual.family) {
        css += QStringLiteral("font-family:%1;").arg(quotedCss(font.family));
    }
    if (font.fields[FontText::Points] != usual.fields[FontText::Points] ||
        font.fields[FontText::Pixels] != usual.fields[FontText::Pixels]) {
        const bool points = font.fields[FontText::Points].toDouble() > 0.0;
        css += QStringLiteral("font-size:%1%2;")
                   .arg(font.fields[points ? FontText::Points : FontText::Pixels],
                        points ? QStringLiteral("pt") : QStringLiteral("px"));
    }
    if (font.fields[FontText::Weight] != usual.fields[FontText::Weight]) {
        css += QStringLiteral("font-weight:%1;").arg(cssWeight(font.fields[FontText::Weight]));
    }
    if (font.on(FontText::Slant) != usual.on(FontText::Slant)) {
        css += font.on(FontText::Slant) ? QStringLiteral("font-style:italic;")
                                        : QStringLiteral("font-style:normal;");
    }
    QStringList lines;
    lines << (font.on(FontText::Underline) ? QStringLiteral("underline") : QString())
          << (font.on(FontText::StrikeOut) ? QStringLiteral("line-through") : QString());
    lines.removeAll(QString());
    if (!lines.isEmpty()) {
        css += QStringLiteral("text-decoration:%1;").arg(lines.join(QLatin1Char(' ')));
    }
    return css;
}

QString colorCss(const Color& ink, const Color& ground)
{
    return QStringLiteral("color:%1;background:%2;").arg(ink.css(), ground.css());
}

QString colorVariables(const Color& ink, const Color& ground)
{
    return QStringLiteral("--ink:%1;--ground:%2;").arg(ink.css(), ground.css());
}

} // namespace

CellLooks::CellLooks()
    : m_usualFont(base::converted(QVariant(), QMetaType::QFont).toString())
{}

CellLooks::Look CellLooks::lookOf(const QString& foreground, const QString& background,
                                  const QString& font) const
{
    const std::optional<Color> ink = parseColor(foreground);
    const std::optional<Color> ground = parseColor(background);
    Look look;
    look.light = fontCss(font, m_usualFont);
    look.fixed = look.light;
    if (!ink && !ground) {
        return look;
    }
    const Color onLight = ground ? over(*ground, lightGround) : lightGround;
    const Color onDark = ground ? over(*ground, darkGround) : darkGround;
    // Both given are the model's intention, unless one sees through the ground.
    const bool isMeant = ink && ground && ground->alpha >= 1.0;
    const auto inkOn = [&](const Color& seen) {
        const bool isDarkBetter = contrast(lightInk, seen) > contrast(darkInk, seen);
        const Color chosen = ink ? over(*ink, seen) : isDarkBetter ? lightInk : darkInk;
        return isMeant ? chosen : readable(chosen, seen);
    };
    const QString light = colorCss(inkOn(onLight), onLight);
    const QString dark = colorCss(inkOn(onDark), onDark);
    look.fixed += light;
    look.light += ground ? light : light.section(QLatin1Char(';'), 0, 0) + QLatin1Char(';');
    if (dark != light) {
        look.dark = ground ? dark : dark.section(QLatin1Char(';'), 0, 0) + QLatin1Char(';');
    }
    return look;
}

CellLooks::Mark CellLooks::markOf(const QString& foreground, const QString& background, const QString& font)
{
    const QString key = foreground + QLatin1Char('|') + background + QLatin1Char('|') + font;
    const auto found = m_marks.constFind(key);
    if (found != m_marks.constEnd()) {
        return *found;
    }
    const Look look = lookOf(foreground, background, font);
    if (m_marks.size() >= mostLooks) {
        return {{}, look.fixed};
    }
    Mark mark{{}, look.fixed};
    if (m_isOpen && !look.light.isEmpty()) {
        mark = {QStringLiteral("c%1").arg(m_marks.size()), {}};
        const QString rule = QStringLiteral(".%1{%2}");
        m_light << rule.arg(mark.className, look.light);
        if (!look.dark.isEmpty()) {
            m_dark << rule.arg(mark.className, look.dark);
        }
    }
    m_marks.insert(key, mark);
    return mark;
}

QString CellLooks::attributes(const QVariant& foreground, const QVariant& background, const QVariant& font,
                              const QString& classes)
{
    Mark mark;
    if (foreground.isValid() || background.isValid() || font.isValid()) {
        const QString fontText = font.userType() == QMetaType::QFont ? font.toString() : QString();
        mark = markOf(colorText(foreground), colorText(background), fontText);
    }
    QString text;
    if (!classes.isEmpty() || !mark.className.isEmpty()) {
        text = QLatin1String(" class=\"") + classes;
        if (!classes.isEmpty() && !mark.className.isEmpty()) {
            text += QLatin1Char(' ');
        }
        text += mark.className + QLatin1Char('"');
    }
    if (!mark.style.isEmpty()) {
        text += QLatin1String(" style=\"") + mark.style.toHtmlEscaped() + QLatin1Char('"');
    }
    return text;
}

QString CellLooks::closeSheet()
{
    m_isOpen = false;
    QString sheet = m_light.join(QLatin1Char('\n'));
    if (!m_dark.isEmpty()) {
        sheet += QStringLiteral("\n@media (prefers-color-scheme:dark){\n%1\n}")
                     .arg(m_dark.join(QLatin1Char('\n')));
    }
    return sheet;
}

QString CellLooks::lightColors()
{
    return colorVariables(lightInk, lightGround);
}

QString CellLooks::darkColors()
{
    return colorVariables(darkInk, darkGround);
}

} // namespace veltor::utils
