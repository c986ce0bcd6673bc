#pragma once

#include <QtCore/qglobal.h>

namespace veltor::utils::journal {

/// Bytes bound for an offset of the journal; somebody else's bytes.
struct Write
{
    quint64 offset;
    const char* data;
    qint64 size;
};

} // namespace veltor::utils::journal
