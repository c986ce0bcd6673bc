// Handlers by type.

#include "support/Text.h"

#include <veltor/utils/AnyHandlerDispatcher.h>

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <random>
#include <thread>

using veltor::utils::AnyHandlerDispatcher;
using veltor::utils::AnyValue;
using By = AnyHandlerDispatcher::By;

namespace {

struct Shape
{
    virtual ~Shape() = default;
    [[nodiscard]] virtual int id() const = 0;
};
struct Named
{
    long padding = 7; // so that Area's base is not where the area is
};
struct Area : Named, Shape
{
    explicit Area(int itsNumber = 0)
        : number(itsNumber)
    {}
    [[nodiscard]] int id() const override { return number; }
    int number;
};
struct Lake : Area
{
    using Area::Area;
};

} // namespace

Q_DECLARE_METATYPE(Lake)
Q_DECLARE_METATYPE(Area)
Q_DECLARE_METATYPE(Lake*)

namespace {

/// What the dispatcher should do: handlers in a list, the types in a chain, int alone.
struct Model
{
    struct Handler
    {
        int type; ///< 0 Lake, 1 Area, 2 Shape, 3 int, 4 any other
        int number;
        bool declines;
    };
    std::vector<Handler> handlers; // the elder first

    [[nodiscard]] int takerOf(int type) const
    {
        for (const int wanted : type == 3 ? std::vector<int>{3, 4} : std::vector<int>{0, 1, 2, 4}) {
            for (auto handler = handlers.rbegin(); wanted >= type && handler != handlers.rend(); ++handler) {
                if (handler->type == wanted && !handler->declines) {
                    return handler->number;
                }
            }
        }
        return -1;
    }
};

AnyHandlerDispatcher::Token registered(AnyHandlerDispatcher& handlers, const Model::Handler& model,
                                       int& taker)
{
    const auto take = [&taker, model](int id) {
        EXPECT_EQ(id, 42);
        taker = model.declines ? taker : model.number;
        return !model.declines;
    };
    switch (model.type) {
    case 0:
        return handlers.on<Lake>([take](const Lake& lake) { return take(lake.id()); });
    case 1:
        return handlers.on<Area>([take](const Area& area) { return take(area.id()); });
    case 2:
        return handlers.on<Shape>([take](const Shape& shape) { return take(shape.id()); });
    case 3:
        return handlers.on<int>([take](int number) { return take(number); });
    default:
        return handlers.onOther([take](const AnyValue&) { return take(42); });
    }
}

TEST(Dispatcher, AsksTheNearestAndTheLatestFirst)
{
    std::mt19937 random(3); // NOLINT
    for (int run = 0; run < 200; ++run) {
        AnyHandlerDispatcher handlers;
        handlers.declareBases<Lake, Area>();
        handlers.declareBases<Area, Named, Shape>();
        Model model;
        std::vector<AnyHandlerDispatcher::Token> tokens;
        int taker = -1;
        for (int step = 0; step < 30; ++step) {
            if (random() % 3 == 0 && !tokens.empty()) {
                const auto which = static_cast<std::ptrdiff_t>(random() % tokens.size());
                tokens.erase(tokens.begin() + which);
                model.handlers.erase(model.handlers.begin() + which);
            } else {
                model.handlers.push_back({static_cast<int>(random() % 5), step, random() % 3 == 0});
                tokens.push_back(registered(handlers, model.handlers.back(), taker));
            }
            const std::vector<std::pair<std::any, QVariant>> values{{Lake(42), QVariant::fromValue(Lake(42))},
                                                                    {Area(42), QVariant::fromValue(Area(42))},
                                                                    {},
                                                                    {42, 42}};
            for (const int type : {0, 1, 3}) {
                const auto& [any, variant] = values[static_cast<std::size_t>(type)];
                for (const bool isAny : {true, false}) {
                    taker = -1;
                    const auto result = isAny ? handlers.dispatch(any) : handlers.dispatch(variant);
                    const int expected = model.takerOf(type);
                    EXPECT_EQ(taker, expected);
                    EXPECT_EQ(static_cast<bool>(result), expected >= 0);
                }
            }
        }
    }
}

TEST(Dispatcher, TellsWhatTookAValueAndConvertsPointersToBases)
{
    AnyHandlerDispatcher handlers;
    int seen = 0;
    handlers.declareBases<Lake*, Shape*>();
    handlers.declareBases<std::shared_ptr<Lake>, std::shared_ptr<Shape>>();
    const auto plain = handlers.on<Shape*>([&](Shape* shape) { seen = shape->id(); });
    const auto shared =
        handlers.on<std::shared_ptr<Shape>>([&](const auto& shape) { seen = 10 * shape->id(); });
    Lake lake(3);
    auto result = handlers.dispatch(std::any(&lake));
    EXPECT_TRUE(result.by == By::Base && result.type == typeid(Shape*) && seen == 3);
    EXPECT_EQ(handlers.dispatch(QVariant::fromValue(&lake)).by, By::Base);
    EXPECT_EQ(handlers.dispatch(std::any(std::make_shared<Lake>(4))).by, By::Base);
    EXPECT_EQ(seen, 40);
    EXPECT_EQ(handlers.dispatch(std::any(static_cast<Shape*>(&lake))).by, By::Type);

    result = handlers.dispatch(QVariant(veltor::test::u("text")));
    EXPECT_TRUE(!result && result.type == typeid(void));
    const auto others =
        handlers.onOther([&](const AnyValue& value) { seen = value.any && !value.any->has_value(); });
    EXPECT_EQ(handlers.dispatch(std::any()).by, By::Other);
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(handlers.dispatch(QVariant()).by, By::Other);

    const auto thrower = handlers.on<int>([](int) { throw 7; });
    EXPECT_THROW(handlers.dispatch(std::any(1)), int);
    EXPECT_THROW(handlers.dispatch(QVariant(1)), int);
}

TEST(Dispatcher, HandlersLeaveRegisterAndDestroyDuringADispatch)
{
    auto handlers = std::make_unique<AnyHandlerDispatcher>();
    std::vector<int> calls;
    AnyHandlerDispatcher::Token first;
    AnyHandlerDispatcher::Token second;
    AnyHandlerDispatcher::Token late;
    const auto witness = std::make_shared<int>(0);
    first = handlers->on<int>([&](int) {
        calls.push_back(1);
        return true;
    });
    second = handlers->on<int>([&, witness](int depth) {
        calls.push_back(2);
        if (depth == 0) {
            first.reset();
            second.reset();
            late = handlers->on<int>([&](int) { calls.push_back(3); });
            EXPECT_EQ(witness.use_count(), 2); // what runs keeps what it captured
            EXPECT_TRUE(handlers->dispatch(std::any(1)));
        }
        return false;
    });
    EXPECT_FALSE(handlers->dispatch(std::any(0))); // both have left, the late one counts from the next on
    EXPECT_EQ(witness.use_count(), 1);
    EXPECT_TRUE(handlers->dispatch(std::any(0)));
    EXPECT_EQ(calls, (std::vector<int>{2, 3, 3}));

    // One whose captured token is its own neighbour's, and one that destroys the dispatcher.
    auto inner = std::make_shared<AnyHandlerDispatcher::Token>(handlers->on<long>([](long) {}));
    auto last = handlers->on<long>([&handlers, inner](long) {
        handlers.reset();
        return false;
    });
    inner.reset();
    EXPECT_FALSE(handlers->dispatch(std::any(1L)));
    EXPECT_FALSE(handlers);
    last.reset();
}

TEST(Dispatcher, ResetWaitsForCallsOnOtherThreads)
{
    AnyHandlerDispatcher handlers;
    std::atomic<bool> isOver{false};
    std::thread caller([&] {
        while (!isOver) {
            handlers.dispatch(std::any(1));
            handlers.dispatch(QVariant(2));
        }
    });
    std::atomic<int> runs{0};
    for (int i = 0; i < 300; ++i) {
        auto target = std::make_unique<int>(0);
        auto one = handlers.on<int>([&runs, to = target.get()](int value) {
            *to += value;
            ++runs;
        });
        auto other = handlers.on<int>([to = target.get()](int value) {
            *to -= value;
            return false;
        });
        while (runs <= i) {
            std::this_thread::yield();
        }
        one.reset();
        other.reset();
        *target = 7; // nobody else touches it any more
    }
    isOver = true;
    caller.join();
}

} // namespace
