// Describes the values of a feature's table, whose types are known only when the program runs; kinds that it
// does not know by itself are a plug-in's.

#include <veltor/utils/AnyHandlerDispatcher.h>

#include <QtCore/QDate>
#include <QtCore/QVariant>

#include <cstdio>
#include <vector>

using veltor::utils::AnyHandlerDispatcher;
using veltor::utils::AnyValue;

//! [types]
struct Geometry
{
    virtual ~Geometry() = default;
    [[nodiscard]] virtual int points() const = 0;
};

struct Ring : Geometry
{
    [[nodiscard]] int points() const override { return 5; }
};
Q_DECLARE_METATYPE(Ring)
//! [types]

namespace {

//! [plugin]
/// Knows dates, as long as it lives.
class DatePlugin
{
public:
    explicit DatePlugin(AnyHandlerDispatcher& handlers)
        : m_token(handlers.on<QDate>([this](const QDate& date) { show(date); }))
    {}

private:
    void show(const QDate& date) { std::printf("date %d, the %d. so far\n", date.year(), ++m_count); }

    int m_count = 0;
    AnyHandlerDispatcher::Token m_token; // last: it leaves before what the handler uses is gone
};
//! [plugin]

} // namespace

int main()
{
    const std::vector<QVariant> values{42, QDate(2024, 4, 3), QVariant::fromValue(Ring()), 2.5, QVariant()};

    //! [dispatch]
    AnyHandlerDispatcher handlers;
    handlers.declareBases<Ring, Geometry>();
    const auto numbers = handlers.on<int>([](int number) { std::printf("number %d\n", number); });
    const auto geometries = handlers.on<Geometry>(
        [](const Geometry& geometry) { std::printf("geometry of %d points\n", geometry.points()); });
    const auto others = handlers.onOther([](const AnyValue& value) {
        std::printf("something of type %s\n", value.variant->isValid() ? value.variant->typeName() : "none");
    });
    {
        const DatePlugin plugin(handlers);
        for (const QVariant& value : values) {
            handlers.dispatch(value);
        }
    }
    // Without the plug-in, its types are like all others.
    const auto result = handlers.dispatch(values[1]);
    //! [dispatch]
    return result.by == AnyHandlerDispatcher::By::Other ? 0 : 1;
}
