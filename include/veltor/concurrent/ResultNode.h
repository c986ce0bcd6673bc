#pragma once

#include <veltor/concurrent/ResultCore.h>

#include <atomic>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace veltor::concurrent {

template <typename T>
class TaskResult;

/// The part of TaskResult that must know its types: thin, over ResultCore. No caller needs a name of it.
namespace result {

/// How a function says that it has set the end itself.
struct Ended
{
    ResultCore::State state; ///< Succeeded or Canceled
};

/// The type of the value that a function's return value becomes.
template <typename R>
struct ValueOf
{
    using Type = R; ///< itself
};
/// A function that returns a result has that one's value.
template <typename T>
struct ValueOf<TaskResult<T>>
{
    using Type = T; ///< of the result
};

/// @p F can be called with these arguments, alone or with a scope or a token behind them.
template <typename F, typename... Arguments>
constexpr bool isCallable =
    std::is_invocable_v<F&, Arguments...> || std::is_invocable_v<F&, Arguments..., NestedScope&> ||
    std::is_invocable_v<F&, Arguments..., CancellationToken>;

/// Calls @p callable with the arguments and what it asks for besides.
template <typename F, typename... Arguments>
decltype(auto) call(ResultCore& core, F& callable, Arguments&&... arguments)
{
    static_assert(isCallable<F, Arguments...>, "the callable takes other arguments than are there for it");
    if constexpr (std::is_invocable_v<F&, Arguments...>) {
        return callable(std::forward<Arguments>(arguments)...);
    } else if constexpr (std::is_invocable_v<F&, Arguments..., NestedScope&>) {
        const std::unique_ptr<NestedScope> scope = core.makeScope();
        return callable(std::forward<Arguments>(arguments)..., *scope);
    } else {
        return callable(std::forward<Arguments>(arguments)..., core.token());
    }
}

/// A node with a value, its own or that of another node whose end it has taken over.
template <typename T>
class Node : public ResultCore
{
public:
    /// See TaskResult.
    /// @{
    const T& get()
    {
        Node& home = homeOfValue();
        if (home.m_taken.load()) {
            throwTaken();
        }
        return *home.m_value;
    }
    T take()
    {
        Node& home = homeOfValue();
        if (home.m_taken.exchange(true)) {
            throwTaken();
        }
        return std::move(*home.m_value);
    }
    /// @}
    /// Sets the value; by whoever brings the node to its end.
    template <typename U>
    void keep(U&& value)
    {
        m_value.emplace(std::forward<U>(value));
    }

protected:
    void adopt(const Ptr& other) override
    {
        const std::shared_ptr<Node> former = std::static_pointer_cast<Node>(other);
        m_home = former->m_home ? former->m_home : former;
    }

private:
    Node& homeOfValue()
    {
        rethrow();
        return m_home ? *m_home : *this;
    }

    std::optional<T> m_value;
    std::atomic<bool> m_taken{false};
    std::shared_ptr<Node> m_home; // null: this one
};

/// A node without a value.
template <>
class Node<void> : public ResultCore
{
public:
    /// See TaskResult.
    /// @{
    void get() { rethrow(); }
    void take() { rethrow(); }
    /// @}

protected:
    void adopt(const Ptr& /*other*/) override {}
};

/// Lets @p callable look at an end, or replace it by a value; false when it has only looked.
template <typename T, typename F>
bool replace(Node<T>& node, F callable)
{
    using R = std::invoke_result_t<F&>;
    if constexpr (std::is_void_v<R>) {
        callable();
        return false;
    } else if constexpr (std::is_void_v<T>) {
        static_assert(std::is_same_v<R, bool>, "without a value: return nothing, or whether it is settled");
        return callable();
    } else {
        node.keep(callable());
        return true;
    }
}

/// The same for a failure; throws it again when the callable has only looked.
template <typename T, typename F>
Ended recover(Node<T>& node, const std::exception_ptr& error, F& callable)
{
    bool settled = false;
    if constexpr (std::is_invocable_v<F&, const std::exception_ptr&>) {
        settled = replace(node, [&] { return callable(error); });
    } else {
        try {
            std::rethrow_exception(error);
        } catch (const std::exception& reason) {
            settled = replace(node, [&] { return callable(reason); });
        }
    }
    if (!settled) {
        std::rethrow_exception(error);
    }
    return {ResultCore::State::Succeeded};
}

/// A node with the function that it runs.
template <typename T, typename F>
class FunctionNode final : public Node<T>
{
public:
    /// See ResultCore.
    using State = ResultCore::State;

    /// Waits.
    explicit FunctionNode(F function)
        : m_function(std::move(function))
    {}

protected:
    State call() override
    {
        using R = std::decay_t<std::invoke_result_t<F&, Node<T>&>>;
        F& function = *m_function;
        if constexpr (std::is_same_v<R, Ended>) {
            return function(*this).state;
        } else if constexpr (!std::is_same_v<R, typename ValueOf<R>::Type>) {
            this->follow(function(*this).share());
            return State::Running;
        } else if constexpr (std::is_void_v<R>) {
            function(*this);
            return State::Succeeded;
        } else {
            this->keep(function(*this));
            return State::Succeeded;
        }
    }
    void forget() noexcept override { m_function.reset(); }

private:
    std::optional<F> m_function;
};

/// The node of a function that takes the node it runs in. Its value is of type T; Ended stands for the type
/// that the function returns.
template <typename T = Ended, typename F>
auto makeNode(F function)
{
    if constexpr (std::is_same_v<T, Ended>) {
        using R = typename ValueOf<std::decay_t<std::invoke_result_t<F&, ResultCore&>>>::Type;
        return std::make_shared<FunctionNode<R, F>>(std::move(function));
    } else {
        return std::make_shared<FunctionNode<T, F>>(std::move(function));
    }
}

/// The handle that a caller gets.
template <typename T, typename F>
TaskResult<T> handleOf(std::shared_ptr<FunctionNode<T, F>> node)
{
    return TaskResult<T>(std::move(node));
}

} // namespace result
} // namespace veltor::concurrent
