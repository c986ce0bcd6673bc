// Where the base of signalling iterators has its meta-object.

#include <veltor/utils/SignalingIteratorBase.h>

namespace veltor::utils {

SignalingIteratorBase::SignalingIteratorBase(QObject* parent)
    : QObject(parent)
{}

SignalingIteratorBase::~SignalingIteratorBase() = default;

} // namespace veltor::utils
