// The order of variants is Qt's.
#include <veltor/utils/VariantCompare.h>

#include "base/QtDifferences.h"

namespace veltor::utils {

int compare(const QVariant& a, const QVariant& b)
{
    return base::order(a, b);
}

} // namespace veltor::utils
