// The handler's stack for threads of the application.

#include <veltor/utils/CrashHandlerStack.h>

#include "platform/HandlerStack.h"

namespace veltor::utils {

class CrashHandlerStack::Private : public platform::HandlerStack
{};

CrashHandlerStack::CrashHandlerStack()
    : d(std::make_unique<Private>())
{}

CrashHandlerStack::~CrashHandlerStack() = default;

bool CrashHandlerStack::isActive() const
{
    return d->isActive();
}

} // namespace veltor::utils
