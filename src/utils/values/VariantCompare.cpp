#include <veltor/utils/VariantCompare.h>

namespace veltor::utils {
namespace {

/// Qt keeps its comparison to derived classes; one call of it tells more than its operators do.
struct Comparable : QVariant
{
    using QVariant::compare;
};

} // namespace

int compare(const QVariant& a, const QVariant& b)
{
    return (a.*&Comparable::compare)(b);
}

} // namespace veltor::utils
