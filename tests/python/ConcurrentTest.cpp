#include <veltor/err/ConcurrentNestedException.h>
#include <veltor/python/PythonBridge.h>
#include <veltor/utils/PythonError.h>

#include "python/Interpreter.h"
#include "support/Platform.h"

#include <memory>
#include <stdexcept>
#include <thread>

namespace veltor::python {
namespace {

class ConcurrentProcedure : public PythonTest
{
protected:
    ConcurrentProcedure()
    {
        installCommonModule();
        run("import time\n"
            "ticks = 0\n"
            "def tick():\n"
            "  global ticks\n"
            "  ticks += 1\n"
            "  time.sleep(0.0001)\n");
    }

    /// Ends the procedure that calls it no sooner than after some calls of the callback.
    static void awaitTicks(long count)
    {
        for (long ticks = 0; ticks < count;) {
            const PyGILState_STATE state = PyGILState_Ensure();
            ticks = PyLong_AsLong(PyDict_GetItemString(globals(), "ticks"));
            PyGILState_Release(state);
        }
    }
};

TEST_F(ConcurrentProcedure, runsOnAnotherThreadAndIsDestroyedOnThisOne)
{
    struct Watch
    {
        ~Watch() { *destroyedOn = std::this_thread::get_id(); }
        std::thread::id* destroyedOn;
    };
    std::thread::id ranOn;
    std::thread::id destroyedOn;
    auto watch = std::make_shared<Watch>();
    watch->destroyedOn = &destroyedOn;
    Concurrent(
        [&ranOn, watch = std::move(watch)] {
            awaitTicks(3);
            ranOn = std::this_thread::get_id();
        },
        eval("tick").get());
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    EXPECT_NE(ranOn, std::thread::id());
    EXPECT_NE(ranOn, std::this_thread::get_id());
    EXPECT_EQ(destroyedOn, std::this_thread::get_id());
}

TEST_F(ConcurrentProcedure, isDestroyedUnrunWhenRefused)
{
    const std::pair<const char*, QString> rows[] = {
        {"lambda progress: 0", QStringLiteral("TypeError('callback must not have any parameters')")},
        {"5", QStringLiteral("TypeError('callback argument is not callable')")},
        {nullptr, QStringLiteral("TypeError('callback argument is not callable')")},
        {"type('T', (), {'__call__': lambda self: 0, '__signature__': 5})()",
         QStringLiteral("LogicException(")},
    };
    for (const auto& [expression, error] : rows) {
        bool ran = false;
        auto token = std::make_shared<int>();
        const std::weak_ptr<int> alive = token;
        const PythonRef callback = expression ? eval(expression) : PythonRef();
        Concurrent([&ran, token = std::move(token)] { ran = true; }, callback.get());
        EXPECT_TRUE(takeError().startsWith(error)) << error.toStdString();
        EXPECT_FALSE(ran || !alive.expired()) << error.toStdString();
    }
    Concurrent(std::function<void()>(), eval("tick").get());
    EXPECT_EQ(takeError(), QStringLiteral("ValueError('Undefined veltor procedure')"));

    const PythonRef tick = eval("tick");
    PyErr_SetString(PyExc_KeyError, "before");
    bool ran = false;
    Concurrent([&ran] { ran = true; }, tick.get());
    EXPECT_TRUE(ran);
    EXPECT_EQ(takeError(), QStringLiteral("KeyError('before')"));

    if (const test::NoThreads none; none.works) {
        Concurrent([] { FAIL(); }, tick.get());
        EXPECT_TRUE(takeError().startsWith(QStringLiteral("RuntimeException(")));
    }
    run("import inspect\ninspect.signature = lambda c: None");
    Concurrent([] { FAIL(); }, tick.get());
    EXPECT_EQ(takeError(), QStringLiteral("TypeError('callback must not have any parameters')"));
}

void throwNested()
{
    try {
        throw std::out_of_range("row 7");
    } catch (...) {
        std::throw_with_nested(std::runtime_error("cannot read"));
    }
}

void throwCarried()
try {
    throwNested();
} catch (...) {
    err::ConcurrentNestedException::rethrow();
}

TEST_F(ConcurrentProcedure, raisesWhatTheProcedureThrows)
{
    const std::pair<void (*)(), const char*> rows[] = {
        {[] { throw std::out_of_range("индекс"); }, "OutOfRangeException('индекс')"},
        {[] { throw std::invalid_argument("a"); }, "LogicException('a')"},
        {[] { throw std::range_error("bytes \xff"); }, "RuntimeException('bytes \\\\xff')"},
        {[] { throw utils::PythonError(QStringLiteral("Traceback")); }, "BasicException('Traceback')"},
        {[] { throw 1; }, "BasicException('Unknown native exception')"},
        {&test::endThisThread, "LogicException('std::future_error: Broken promise')"},
        {&throwNested, "RuntimeException('cannot read') from OutOfRangeException('row 7')"},
        {&throwCarried, "RuntimeException('cannot read') from OutOfRangeException('row 7')"},
    };
    for (const auto& [procedure, error] : rows) {
        Concurrent(procedure, eval("tick").get());
        EXPECT_EQ(takeError(), QString::fromUtf8(error));
    }
}

TEST_F(ConcurrentProcedure, leavesOneErrorWhenTheCallbackRaises)
{
    run("def raising(*errors):\n"
        "  errors = list(errors)\n"
        "  def callback():\n"
        "    tick()\n"
        "    if errors: raise errors.pop(0)\n"
        "  return callback\n");
    struct Row
    {
        const char* callback;
        bool procedureThrows;
        QString error;
    };
    const Row rows[] = {
        {"raising(KeyError(1), ValueError(2))", false, QStringLiteral("KeyError(1)")},
        {"raising(KeyError(1), KeyboardInterrupt(2), SystemExit(3))", false,
         QStringLiteral("KeyboardInterrupt(2)")},
        {"raising(KeyError(1))", true, QStringLiteral("LogicException('native') in KeyError(1)")},
        {"lambda: tick() or 1 / 0", true, // made by the interpreter: no instance yet
         QStringLiteral("LogicException('native') in ZeroDivisionError('division by zero')")},
        {"raising(KeyError(1), SystemExit(2))", true,
         QStringLiteral("SystemExit(2) in LogicException('native')")},
    };
    for (const Row& row : rows) {
        run("ticks = 0");
        const auto procedure = [&row] {
            awaitTicks(5);
            if (row.procedureThrows) {
                throw std::logic_error("native");
            }
        };
        Concurrent(procedure, eval(row.callback).get());
        EXPECT_EQ(takeError(), row.error) << row.callback;
    }
}

TEST_F(ConcurrentProcedure, comesBackThroughPython)
{
    const PythonRef tick = eval("tick");
    bool ran = false;
    Concurrent(
        [&ran, &tick] {
            const PyGILState_STATE state = PyGILState_Ensure();
            Concurrent([&ran] { ran = true; }, tick.get());
            PyGILState_Release(state);
        },
        tick.get());
    EXPECT_TRUE(ran);
    EXPECT_EQ(PyErr_Occurred(), nullptr);
}

} // namespace
} // namespace veltor::python
