#pragma once

#include <QtCore/QAbstractItemModel>
#include <QtCore/QHash>
#include <QtCore/QSize>
#include <QtCore/QVariant>

#include <memory>
#include <vector>

namespace veltor::test {

/// A row of a NodeModel.
struct Node
{
    Node* parent = nullptr;
    std::vector<QVariant> values;
    std::vector<QHash<int, QVariant>> looks; ///< by column; may be shorter
    std::vector<std::unique_ptr<Node>> children;
    int loaded = 0; ///< of the children; as many as there are unless rows come on demand
};

/// A tree that shows what its nodes hold.
class NodeModel : public QAbstractItemModel
{
public:
    Node root;
    int columns = 3;
    int batch = 0;                       ///< rows that come on demand at a time; 0: all are there
    bool isDeaf = false;                 ///< promises rows and brings none
    QHash<QPair<int, int>, QSize> spans; ///< of the rows below the root

    Node& add(Node& parent, std::vector<QVariant> values)
    {
        parent.children.push_back(std::make_unique<Node>());
        Node& node = *parent.children.back();
        node.parent = &parent;
        node.values = std::move(values);
        parent.loaded = batch > 0 ? 0 : static_cast<int>(parent.children.size());
        return node;
    }
    void insert(const QModelIndex& parent, int row, std::vector<QVariant> values)
    {
        Node& above = nodeOf(parent);
        beginInsertRows(parent, row, row);
        auto node = std::make_unique<Node>();
        node->parent = &above;
        node->values = std::move(values);
        above.children.insert(above.children.begin() + row, std::move(node));
        ++above.loaded;
        endInsertRows();
    }
    void remove(const QModelIndex& parent, int row)
    {
        Node& above = nodeOf(parent);
        beginRemoveRows(parent, row, row);
        above.children.erase(above.children.begin() + row);
        --above.loaded;
        endRemoveRows();
    }

    Node& nodeOf(const QModelIndex& index) const
    {
        return index.isValid() ? *static_cast<Node*>(index.internalPointer()) : const_cast<Node&>(root);
    }
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override
    {
        return hasIndex(row, column, parent)
                   ? createIndex(row, column, nodeOf(parent).children[static_cast<std::size_t>(row)].get())
                   : QModelIndex();
    }
    QModelIndex parent(const QModelIndex& child) const override
    {
        Node* const above = nodeOf(child).parent;
        if (!above || !above->parent) {
            return {};
        }
        int row = 0;
        while (above->parent->children[static_cast<std::size_t>(row)].get() != above) {
            ++row;
        }
        return createIndex(row, 0, above);
    }
    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.column() > 0 ? 0 : nodeOf(parent).loaded;
    }
    int columnCount(const QModelIndex& = {}) const override { return columns; }
    bool hasChildren(const QModelIndex& parent = {}) const override
    {
        return parent.column() <= 0 && !nodeOf(parent).children.empty();
    }
    bool canFetchMore(const QModelIndex& parent) const override
    {
        return nodeOf(parent).loaded < static_cast<int>(nodeOf(parent).children.size());
    }
    void fetchMore(const QModelIndex& parent) override
    {
        Node& node = nodeOf(parent);
        const int end = std::min(node.loaded + batch, static_cast<int>(node.children.size()));
        if (!isDeaf && end > node.loaded) {
            beginInsertRows(parent, node.loaded, end - 1);
            node.loaded = end;
            endInsertRows();
        }
    }
    QVariant data(const QModelIndex& index, int role) const override
    {
        const Node& node = nodeOf(index);
        const auto column = static_cast<std::size_t>(index.column());
        if (role == Qt::DisplayRole) {
            return column < node.values.size() ? node.values[column] : QVariant();
        }
        return column < node.looks.size() ? node.looks[column].value(role) : QVariant();
    }
    QVariant headerData(int section, Qt::Orientation, int role) const override
    {
        return role == Qt::DisplayRole ? QVariant(QStringLiteral("H<%1>").arg(section)) : QVariant();
    }
    QSize span(const QModelIndex& index) const override
    {
        return index.parent().isValid() ? QSize(1, 1)
                                        : spans.value({index.row(), index.column()}, QSize(1, 1));
    }
};

} // namespace veltor::test
