#include "ProgressWindow.h"

#include "Checksum.h"

#include <QtWidgets/QFileDialog>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

using veltor::concurrent::TaskListModel;

namespace {

constexpr int barEnd = 1000;

} // namespace

TaskRow::TaskRow(TaskListModel& model, const QModelIndex& index)
    : m_model(model)
    , m_index(index)
    , m_title(new QLabel)
    , m_bar(new QProgressBar)
    , m_status(new QLabel)
    , m_pause(new QPushButton)
    , m_cancel(new QPushButton)
{
    m_pause->setObjectName(QStringLiteral("pause"));
    m_cancel->setObjectName(QStringLiteral("cancel"));
    m_status->setObjectName(QStringLiteral("status"));
    m_status->setWordWrap(true);
    m_status->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);

    auto* layout = new QGridLayout(this);
    layout->addWidget(m_title, 0, 0, 1, 3);
    layout->addWidget(m_bar, 1, 0);
    layout->addWidget(m_pause, 1, 1);
    layout->addWidget(m_cancel, 1, 2);
    layout->addWidget(m_status, 2, 0, 1, 3);
    layout->setColumnStretch(0, 1);
    connect(m_pause, &QPushButton::clicked, this, &TaskRow::pauseOrResume);
    connect(m_cancel, &QPushButton::clicked, this, &TaskRow::cancelOrDismiss);
    update();
}

void TaskRow::update()
{
    using Model = TaskListModel;
    //! [row]
    const auto state = m_index.data(Model::StateRole).value<Model::State>();
    const bool ended = state >= Model::State::Done;
    const QVariant fraction = m_index.data(Model::FractionRole);
    m_title->setText(m_index.data(Model::TitleRole).toString());
    //! [row]
    m_bar->setRange(0, fraction.isValid() || ended ? barEnd : 0);
    m_bar->setValue(int(fraction.toDouble() * barEnd));
    m_bar->setEnabled(state == Model::State::Done || !ended);

    QStringList status{m_index.data(Model::StateTextRole).toString()};
    const QString error = m_index.data(Model::ErrorRole).toString();
    if (!error.isEmpty()) {
        status << error;
    } else if (!ended) {
        status << m_index.data(Model::TextRole).toString()
               << m_index.data(Model::RemainingTextRole).toString();
    }
    status.removeAll(QString());
    m_status->setText(status.join(error.isEmpty() ? QStringLiteral(" — ") : QStringLiteral("\n")));
    m_status->setStyleSheet(state == Model::State::Failed ? QStringLiteral("color: #b00020") : QString());

    const bool paused = m_index.data(Model::ResumableRole).toBool();
    m_pause->setText(paused ? tr("Продолжить") : tr("Пауза"));
    m_pause->setEnabled(paused || m_index.data(Model::PausableRole).toBool());
    m_pause->setVisible(!ended);
    m_cancel->setText(ended ? tr("Убрать") : tr("Отмена"));
    m_cancel->setEnabled(ended || m_index.data(Model::CancelableRole).toBool());
}

void TaskRow::pauseOrResume()
{
    if (m_index.data(TaskListModel::ResumableRole).toBool()) {
        m_model.continueWork(m_index.row());
    } else {
        m_model.pause(m_index.row());
    }
}

void TaskRow::cancelOrDismiss()
{
    //! [buttons]
    m_model.cancel(m_index.row());
    m_model.dismiss(m_index.row());
    //! [buttons]
}

ProgressWindow::ProgressWindow()
    : m_layout(new QVBoxLayout(this))
    , m_pool(2)
{
    setWindowTitle(tr("Фоновые задачи"));
    auto* add = new QPushButton(tr("Контрольные суммы файлов..."));
    connect(add, &QPushButton::clicked, this, &ProgressWindow::chooseFiles);
    m_layout->addWidget(add);
    m_layout->addStretch();
    resize(640, 320);

    //! [kept]
    for (const auto end :
         {TaskListModel::State::Done, TaskListModel::State::Canceled, TaskListModel::State::Failed}) {
        m_model.setKept(end, true); // until the user takes it away
    }
    using Model = QAbstractItemModel;
    connect(&m_model, &Model::rowsInserted, this,
            [this](const QModelIndex&, int first, int last) { insertRows(first, last); });
    connect(&m_model, &Model::rowsRemoved, this,
            [this](const QModelIndex&, int first, int last) { removeRows(first, last); });
    connect(&m_model, &Model::dataChanged, this, [this](const QModelIndex& first, const QModelIndex& last) {
        updateRows(first.row(), last.row());
    });
    //! [kept]
}

void ProgressWindow::insertRows(int first, int last)
{
    for (int row = first; row <= last; ++row) {
        auto* widget = new TaskRow(m_model, m_model.index(row));
        m_rows.insert(m_rows.begin() + row, widget);
        m_layout->insertWidget(row + 1, widget); // below the button
    }
}

void ProgressWindow::removeRows(int first, int last)
{
    for (int row = first; row <= last; ++row) {
        m_rows[std::size_t(row)]->deleteLater(); // its own button may have been pressed
        m_rows[std::size_t(row)]->hide();
    }
    m_rows.erase(m_rows.begin() + first, m_rows.begin() + last + 1);
}

void ProgressWindow::updateRows(int first, int last)
{
    for (int row = first; row <= last; ++row) {
        m_rows[std::size_t(row)]->update();
    }
}

void ProgressWindow::addChecksums(const QString& title, const QStringList& paths)
{
    //! [add]
    auto* group = makeChecksums(paths, [](const QString& path, const QByteArray& sum) {
        qInfo("%s  %s", sum.constData(), qUtf8Printable(path));
    });
    m_model.add(*group, title);
    runGroup(m_pool, group); // the pool owns it from here on
    //! [add]
}

void ProgressWindow::chooseFiles()
{
    const QStringList paths = QFileDialog::getOpenFileNames(this);
    if (!paths.isEmpty()) {
        addChecksums(tr("Файлов: %1").arg(paths.size()), paths);
    }
}
