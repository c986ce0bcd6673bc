#pragma once

#include <veltor/concurrent/TaskProgressHandler.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include <QtWidgets/QWidget>

#include <memory>

class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

/// One running task: bar, message, pause, resume, cancel, error text. It knows the task by its handler.
class TaskRow : public QWidget
{
    Q_OBJECT

public:
    TaskRow(const QString& title, std::shared_ptr<veltor::concurrent::TaskProgressHandler> handler);

private:
    void showEnd(const QString& text);
    void showError(const veltor::err::ConcurrentNestedException& error);

    const std::shared_ptr<veltor::concurrent::TaskProgressHandler> m_handler;
    QLabel* m_title;
    QProgressBar* m_bar;
    QLabel* m_message;
    QPushButton* m_pause;
    QPushButton* m_resume;
    QPushButton* m_cancel;
};

/// A list of running tasks.
class ProgressWindow : public QWidget
{
    Q_OBJECT

public:
    ProgressWindow();

    /// Starts the computation of the checksums of @p paths, shown under @p title.
    /// @return the new row's handler
    std::shared_ptr<veltor::concurrent::TaskProgressHandler> addChecksum(const QString& title,
                                                                         const QStringList& paths);

private:
    void chooseFiles();

    QVBoxLayout* m_rows;
    veltor::concurrent::TaskThreadPool m_pool; // goes first: it stops the tasks that rows still watch
};
