#pragma once

#include <veltor/Export.h>
#include <veltor/concurrent/ProgressHandler.h>

#include <QtCore/QAbstractListModel>
#include <QtCore/QString>

#include <functional>
#include <memory>

namespace veltor::concurrent {

class Task;

/// A presenter's list of running operations: what a progress window or a status bar shows.
///
/// It looks at the handlers a few times a second instead of getting an event for each of their writes, so
/// that work may report a million values. Texts, verdicts and requests are noted in the threads that emit
/// them, and shown at the next look. A row appears when its operation has lasted for a while, and stays for a
/// while, so that nothing flickers; of what has ended, failures stay until they are dismissed.
///
/// Threads: owner thread only, which runs an event loop. The handlers may live anywhere; the model keeps
/// them, and is no observer that their work could wait for.
class VELTOR_UTILS_EXPORT TaskListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    /// What a row is about, besides Qt::DisplayRole (title and text), Qt::ToolTipRole (the error, or the
    /// text) and Qt::EditRole (nothing).
    enum Role : int
    {
        TitleRole = Qt::UserRole + 1, ///< QString, as given to add(), or by setWindowTitle()
        TextRole,                     ///< QString: the last message
        StateRole,                    ///< State
        StateTextRole,                ///< QString: the state in the user's words
        FractionRole,                 ///< double, 0 to 1; invalid when the scale or the value is none.
                                      ///< After a cancellation or a failure: how far it had come
        ValueRole,                    ///< double, in the handler's scale
        RateRole,                     ///< double: scale units a second, smoothed; invalid when unknown
        RemainingMsRole,              ///< qint64: milliseconds; invalid when unknown
        RemainingTextRole,            ///< QString in the user's words; empty when unknown
        ErrorRole,                    ///< QString: the reason of a failure, nested ones on further lines
        CancelableRole,               ///< bool: cancel() makes sense now
        PausableRole,                 ///< bool: pause() makes sense now
        ResumableRole,                ///< bool: continueWork() makes sense now
        IdRole,                       ///< QUuid: ProgressHandler::id()
    };
    Q_ENUM(Role)

    /// Where an operation stands.
    enum class State : int
    {
        Waiting,   ///< not begun
        Running,   ///< under way
        Paused,    ///< stopped by a pause
        Canceling, ///< asked to cancel, not ended
        Done,      ///< ended, with success or without a verdict
        Canceled,  ///< ended by a cancellation
        Failed,    ///< ended by an error
    };
    Q_ENUM(State)

    /// What the user may do with an operation.
    enum Ability : int
    {
        Nothing = 0x0, ///< it can be watched alone
        Cancel = 0x1,  ///< cancel
        Pause = 0x2,   ///< pause and continue; of a task's handler only
    };
    Q_DECLARE_FLAGS(Abilities, Ability)

    /// An empty list; 10 looks a second, rows appear after 500 ms and stay for 1,000 after the end, failed
    /// ones until they are dismissed.
    explicit TaskListModel(QObject* parent = nullptr);
    ~TaskListModel() override;

    /// Follows the operation of @p handler from now on. Add it before it is started: signals from before
    /// are not repeated.
    /// @throws err::NullArgument when @p handler is null
    void add(const ProgressHandlerPtr& handler, const QString& title, Abilities abilities = Cancel);
    /// The same for a task, which tells what it heeds; before it is handed over.
    void add(const Task& task, const QString& title);

    /// How often the model looks, 1 to 60 times a second.
    void setSamplesPerSecond(int samples);
    /// How long an operation lasts before its row appears; 0 for at once. A request of its handler to show or
    /// hide it goes before. One that has ended by then is never shown, unless rows of its state are kept.
    void setShowDelay(int ms);
    /// How long a row stays when its operation has ended, so that its end can be read.
    void setLeastShown(int ms);
    /// Whether rows that have ended in @p state, one of the last three, stay until they are dismissed.
    void setKept(State state, bool kept);

    /// How many operations have not ended, shown or not.
    [[nodiscard]] int activeCount() const;

    /// @name For buttons
    /// Each concerns one row, and does nothing where it makes no sense.
    /// @{
    Q_INVOKABLE void cancel(int row);
    Q_INVOKABLE void pause(int row);
    Q_INVOKABLE void continueWork(int row);
    /// Takes a row that has ended away.
    Q_INVOKABLE void dismiss(int row);
    /// Takes all rows away that have ended.
    Q_INVOKABLE void dismissEnded();
    /// @}

    /// Looks now.
    void sample();
    /// The clock by which rates and delays are measured, in milliseconds that only grow; for those who
    /// replay a recording. An empty one restores the system's.
    void setClock(std::function<qint64()> clock);

    /// The model's own functions, for views.
    /// @{
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;
    /// @}

Q_SIGNALS:
    /// activeCount() is another.
    void activeCountChanged(int count);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(TaskListModel::Abilities)

} // namespace veltor::concurrent
