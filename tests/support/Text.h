#pragma once

#include <QtCore/QString>

namespace veltor::test {

inline QString u(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace veltor::test
