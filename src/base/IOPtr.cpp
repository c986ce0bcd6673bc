// Owning pointers to devices, with their deleters.

#include <veltor/IOPtr.h>

namespace veltor {
namespace {

void deleteDevice(QIODevice* device)
{
    delete device;
}

} // namespace

IOPtr makeIOPtr(QIODevice* device) noexcept
{
    return {device, &deleteDevice};
}

IOPtr nullIOPtr() noexcept
{
    return makeIOPtr(nullptr);
}

} // namespace veltor
