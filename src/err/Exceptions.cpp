// The messages of the exception family.

#include <veltor/err/Exceptions.h>

#include <QtCore/QObject>

#include <string>

namespace veltor::err {
namespace {

std::string utf8(const QString& message)
{
    return message.toStdString();
}

QString className(const QObject* object)
{
    return object ? QString::fromUtf8(object->metaObject()->className()) : QStringLiteral("NULL");
}

QString joined(const QStringList& expected)
{
    return expected.isEmpty() ? QObject::tr("иное") : expected.join(QLatin1Char(','));
}

} // namespace

FunctionReturnsErrorCode::FunctionReturnsErrorCode(const QString& function, const QString& code,
                                                   const QString& details)
    : std::logic_error(
          utf8(QObject::tr("Функция %1 возвращает %2").arg(function, code) + QLatin1String(". ") + details))
{}

FunctionReturnsErrorCode::FunctionReturnsErrorCode(const QString& function, int code, const QString& details)
    : FunctionReturnsErrorCode(function, QString::number(code, 10), details)
{}

CouldNotInitializeObject::CouldNotInitializeObject(const QString& object, const QString& reason)
    : std::runtime_error(
          utf8(QObject::tr("Не удалось инициализировать объект ") + object + QLatin1String(". ") + reason))
{}

UnexpectedType::UnexpectedType(const QString& actual, const QStringList& expected)
    : std::logic_error(
          utf8(QObject::tr("Неизвестный тип данных '%1', ожидается '%2'").arg(actual, joined(expected))))
{}

UnexpectedType::UnexpectedType(const QString& actual, const QString& expected)
    : UnexpectedType(actual, QStringList{expected})
{}

UnexpectedType::UnexpectedType(const QObject* object, const QStringList& expected)
    : UnexpectedType(className(object), expected)
{}

UnexpectedType::UnexpectedType(const QObject* object, const QString& expected)
    : UnexpectedType(className(object), expected)
{}

UnexpectedValue::UnexpectedValue(const QString& name, const QVariant& value)
    : std::out_of_range(
          utf8(QObject::tr("Величина %1 содержит недопустимое значение %2").arg(name, value.toString())))
{}

UnsupportedOperation::UnsupportedOperation(const QString& details)
    : std::logic_error(utf8(QObject::tr("Неподдерживаемая операция. %1").arg(details)))
{}

NotImplementedOperation::NotImplementedOperation(const QString& what)
    : std::logic_error(utf8(QObject::tr("Не реализовано %1").arg(what)))
{}

OperationAborted::OperationAborted(const QString& details)
    : std::logic_error(utf8(QObject::tr("Операция прервана. %1").arg(details)))
{}

EofException::EofException(const QString& message)
    : std::runtime_error(utf8(message))
{}

OutOfRange::OutOfRange(int index)
    : std::out_of_range(utf8(QObject::tr("Индекс %1 вышел за пределы").arg(index)))
{}

NullArgument::NullArgument(const QString& name)
    : std::invalid_argument(utf8(QObject::tr("Не задан аргумент %1").arg(name)))
{}

} // namespace veltor::err
