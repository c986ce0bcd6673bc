// Members of a JSON object by names of any case.

#include <veltor/utils/NoCaseJsonObject.h>

#include "base/QtDifferences.h"

#include <QtCore/QStringList>

namespace veltor::utils {

NoCaseJsonObject::NoCaseJsonObject(QJsonObject object,
                                   const std::initializer_list<std::pair<QString, QString>>& aliases)
{
    set(std::move(object));
    for (const auto& [name, alias] : aliases) {
        addAlias(name, alias);
    }
}

void NoCaseJsonObject::set(QJsonObject object)
{
    m_names.clear();
    m_object.swap(object);
    const QJsonObject& members = m_object;
    for (auto member = members.begin(); member != members.end(); ++member) {
        const QString name = member.key();
        m_names[name] = name; // keeps the key of an earlier spelling
    }
}

void NoCaseJsonObject::addAlias(const QString& name, const QString& alias)
{
    const auto found = m_names.find(name);
    if (found != m_names.end()) {
        m_names.emplace(alias, found->second);
    }
}

bool NoCaseJsonObject::contains(const QString& name) const
{
    return m_names.find(name) != m_names.end();
}

QJsonValue NoCaseJsonObject::value(const QString& name) const
{
    const auto found = m_names.find(name);
    return found == m_names.end() ? QJsonValue(QJsonValue::Null) : value(found);
}

QJsonValue NoCaseJsonObject::value(iterator name) const
{
    return m_object.value(name->second);
}

QString jsonToLocalizedString(const QJsonValue& value, const QLocale& locale)
{
    if (!value.isObject()) {
        return value.toString();
    }
    const QJsonObject translations = value.toObject();
    if (translations.isEmpty()) {
        return QString();
    }
    const QStringList languages = base::uiLanguages(locale);
    for (const QString& language : languages) {
        QStringList parts = language.toLower().split(QLatin1Char('-'));
        for (; !parts.isEmpty(); parts.removeLast()) {
            const auto found = translations.find(parts.join(QLatin1Char('_')));
            if (found != translations.end()) {
                return found.value().toString();
            }
        }
    }
    return translations.begin().value().toString();
}

} // namespace veltor::utils
