// Words for states.

#include <veltor/utils/StatusTexts.h>

#include <QtCore/QObject>

namespace veltor::utils {

QString toOnOff(bool on)
{
    return toOnOff(on ? StatusCode::On : StatusCode::Off);
}

QString toOnOff(StatusCode status)
{
    switch (status) {
    case StatusCode::Off:
        return QObject::tr("Выкл.");
    case StatusCode::On:
        return QObject::tr("Вкл.");
    case StatusCode::GroupOff:
        return QObject::tr("Выкл. для группы");
    }
    return QString();
}

QString toYesNo(bool yes)
{
    return yes ? QObject::tr("Да") : QObject::tr("Нет");
}

} // namespace veltor::utils
