// The register of base types.

#include <veltor/BaseTypeInfo.h>

std::unordered_map<std::type_index, std::type_index> BaseTypeInfo::baseTypeMap;
QReadWriteLock BaseTypeInfo::lock;

std::type_index BaseTypeInfo::baseType(std::type_index type)
{
    const QReadLocker locker(&lock);
    const auto found = baseTypeMap.find(type);
    return found != baseTypeMap.end() ? found->second : type;
}
