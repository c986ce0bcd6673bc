// Goes through the rows of a model that may change meanwhile.
#include "utils/models/ModelWalk.h"

#include <QtCore/QAbstractItemModel>
#include <QtCore/QAbstractProxyModel>
#include <QtCore/QCoreApplication>

#include <algorithm>
#include <utility>

namespace veltor::utils {
namespace {

QString changedText()
{
    return QCoreApplication::translate("veltor::utils::ItemModelExport",
                                       "таблица изменилась во время записи");
}

/// Rows that are there, filters apart: a filter may hide all that loading brings.
int loadedRows(const QAbstractItemModel* model, QModelIndex parent)
{
    while (const auto* const proxy = qobject_cast<const QAbstractProxyModel*>(model)) {
        if (!proxy->sourceModel()) {
            break;
        }
        parent = proxy->mapToSource(parent);
        model = proxy->sourceModel();
    }
    return model->rowCount(parent);
}

} // namespace

ModelWalk::ModelWalk(QAbstractItemModel& model, const ItemModelRules& rules)
    : m_model(model)
    , m_rules(rules)
    , m_hasRoot(rules.root.isValid())
{
    m_levels.push_back({rules.root});
    watch();
}

void ModelWalk::watch()
{
    using Model = QAbstractItemModel;
    const auto changed = [this] { fail(changedText()); };
    QObject::connect(&m_model, &Model::rowsInserted, &m_receiver,
                     [this](const QModelIndex& parent, int first, int last) { insert(parent, first, last); });
    QObject::connect(&m_model, &Model::rowsRemoved, &m_receiver,
                     [this](const QModelIndex& parent, int first, int last) { remove(parent, first, last); });
    QObject::connect(&m_model, &Model::rowsMoved, &m_receiver, changed);
    QObject::connect(&m_model, &Model::columnsInserted, &m_receiver, changed);
    QObject::connect(&m_model, &Model::columnsRemoved, &m_receiver, changed);
    QObject::connect(&m_model, &Model::columnsMoved, &m_receiver, changed);
    QObject::connect(&m_model, &Model::layoutChanged, &m_receiver, changed);
    QObject::connect(&m_model, &Model::modelReset, &m_receiver, changed);
    QObject::connect(&m_model, &QObject::destroyed, &m_receiver, changed);
}

void ModelWalk::insert(const QModelIndex& parent, int first, int last)
{
    for (std::size_t i = 0; i < m_levels.size(); ++i) {
        Level& level = m_levels[i];
        if (!isLost(i) && level.parent == parent && first < level.next) {
            level.next += last - first + 1;
        }
    }
}

void ModelWalk::remove(const QModelIndex& parent, int first, int last)
{
    for (std::size_t i = 0; i < m_levels.size(); ++i) {
        Level& level = m_levels[i];
        if (isLost(i)) {
            m_onRow = false;
        } else if (level.parent == parent) {
            const int current = level.next - 1;
            m_onRow = m_onRow && (i + 1 < m_levels.size() || current < first || current > last);
            level.next -= std::max(0, std::min(last + 1, level.next) - first);
        }
    }
}

void ModelWalk::fail(const QString& error)
{
    if (m_error.isEmpty()) {
        m_error = error;
    }
}

bool ModelWalk::isLost(std::size_t level) const
{
    // Once its row is gone, an index says the same as one of the whole model.
    return (level > 0 || m_hasRoot) && !m_levels[level].parent.isValid();
}

bool ModelWalk::isHidden(int row, const QModelIndex& parent) const
{
    return m_rules.isRowHidden && m_rules.isRowHidden(row, parent);
}

bool ModelWalk::hasRows(const QModelIndex& parent) const
{
    return parent.isValid() && (m_model.hasChildren(parent) || m_model.canFetchMore(parent));
}

/// Whether there is such a row, which is loaded if need be.
bool ModelWalk::load(const QModelIndex& parent, int row)
{
    const QPersistentModelIndex kept = parent; // what is given may change with it
    const bool isRoot = !kept.isValid();
    while (m_error.isEmpty() && row >= m_model.rowCount(kept)) {
        if (isRoot == kept.isValid() || !m_model.canFetchMore(kept)) {
            return false;
        }
        const int before = loadedRows(&m_model, kept);
        m_model.fetchMore(kept);
        if (m_error.isEmpty() && loadedRows(&m_model, kept) == before && m_model.canFetchMore(kept)) {
            fail(QCoreApplication::translate("veltor::utils::ItemModelExport",
                                             "источник таблицы не передал всех строк"));
        }
    }
    return m_error.isEmpty();
}

void ModelWalk::descend()
{
    if (!std::exchange(m_onRow, false) || !m_rules.children) {
        return;
    }
    const Level& level = m_levels.back();
    const QModelIndex current = m_model.index(level.next - 1, 0, level.parent);
    if (hasRows(current)) {
        m_levels.push_back({current});
    }
}

bool ModelWalk::next()
{
    if (m_error.isEmpty()) {
        descend();
    }
    while (!m_levels.empty() && m_error.isEmpty()) {
        if (isLost(m_levels.size() - 1)) {
            if (m_levels.size() == 1) {
                fail(changedText());
                return false;
            }
            m_levels.pop_back();
            continue;
        }
        // A copy: hidden rows, counts and loading are others' code, in which rows may come and go.
        const QPersistentModelIndex parent = m_levels.back().parent;
        if (!load(parent, m_levels.back().next)) {
            if (m_error.isEmpty() && m_levels.size() > 1) {
                m_levels.pop_back();
                continue;
            }
            return false;
        }
        const int row = m_levels.back().next++;
        m_onRow = true;
        if (!isHidden(row, parent) && m_onRow) {
            return m_error.isEmpty();
        }
        m_onRow = false;
    }
    return false;
}

QModelIndex ModelWalk::index(int column) const
{
    return m_onRow && m_error.isEmpty() ? m_model.index(row(), column, m_levels.back().parent)
                                        : QModelIndex();
}

int ModelWalk::row() const
{
    return m_levels.back().next - 1;
}

int ModelWalk::depth() const
{
    return static_cast<int>(m_levels.size()) - 1;
}

int ModelWalk::rowsTogether(int wanted)
{
    int together = 1;
    for (int i = 1; i < wanted; ++i) {
        const QPersistentModelIndex parent = m_levels.back().parent;
        const int at = row() + i;
        if ((m_rules.children && hasRows(m_model.index(at - 1, 0, parent))) || !load(parent, at)) {
            break;
        }
        together += isHidden(at, parent) ? 0 : 1;
    }
    return together;
}

bool ModelWalk::isTree()
{
    const bool isFlat = qobject_cast<const QAbstractTableModel*>(&m_model) ||
                        qobject_cast<const QAbstractListModel*>(&m_model);
    const QPersistentModelIndex root = m_rules.root;
    for (int i = 0; m_rules.children && !isFlat && load(root, i); ++i) {
        if (!isHidden(i, root) && hasRows(m_model.index(i, 0, root))) {
            return true;
        }
    }
    return false;
}

double ModelWalk::share() const
{
    if (m_levels.empty() || !m_error.isEmpty()) {
        return 0.0;
    }
    const int rows = m_model.rowCount(m_levels.front().parent);
    return rows > 0 ? std::min(1.0, static_cast<double>(m_levels.front().next) / rows) : 1.0;
}

} // namespace veltor::utils
