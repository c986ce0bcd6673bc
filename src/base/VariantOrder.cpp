// The order that Qt 5 gives variants, for a Qt that orders only those of one type.

#include "base/QtDifferences.h"

#include <QtCore/QDateTime>

#include <algorithm>
#include <cmath>

namespace veltor::base {
namespace {

bool isReal(int type)
{
    return type == QMetaType::Double || type == QMetaType::Float;
}

bool isNumber(int type)
{
    switch (type) {
    case QMetaType::Bool:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return true;
    default:
        return false;
    }
}

template <typename T>
int orderAs(T a, T b)
{
    return a < b ? -1 : static_cast<int>(a != b);
}

/// Reals that differ in their last digits alone are equal.
int realOrder(double a, double b)
{
    const bool isFuzzy = std::isfinite(a) && std::isfinite(b) && a != 0.0 && b != 0.0;
    return isFuzzy && qFuzzyCompare(a, b) ? 0 : orderAs(a, b);
}

/// By the promotions of C++, but all reals as double.
int numberOrder(const QVariant& a, const QVariant& b)
{
    const int types[] = {a.userType(), b.userType()};
    const auto anyIs = [&types](auto... candidates) {
        return ((types[0] == candidates || types[1] == candidates) || ...);
    };
    if (isReal(types[0]) || isReal(types[1])) {
        return realOrder(a.toDouble(), b.toDouble());
    }
    constexpr bool isLongLonger = sizeof(long) > sizeof(int);
    const qlonglong first = a.toLongLong();
    const qlonglong second = b.toLongLong();
    if (anyIs(QMetaType::ULongLong) || (isLongLonger && anyIs(QMetaType::ULong))) {
        return orderAs(static_cast<qulonglong>(first), static_cast<qulonglong>(second));
    }
    if (anyIs(QMetaType::LongLong) || (isLongLonger && anyIs(QMetaType::Long))) {
        return orderAs(first, second);
    }
    if (anyIs(QMetaType::UInt, QMetaType::ULong)) {
        return orderAs(static_cast<uint>(first), static_cast<uint>(second));
    }
    return orderAs(first, second);
}

bool areEqual(const QVariant& a, const QVariant& b);

template <typename Map>
bool areMapsEqual(const Map& a, const Map& b)
{
    return a.size() == b.size() && std::all_of(a.keyBegin(), a.keyEnd(), [&](const QString& key) {
               return b.contains(key) && areEqual(a.value(key), b.value(key));
           });
}

/// Of one type. What holds variants is compared by them.
bool areAlike(const QVariant& a, const QVariant& b)
{
    switch (a.userType()) {
    case QMetaType::QVariantList: {
        const QVariantList first = a.toList();
        const QVariantList second = b.toList();
        return std::equal(first.begin(), first.end(), second.begin(), second.end(), &areEqual);
    }
    case QMetaType::QVariantMap:
        return areMapsEqual(a.toMap(), b.toMap());
    case QMetaType::QVariantHash:
        return areMapsEqual(a.toHash(), b.toHash());
    default:
        return a == b;
    }
}

bool areEqual(const QVariant& a, const QVariant& b)
{
    if (isNumber(a.userType()) && isNumber(b.userType())) {
        return numberOrder(a, b) == 0;
    }
    if (a.metaType() == b.metaType()) {
        return areAlike(a, b);
    }
    const bool isToFirst = b.canConvert(a.metaType());
    QVariant changed = isToFirst ? b : a;
    const QVariant& kept = isToFirst ? a : b;
    return changed.convert(kept.metaType()) && areAlike(kept, changed);
}

void convertWherePossible(QVariant& value, QMetaType type)
{
    QVariant converted = value;
    if (value.metaType() != type && converted.canConvert(type) && converted.convert(type)) {
        value.swap(converted);
    }
}

/// Of different values of one type; 0 for one that is ordered by its text.
int orderInType(const QVariant& a, const QVariant& b)
{
    const int type = a.userType();
    if (type >= QMetaType::User) {
        const QPartialOrdering own = a.metaType().compare(a.constData(), b.constData());
        return own == QPartialOrdering::Less ? -1 : static_cast<int>(own == QPartialOrdering::Greater);
    }
    switch (type) {
    case QMetaType::QDate:
        return a.toDate() < b.toDate() ? -1 : 1;
    case QMetaType::QTime:
        return a.toTime() < b.toTime() ? -1 : 1;
    case QMetaType::QDateTime:
        return a.toDateTime() < b.toDateTime() ? -1 : 1;
    case QMetaType::QStringList:
        return a.toStringList() < b.toStringList() ? -1 : 1;
    default:
        return 0;
    }
}

} // namespace

int order(const QVariant& a, const QVariant& b)
{
    if (isNumber(a.userType()) && isNumber(b.userType())) {
        return numberOrder(a, b);
    }
    if (areEqual(a, b)) {
        return 0;
    }
    QVariant first = a;
    QVariant second = b;
    convertWherePossible(second, a.metaType());
    convertWherePossible(first, second.metaType());
    const bool isOneType = first.metaType() == second.metaType();
    if (isOneType && isNumber(first.userType())) {
        return numberOrder(first, second);
    }
    int order = isOneType ? orderInType(first, second) : 0;
    if (order == 0) {
        order = first.toString().compare(second.toString(), Qt::CaseInsensitive);
    }
    return order != 0 ? order : a.userType() < b.userType() ? -1 : 1;
}

} // namespace veltor::base
