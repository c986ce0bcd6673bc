// Handlers by the type of a value: the registry, the table made of it for look-ups, and the calls.

#include <veltor/utils/AnyHandlerDispatcher.h>

#include "HandlerNode.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace veltor::utils {

struct AnyHandlerDispatcher::Node : HandlerNode
{
    Node(std::type_index itsType, Function function)
        : HandlerNode(std::move(function))
        , type(itsType)
    {}

    const std::type_index type; ///< void: any other
};

namespace {

using InAny = const void* (*)(const std::any& any);
using Sink = void (*)(void* context, const void* base);
using ToBase = void (*)(const void* value, Sink sink, void* context);
using Path = std::vector<ToBase>;

/// A value on its way to a base, and then to a handler.
struct Way
{
    const Path& path;
    std::size_t step;
    HandlerNode& node;
    bool isTaken;

    static void go(void* context, const void* value)
    {
        Way& way = *static_cast<Way*>(context);
        if (way.step == way.path.size()) {
            way.isTaken = way.node.call(value);
        } else {
            way.path[way.step++](value, &Way::go, context);
        }
    }
};

bool callOnBase(HandlerNode& node, const Path& path, const void* value)
{
    if (path.empty()) {
        return node.call(value);
    }
    Way way{path, 0, node, false};
    Way::go(&way, value);
    return way.isTaken;
}

} // namespace

struct AnyHandlerDispatcher::State
{
    using NodePtr = std::shared_ptr<Node>;

    struct Edge
    {
        std::type_index base;
        ToBase toBase;
    };

    /// What is registered for a type.
    struct Registered
    {
        int metaType = 0;
        InAny inAny = nullptr;
        std::vector<NodePtr> handlers; // the elder first
        std::vector<Edge> bases;
    };
    using Registry = std::unordered_map<std::type_index, Registered>;

    /// One handler that may take a value of a type, and what leads to the handler's own type.
    struct Candidate
    {
        NodePtr node;
        Path path;
    };
    struct Row
    {
        InAny inAny = nullptr;
        std::vector<Candidate> candidates; // in the order in which they are asked
    };

    /// A look-up's view of all that is registered: made once, never changed, shared by those who look.
    struct Table
    {
        std::unordered_map<std::type_index, Row> rows;
        std::unordered_map<int, const Row*> byMetaType;
        std::vector<NodePtr> others;
    };
    using TablePtr = std::shared_ptr<const Table>;

    TablePtr current()
    {
        const std::lock_guard lock(mutex);
        if (!table) {
            table = makeTable();
        }
        return table;
    }

    Registered& registered(const Type& type)
    {
        Registered& row = registry[type.index];
        row.metaType = type.metaType != 0 ? type.metaType : row.metaType;
        row.inAny = type.inAny;
        return row;
    }

    [[nodiscard]] TablePtr makeTable() const;
    [[nodiscard]] std::vector<Candidate> candidatesOf(std::type_index type) const;
    [[nodiscard]] std::vector<NodePtr> takeAll();
    static Result ask(const Table& table, const Row* row, const void* value, const AnyValue& whole);
    void remove(const NodePtr& node);

    std::mutex mutex; // guards the rest
    Registry registry;
    std::vector<NodePtr> others; // the elder first
    TablePtr table;              // null when it is to be made anew
};

/// Breadth first, so that the nearest bases come first.
std::vector<AnyHandlerDispatcher::State::Candidate>
AnyHandlerDispatcher::State::candidatesOf(std::type_index type) const
{
    std::vector<Candidate> candidates;
    std::vector<std::pair<std::type_index, Path>> reached{{type, {}}};
    std::unordered_set<std::type_index> known{type};
    for (std::size_t i = 0; i < reached.size(); ++i) {
        const auto [index, path] = reached[i];
        const Registered& row = registry.at(index);
        std::for_each(row.handlers.rbegin(), row.handlers.rend(), [&, &way = path](const NodePtr& node) {
            candidates.push_back({node, way});
        });
        for (const Edge& edge : row.bases) {
            if (known.insert(edge.base).second) {
                reached.emplace_back(edge.base, path);
                reached.back().second.push_back(edge.toBase);
            }
        }
    }
    return candidates;
}

AnyHandlerDispatcher::State::TablePtr AnyHandlerDispatcher::State::makeTable() const
{
    auto made = std::make_shared<Table>();
    made->others.assign(others.rbegin(), others.rend());
    for (const auto& [type, registeredRow] : registry) {
        const Row& row = made->rows[type] = {registeredRow.inAny, candidatesOf(type)};
        if (registeredRow.metaType != 0) {
            made->byMetaType[registeredRow.metaType] = &row;
        }
    }
    return made;
}

std::vector<AnyHandlerDispatcher::State::NodePtr> AnyHandlerDispatcher::State::takeAll()
{
    const std::lock_guard lock(mutex);
    std::vector<NodePtr> nodes = std::move(others);
    for (auto& row : registry) {
        nodes.insert(nodes.end(), row.second.handlers.begin(), row.second.handlers.end());
    }
    registry.clear();
    others.clear();
    return nodes;
}

/// Asks the handlers of a row, then those for any other.
AnyHandlerDispatcher::Result AnyHandlerDispatcher::State::ask(const Table& table, const Row* row,
                                                              const void* value, const AnyValue& whole)
{
    if (row) {
        for (const Candidate& candidate : row->candidates) {
            if (callOnBase(*candidate.node, candidate.path, value)) {
                return {candidate.path.empty() ? By::Type : By::Base, candidate.node->type};
            }
        }
    }
    for (const NodePtr& node : table.others) {
        if (node->call(&whole)) {
            return {By::Other, typeid(void)};
        }
    }
    return {};
}

void AnyHandlerDispatcher::State::remove(const NodePtr& node)
{
    TablePtr former; // goes after the lock
    const std::lock_guard lock(mutex);
    const bool isOther = node->type == typeid(void);
    std::vector<NodePtr>& handlers = isOther ? others : registry[node->type].handlers;
    handlers.erase(std::remove(handlers.begin(), handlers.end(), node), handlers.end());
    former.swap(table);
}

AnyHandlerDispatcher::Token::Token() noexcept = default;

AnyHandlerDispatcher::Token::Token(std::shared_ptr<Node> node, std::weak_ptr<State> state) noexcept
    : m_node(std::move(node))
    , m_state(std::move(state))
{}

AnyHandlerDispatcher::Token::Token(Token&& other) noexcept = default;

AnyHandlerDispatcher::Token& AnyHandlerDispatcher::Token::operator=(Token&& other) noexcept
{
    if (this != &other) {
        reset();
        m_node = std::move(other.m_node);
        m_state = std::move(other.m_state);
    }
    return *this;
}

AnyHandlerDispatcher::Token::~Token()
{
    reset();
}

void AnyHandlerDispatcher::Token::reset() noexcept
{
    const std::shared_ptr<Node> node = std::exchange(m_node, nullptr);
    if (!node) {
        return;
    }
    const std::shared_ptr<State> state = std::exchange(m_state, {}).lock();
    node->close();
    if (state) {
        state->remove(node);
    }
    node->waitForCalls();
}

AnyHandlerDispatcher::AnyHandlerDispatcher()
    : m_state(std::make_shared<State>())
{}

AnyHandlerDispatcher::~AnyHandlerDispatcher()
{
    // Within a handler's dispatch, that goes on with its own table, where all have left.
    for (const State::NodePtr& node : m_state->takeAll()) {
        node->close();
    }
}

AnyHandlerDispatcher::Token AnyHandlerDispatcher::add(const Type& type, Function function)
{
    auto node = std::make_shared<Node>(type.index, std::move(function));
    State::TablePtr former;
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->registered(type).handlers.push_back(node);
        former.swap(m_state->table);
    }
    return Token(std::move(node), m_state);
}

AnyHandlerDispatcher::Token AnyHandlerDispatcher::addOther(Function function)
{
    auto node = std::make_shared<Node>(typeid(void), std::move(function));
    State::TablePtr former;
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->others.push_back(node);
        former.swap(m_state->table);
    }
    return Token(std::move(node), m_state);
}

void AnyHandlerDispatcher::addBase(const Type& type, const Type& base, ToBase conversion)
{
    State::TablePtr former;
    const std::lock_guard lock(m_state->mutex);
    m_state->registered(base);
    m_state->registered(type).bases.push_back({base.index, conversion});
    former.swap(m_state->table);
}

AnyHandlerDispatcher::Result AnyHandlerDispatcher::dispatch(const std::any& value) const
{
    const State::TablePtr table = m_state->current(); // a handler may destroy this object
    if (const auto found = table->rows.find(value.type()); found != table->rows.end()) {
        return State::ask(*table, &found->second, found->second.inAny(value), {&value, nullptr});
    }
    return State::ask(*table, nullptr, nullptr, {&value, nullptr});
}

AnyHandlerDispatcher::Result AnyHandlerDispatcher::dispatch(const QVariant& value) const
{
    const State::TablePtr table = m_state->current();
    const auto found = table->byMetaType.find(value.userType());
    return State::ask(*table, found == table->byMetaType.end() ? nullptr : found->second, value.constData(),
                      {nullptr, &value});
}

} // namespace veltor::utils
