#pragma once

#include <veltor/Export.h>

#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QLocale>
#include <QtCore/QString>

#include <initializer_list>
#include <map>
#include <utility>

namespace veltor::utils {

/// A read-only view of a QJsonObject whose members are found without regard to the case of letters, and
/// under aliases. Reentrant; an object that nobody changes may be read from several threads.
class VELTOR_UTILS_EXPORT NoCaseJsonObject
{
    struct NoCaseLess
    {
        bool operator()(const QString& a, const QString& b) const noexcept
        {
            return QString::compare(a, b, Qt::CaseInsensitive) < 0;
        }
    };
    using Names = std::map<QString, QString, NoCaseLess>;

public:
    /// Walks the names, aliases among them, in case-insensitive order: `first` is the name to look up,
    /// `second` the exact name of the member it finds.
    using iterator = Names::const_iterator;

    /// Views @p object, as set() does, with @p aliases: pairs (name, alias) for addAlias(), in this order.
    explicit NoCaseJsonObject(QJsonObject object = {},
                              const std::initializer_list<std::pair<QString, QString>>& aliases = {});

    /// Views another object; aliases are forgotten. Of member names that differ only in case, either
    /// spelling finds the member that comes last in the object.
    void set(QJsonObject object);

    /// Makes @p alias find the member that @p name, itself a member's name or an alias, finds. Nothing
    /// happens when @p name finds none, or when @p alias finds one already.
    void addAlias(const QString& name, const QString& alias);

    /// Whether there is a member of that name or alias.
    [[nodiscard]] bool contains(const QString& name) const;

    /// The member, a null value when there is none of that name.
    [[nodiscard]] QJsonValue value(const QString& name) const;
    /// The member that an iterator, not end(), stands at.
    [[nodiscard]] QJsonValue value(iterator name) const;

    /// The first name.
    [[nodiscard]] iterator begin() const noexcept { return m_names.begin(); }
    /// Past the last name.
    [[nodiscard]] iterator end() const noexcept { return m_names.end(); }

    /// The number of the object's members; aliases do not count.
    [[nodiscard]] int size() const { return static_cast<int>(m_object.size()); }

private:
    Names m_names; // every mapped value is a member of m_object
    QJsonObject m_object;
};

/// The text for the user's language out of a value that is either a text or an object of translations.
/// @param value   members of an object are named by language codes in lower case, parts joined by "_":
///                en, en_us, zh_hans_cn
/// @param locale  its UI languages are tried in order, each from the full code to the language alone
/// @return the text of the first member found, otherwise of the object's first member; empty for an
///         empty object, and wherever a text was expected and something else found. Reentrant.
VELTOR_UTILS_EXPORT QString jsonToLocalizedString(const QJsonValue& value, const QLocale& locale);

} // namespace veltor::utils
