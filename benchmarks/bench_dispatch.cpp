#include <veltor/utils/AnyHandlerDispatcher.h>

#include <benchmark/benchmark.h>

#include <array>
#include <typeindex>
#include <unordered_map>
#include <utility>
#include <variant>

// A value of one of sixteen types to the handler for it: the dispatcher, for std::any and for QVariant,
// beside a chain of any_cast, a bare look-up by type and std::visit, which knows all types when it is
// compiled.

using veltor::utils::AnyHandlerDispatcher;

namespace {

constexpr int Types = 16;

template <int N>
struct Value
{
    int number = N;
};

template <int... N>
std::array<std::any, Types> anyValues(std::integer_sequence<int, N...>)
{
    return {std::any(Value<N>())...};
}

using Indices = std::make_integer_sequence<int, Types>;

template <int... N>
auto registerAll(AnyHandlerDispatcher& handlers, int& sum, std::integer_sequence<int, N...>)
{
    return std::array<AnyHandlerDispatcher::Token, Types>{
        handlers.on<Value<N>>([&sum](const Value<N>& value) { sum += value.number; })...};
}

void dispatch(benchmark::State& state)
{
    AnyHandlerDispatcher handlers;
    int sum = 0;
    const auto tokens = registerAll(handlers, sum, Indices());
    const auto values = anyValues(Indices());
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(handlers.dispatch(values[i++ % Types]));
    }
    benchmark::DoNotOptimize(sum);
}
BENCHMARK(dispatch)->Name("dispatch/veltor, std::any");

void dispatchVariant(benchmark::State& state)
{
    AnyHandlerDispatcher handlers;
    int sum = 0;
    const auto tokens = registerAll(handlers, sum, Indices());
    const auto number = handlers.on<int>([&sum](int value) { sum += value; });
    const auto real = handlers.on<double>([&sum](double) { ++sum; });
    const std::array<QVariant, 2> values{1, 2.0};
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(handlers.dispatch(values[i++ % 2]));
    }
    benchmark::DoNotOptimize(sum);
}
BENCHMARK(dispatchVariant)->Name("dispatch/veltor, QVariant");

void lookUp(benchmark::State& state)
{
    std::unordered_map<std::type_index, std::function<void(const std::any&)>> handlers;
    int sum = 0;
    const auto values = anyValues(Indices());
    for (const std::any& value : values) {
        handlers[value.type()] = [&sum](const std::any&) { ++sum; };
    }
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        const std::any& value = values[i++ % Types];
        handlers.find(value.type())->second(value);
    }
    benchmark::DoNotOptimize(sum);
}
BENCHMARK(lookUp)->Name("dispatch/std::unordered_map by type_index");

template <int... N>
int chain(const std::any& value, std::integer_sequence<int, N...>)
{
    int number = 0;
    const auto take = [&number](const auto* found) {
        number = found ? found->number : number;
        return found != nullptr;
    };
    static_cast<void>((take(std::any_cast<Value<N>>(&value)) || ...));
    return number;
}

void anyCasts(benchmark::State& state)
{
    const auto values = anyValues(Indices());
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(chain(values[i++ % Types], Indices()));
    }
}
BENCHMARK(anyCasts)->Name("dispatch/chain of std::any_cast");

template <int... N>
void visitAll(benchmark::State& state, std::integer_sequence<int, N...>)
{
    using Variant = std::variant<Value<N>...>;
    const std::array<Variant, Types> values{Variant(Value<N>())...};
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(
            std::visit([](const auto& value) { return value.number; }, values[i++ % Types]));
    }
}

void visit(benchmark::State& state)
{
    visitAll(state, Indices());
}
BENCHMARK(visit)->Name("dispatch/std::visit");

} // namespace
