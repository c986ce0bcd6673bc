#pragma once

#include <veltor/utils/ItemModelExport.h>

namespace veltor::utils {

/// The text of a value, by the rules.
class CellText
{
public:
    /// @param rules  which the object refers to
    /// @param isData  numbers are to be read back: with all their digits, and without group separators
    CellText(const ItemModelRules& rules, bool isData);

    struct Result
    {
        QString text;
        bool isNumber = false; ///< the text is the value of a number
    };
    /// A value of no type at all has no text, which is no loss.
    [[nodiscard]] Result of(const QModelIndex& index, const QVariant& value);
    /// Values that had no text although they have a type.
    [[nodiscard]] qint64 untold() const { return m_untold; }

    [[nodiscard]] static bool isNumber(const QVariant& value);

private:
    QString numberText(const QVariant& value) const;
    QString otherText(const QVariant& value);
    QString fraction(double value) const;
    QString listText(const QVariantList& values);

    const ItemModelRules& m_rules;
    QLocale m_locale;
    const bool m_isData;
    bool m_isNeutral; ///< the C locale is meant: dates have their ISO form
    qint64 m_untold = 0;
};

} // namespace veltor::utils
