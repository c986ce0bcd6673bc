#pragma once

#include <veltor/Export.h>

#include <QtCore/QMetaType>
#include <QtCore/QVariant>

#include <any>
#include <functional>
#include <memory>
#include <type_traits>
#include <typeindex>
#include <utility>

namespace veltor::utils {

/// A value of unknown type as AnyHandlerDispatcher passes it to handlers of any other type: one of the two is
/// there. It lives while the handler runs.
struct AnyValue
{
    const std::any* any = nullptr;     ///< null when it came as a QVariant
    const QVariant* variant = nullptr; ///< null when it came as a std::any
};

/// Calls the handler for the type that a value has, a std::any or a QVariant.
///
///     AnyHandlerDispatcher handlers;
///     const auto roads = handlers.on<Road>([](const Road& road) { draw(road); });
///     const auto shapes = handlers.on<Shape>([](const Shape& shape) { outline(shape); });
///     handlers.declareBases<Lake, Shape>();
///     const auto others = handlers.onOther([](const AnyValue&) { beep(); });
///     if (!handlers.dispatch(value)) { ... }
///
/// Asked are, one after the other until one does not decline: the handlers for the value's own type, those
/// for its bases, the nearest first, and those for any other type; of several for one type the last
/// registered first. A handler that returns void takes the value; one that returns bool declines by false.
///
/// A value's type is the type that it was made of. In a std::any that is exactly that; in a QVariant it is a
/// type that Qt knows, by itself or by Q_DECLARE_METATYPE, and handlers for other types are not called with
/// one. Nothing is converted but to bases. An empty std::any or invalid QVariant goes to handlers for any
/// other.
///
/// Thread-safe, and no lock is held while a handler runs: it may register others, let them and itself leave,
/// and dispatch. What is registered during a dispatch counts from the next one on. Exceptions of handlers
/// pass through dispatch(), which then asks no more. The dispatcher may be destroyed by a handler, but not
/// while another thread calls it.
class VELTOR_UTILS_EXPORT AnyHandlerDispatcher
{
    struct State;
    struct Node;

public:
    /// Keeps a handler registered while it lives. May outlive the dispatcher. Not to be used by two threads
    /// at once.
    class VELTOR_UTILS_EXPORT Token
    {
    public:
        /// Of no handler.
        Token() noexcept;
        /// Takes the handler over.
        Token(Token&& other) noexcept;
        /// Lets its own handler leave first.
        Token& operator=(Token&& other) noexcept;
        Token(const Token&) = delete;
        Token& operator=(const Token&) = delete;
        /// As reset().
        ~Token();

        /// Lets the handler leave: it is not called again, and what it captured is destroyed. Waits for calls
        /// of it on other threads; hold no lock that the handler takes. Called by a handler, of whatever
        /// dispatcher, it does not wait, for that could be for each other: such calls end by themselves, and
        /// the last one destroys what was captured.
        void reset() noexcept;
        /// Whether there is a handler that has not left.
        [[nodiscard]] explicit operator bool() const noexcept { return m_node != nullptr; }

    private:
        friend class AnyHandlerDispatcher;
        explicit Token(std::shared_ptr<Node> node, std::weak_ptr<State> state) noexcept;

        std::shared_ptr<Node> m_node;
        std::weak_ptr<State> m_state;
    };

    /// Which handlers took a value.
    enum class By
    {
        Nobody, ///< all declined, or there are none
        Type,   ///< one for its own type
        Base,   ///< one for a base of it
        Other,  ///< one for any other
    };

    /// What became of a value. A plain value.
    struct Result
    {
        By by = By::Nobody; ///< which handlers took it
        /// The type for which the handler was registered; that of void for By::Nobody and By::Other.
        std::type_index type = typeid(void);

        /// Whether a handler took it.
        explicit operator bool() const noexcept { return by != By::Nobody; }
    };

    /// Without handlers.
    AnyHandlerDispatcher();
    /// Handlers leave; tokens that are left do nothing.
    ~AnyHandlerDispatcher();
    AnyHandlerDispatcher(const AnyHandlerDispatcher&) = delete;
    AnyHandlerDispatcher& operator=(const AnyHandlerDispatcher&) = delete;

    /// Registers a handler for values of type T, and of types that have T among their declared bases.
    /// @param handler  takes a `const T&`, returns void or bool; can be copied, and called while it is const:
    ///                 threads that dispatch at the same time call it at the same time
    template <typename T, typename Handler>
    [[nodiscard]] Token on(Handler handler)
    {
        static_assert(std::is_object_v<T> && std::is_same_v<T, std::decay_t<T>>, "a type of values");
        return add(typeOf<T>(), [call = std::move(handler)](const void* value) {
            return accepts(call, *static_cast<const T*>(value));
        });
    }

    /// Registers a handler for values that no other takes.
    /// @param handler  takes a `const AnyValue&`; else as for on()
    template <typename Handler>
    [[nodiscard]] Token onOther(Handler handler)
    {
        return addOther([call = std::move(handler)](const void* value) {
            return accepts(call, *static_cast<const AnyValue*>(value));
        });
    }

    /// Makes values of type T go to handlers for its bases too. A base is a base class, or what a value of
    /// type T converts to: declareBases<Lake*, Shape*>(), and the same with std::shared_ptr. Bases of bases
    /// count when they are declared themselves. Of two at the same distance the one declared first is nearer.
    template <typename T, typename... Bases>
    void declareBases()
    {
        static_assert((std::is_convertible_v<const T&, const Bases&> && ...), "a base, without doubt which");
        (addBase(typeOf<T>(), typeOf<Bases>(), &toBase<T, Bases>), ...);
    }

    /// Calls the handler for a value.
    /// @param value  not to be changed by handlers behind the dispatcher's back
    /// @{
    Result dispatch(const std::any& value) const;
    Result dispatch(const QVariant& value) const;
    /// @}

private:
    using Function = std::function<bool(const void*)>;
    /// What takes the base's address.
    using Sink = void (*)(void* context, const void* base);
    using ToBase = void (*)(const void* value, Sink sink, void* context);

    struct Type
    {
        std::type_index index;
        int metaType;                              ///< Qt's number, 0 for none
        const void* (*inAny)(const std::any& any); ///< the value in it
    };

    template <typename T>
    static const void* inAny([[maybe_unused]] const std::any& any)
    {
        if constexpr (std::is_copy_constructible_v<T>) {
            return std::any_cast<T>(&any);
        } else {
            return nullptr;
        }
    }

    template <typename T>
    static Type typeOf()
    {
        if constexpr (QMetaTypeId2<T>::Defined != 0) {
            return {typeid(T), qMetaTypeId<T>(), &inAny<T>};
        } else {
            return {typeid(T), 0, &inAny<T>};
        }
    }

    template <typename T, typename Base>
    static void toBase(const void* value, Sink sink, void* context)
    {
        // Of a class the part of the object itself; of pointers a converted one that lives long enough.
        const Base& base = *static_cast<const T*>(value);
        sink(context, std::addressof(base));
    }

    template <typename Handler, typename Value>
    static bool accepts(const Handler& handler, const Value& value)
    {
        if constexpr (std::is_same_v<std::invoke_result_t<const Handler&, const Value&>, bool>) {
            return handler(value);
        } else {
            handler(value);
            return true;
        }
    }

    Token add(const Type& type, Function function);
    Token addOther(Function function);
    void addBase(const Type& type, const Type& base, ToBase conversion);

    std::shared_ptr<State> m_state;
};

} // namespace veltor::utils
