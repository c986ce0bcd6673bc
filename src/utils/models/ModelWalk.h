#pragma once

#include <veltor/utils/ItemModelExport.h>

#include <QtCore/QObject>
#include <QtCore/QPersistentModelIndex>

#include <vector>

class QAbstractItemModel;

namespace veltor::utils {

/// Goes through the rows of a model, parents before children, and loads what the model loads on demand. Rows
/// may come and go meanwhile; any other change of the model's structure ends the walk.
class ModelWalk
{
public:
    ModelWalk(QAbstractItemModel& model, const ItemModelRules& rules);

    /// Goes to the next row that is not hidden. False at the end, and after an error.
    bool next();
    /// An item of this row; not valid when the row has gone.
    [[nodiscard]] QModelIndex index(int column) const;
    [[nodiscard]] int row() const;
    /// 0 for the rows directly below the root.
    [[nodiscard]] int depth() const;
    /// How many shown rows, this one and those directly after it, lie within this and the @p wanted - 1 next
    /// rows of the model.
    int rowsTogether(int wanted);
    /// Whether a row directly below the root has children.
    bool isTree();
    /// Of the rows directly below the root, how much is done.
    [[nodiscard]] double share() const;
    /// Empty unless the walk cannot go on.
    [[nodiscard]] const QString& error() const { return m_error; }

private:
    /// A parent whose rows are walked.
    struct Level
    {
        QPersistentModelIndex parent;
        int next = 0; ///< row; the one before is the current one, or the parent of the level below
    };

    void watch();
    void insert(const QModelIndex& parent, int first, int last);
    void remove(const QModelIndex& parent, int first, int last);
    void fail(const QString& error);
    void descend();
    bool isLost(std::size_t level) const;
    bool isHidden(int row, const QModelIndex& parent) const;
    bool hasRows(const QModelIndex& parent) const;
    bool load(const QModelIndex& parent, int row);

    QAbstractItemModel& m_model;
    const ItemModelRules& m_rules;
    const bool m_hasRoot;
    std::vector<Level> m_levels;
    bool m_onRow = false; ///< the last level's current row is still there
    QString m_error;
    QObject m_receiver; ///< of the model's signals; goes first
};

} // namespace veltor::utils
