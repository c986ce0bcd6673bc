#pragma once

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QStringList>

class QVariant;

namespace veltor::utils {

/// The looks of a model's items, of which those that show up in time become classes of the style sheet.
class CellLooks
{
public:
    CellLooks();

    /// The attributes for a cell, each with a blank before it; empty for the usual look.
    /// @param classes  that the cell has anyway, separated by blanks
    /// @param style    that it has anyway, of whole declarations
    QString attributes(const QVariant& foreground, const QVariant& background, const QVariant& font,
                       const QString& classes);

    /// The rules for the classes given out so far. From now on no others are.
    QString closeSheet();

    /// The ink and ground of documents, for the style sheet.
    [[nodiscard]] static QString lightColors();
    [[nodiscard]] static QString darkColors();

private:
    struct Look
    {
        QString light;
        QString dark;  ///< what differs there; empty when nothing does
        QString fixed; ///< to be read on either, for cells whose class came too late
    };

    /// What a cell gets for a look.
    struct Mark
    {
        QString className; ///< empty when it came too late, or there is nothing to say
        QString style;     ///< what to say then
    };

    [[nodiscard]] Look lookOf(const QString& foreground, const QString& background,
                              const QString& font) const;
    Mark markOf(const QString& foreground, const QString& background, const QString& font);

    QString m_usualFont;
    QHash<QString, Mark> m_marks;
    QStringList m_light;
    QStringList m_dark;
    bool m_isOpen = true;
};

} // namespace veltor::utils
