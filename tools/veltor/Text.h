#pragma once

#include <QtCore/QCoreApplication>

namespace veltor::tool {

/// The translation context of the tool's own texts: Text::tr("...").
class Text
{
    Q_DECLARE_TR_FUNCTIONS(veltor)
};

} // namespace veltor::tool
