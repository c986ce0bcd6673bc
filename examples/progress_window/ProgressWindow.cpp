#include "ProgressWindow.h"

#include "ChecksumTask.h"

#include <QtWidgets/QFileDialog>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

#include <exception>
#include <utility>

using veltor::concurrent::ProgressHandler;
using veltor::concurrent::TaskProgressHandler;

TaskRow::TaskRow(const QString& title, std::shared_ptr<TaskProgressHandler> handler)
    : m_handler(std::move(handler))
    , m_title(new QLabel(title))
    , m_bar(new QProgressBar)
    , m_message(new QLabel(tr("В очереди")))
    , m_pause(new QPushButton(tr("Пауза")))
    , m_resume(new QPushButton(tr("Продолжить")))
    , m_cancel(new QPushButton(tr("Отмена")))
{
    m_pause->setObjectName(QStringLiteral("pause"));
    m_resume->setObjectName(QStringLiteral("resume"));
    m_cancel->setObjectName(QStringLiteral("cancel"));
    m_message->setObjectName(QStringLiteral("message"));
    m_resume->setEnabled(false);
    m_bar->setRange(0, 1000);

    auto* layout = new QGridLayout(this);
    m_message->setWordWrap(true);
    layout->addWidget(m_title, 0, 0, 1, 4);
    layout->addWidget(m_message, 2, 0, 1, 4);
    layout->addWidget(m_bar, 1, 0);
    layout->addWidget(m_pause, 1, 1);
    layout->addWidget(m_resume, 1, 2);
    layout->addWidget(m_cancel, 1, 3);
    layout->setColumnStretch(0, 1);

    // The handler emits in the task's thread; these connections deliver here.
    TaskProgressHandler* source = m_handler.get();
    connect(source, &ProgressHandler::messageChanged, m_message, &QLabel::setText);
    connect(source, &ProgressHandler::progressValueChanged, this,
            [this](double value) { m_bar->setValue(int(value * 10)); });
    connect(source, &ProgressHandler::paused, this, [this] {
        m_pause->setEnabled(false);
        m_resume->setEnabled(true);
    });
    connect(source, &ProgressHandler::successful, this, [this] { showEnd(tr("Готово")); });
    connect(source, &ProgressHandler::canceled, this, [this] { showEnd(tr("Отменено")); });
    connect(source, &ProgressHandler::error, this, &TaskRow::showError);
    connect(m_pause, &QPushButton::clicked, this, [this] { m_handler->pause(); });
    connect(m_resume, &QPushButton::clicked, this, [this] {
        m_pause->setEnabled(true);
        m_resume->setEnabled(false);
        m_handler->continueWork();
    });
    connect(m_cancel, &QPushButton::clicked, this, [this] { m_handler->cancel(); });
}

void TaskRow::showEnd(const QString& text)
{
    if (m_cancel->isEnabled()) { // an error's text stays when the cancellation that follows it arrives
        m_message->setText(text);
    }
    for (QPushButton* button : {m_pause, m_resume, m_cancel}) {
        button->setEnabled(false);
    }
}

void TaskRow::showError(const veltor::err::ConcurrentNestedException& error)
{
    try {
        error.raise();
    } catch (const std::exception& reason) {
        m_message->setStyleSheet(QStringLiteral("color: #b00020"));
        showEnd(QString::fromUtf8(reason.what()));
    }
}

ProgressWindow::ProgressWindow()
    : m_rows(new QVBoxLayout)
    , m_pool(2)
{
    setWindowTitle(tr("Фоновые задачи"));
    auto* add = new QPushButton(tr("Контрольные суммы файлов..."));
    connect(add, &QPushButton::clicked, this, &ProgressWindow::chooseFiles);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(add);
    layout->addLayout(m_rows);
    layout->addStretch();
    resize(640, 320);
}

std::shared_ptr<TaskProgressHandler> ProgressWindow::addChecksum(const QString& title,
                                                                 const QStringList& paths)
{
    auto* task = new ChecksumTask(paths);
    auto handler = task->progressHandler();
    m_rows->addWidget(new TaskRow(title, handler));
    m_pool.start(task);
    return handler;
}

void ProgressWindow::chooseFiles()
{
    const QStringList paths = QFileDialog::getOpenFileNames(this);
    if (!paths.isEmpty()) {
        addChecksum(tr("Файлов: %1").arg(paths.size()), paths);
    }
}
