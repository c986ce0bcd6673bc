#pragma once

#include <veltor/Export.h>

#include <QtCore/QObject>

namespace veltor::utils {

/// What iterators that report their progress have in common. Threads: as for any QObject.
class VELTOR_UTILS_EXPORT SignalingIteratorBase : public QObject
{
    Q_OBJECT

public:
    /// Nothing has moved.
    explicit SignalingIteratorBase(QObject* parent = nullptr);
    ~SignalingIteratorBase() override;

Q_SIGNALS:
    /// The iterator went on by @p count items.
    void moved(int count);

public Q_SLOTS:
    /// Ends the iteration as soon as the iterator can.
    virtual void abort() = 0;
};

} // namespace veltor::utils
