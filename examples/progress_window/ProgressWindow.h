#pragma once

#include <veltor/concurrent/TaskListModel.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include <QtCore/QPersistentModelIndex>
#include <QtWidgets/QWidget>

#include <vector>

class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

/// One row of the model: title, bar, state, the reason of a failure, and the buttons that make sense.
class TaskRow : public QWidget
{
    Q_OBJECT

public:
    TaskRow(veltor::concurrent::TaskListModel& model, const QModelIndex& index);

    /// Shows what the model says now.
    void update();

private:
    void pauseOrResume();
    void cancelOrDismiss();

    veltor::concurrent::TaskListModel& m_model;
    const QPersistentModelIndex m_index;
    QLabel* m_title;
    QProgressBar* m_bar;
    QLabel* m_status;
    QPushButton* m_pause;
    QPushButton* m_cancel;
};

/// A list of running tasks: a view of the model, which holds all that is known of them.
class ProgressWindow : public QWidget
{
    Q_OBJECT

public:
    ProgressWindow();

    /// Starts the computation of the checksums of @p paths, shown under @p title.
    void addChecksums(const QString& title, const QStringList& paths);

private:
    void chooseFiles();
    void insertRows(int first, int last);
    void removeRows(int first, int last);
    void updateRows(int first, int last);

    veltor::concurrent::TaskListModel m_model;
    QVBoxLayout* m_layout;
    std::vector<TaskRow*> m_rows;              // as in the model
    veltor::concurrent::TaskThreadPool m_pool; // goes first: it stops the tasks
};
