#include <veltor/utils/SignalingIteratorBase.h>

namespace veltor::utils {

SignalingIteratorBase::SignalingIteratorBase(QObject* parent)
    : QObject(parent)
{}

SignalingIteratorBase::~SignalingIteratorBase() = default;

} // namespace veltor::utils
