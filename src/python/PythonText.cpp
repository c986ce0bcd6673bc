// What needs no interpreter: literals and class names.

#include <veltor/python/PythonBridge.h>

#include <QtCore/QMetaObject>
#include <QtCore/QObject>

namespace veltor::python {

QString makePythonStringLiteral(const QString& s)
{
    const QLatin1String quotes("\"\"\"");
    return QLatin1Char('r') + quotes + s + quotes;
}

QStringList getHierarchy(const QObject* obj)
{
    QStringList names;
    for (const QMetaObject* type = obj ? obj->metaObject() : nullptr; type; type = type->superClass()) {
        names << QString::fromUtf8(type->className()).section(QStringLiteral("::"), -1);
    }
    return names;
}

} // namespace veltor::python
