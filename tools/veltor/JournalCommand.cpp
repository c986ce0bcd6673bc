#include "Command.h"

namespace veltor::tool {

int runJournal(const QStringList&)
{
    throw UsageError(QStringLiteral("veltor journal"));
}

} // namespace veltor::tool
