#pragma once

#include <veltor/Export.h>

#include <QtCore/QReadWriteLock>

#include <typeindex>
#include <unordered_map>

/// The process's register of types and the base types they stand for. Modules enter their types
/// themselves, holding the lock for writing:
///
///     const QWriteLocker lock(&BaseTypeInfo::lock);
///     BaseTypeInfo::baseTypeMap.emplace(typeid(Road), typeid(Line));
class VELTOR_UTILS_EXPORT BaseTypeInfo
{
public:
    /// From a type to the one it stands for.
    static std::unordered_map<std::type_index, std::type_index> baseTypeMap;
    /// Guards baseTypeMap; not recursive.
    static QReadWriteLock lock;

    /// The base type registered for @p type, one step up; @p type itself when there is none. Thread-safe.
    [[nodiscard]] static std::type_index baseType(std::type_index type);
};
