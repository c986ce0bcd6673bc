#include <veltor/err/Exceptions.h>
#include <veltor/python/PythonBridge.h>
#include <veltor/utils/PythonError.h>

#include "python/Interpreter.h"
#include "support/LogCapture.h"

#include <new>
#include <optional>
#include <thread>

namespace veltor::python {
namespace {

class Bridge : public PythonTest
{};

using PythonReference = PythonTest;

TEST_F(Bridge, readsStrings)
{
    const std::pair<const char*, QString> rows[] = {
        {"'ы\\U0001F600'", QString::fromUtf8("ы\U0001F600")},
        {"'a\\0b'", QStringLiteral("a")},
        {"'\\ufeffa'", QChar(0xFEFF) + QStringLiteral("a")},
        {"'\\udc00a\\U0001F600\\ud83d'",
         QString(QChar(0xDC00)) + QString::fromUtf8("a\U0001F600") + QChar(0xD83D)},
        {"'\\udc00\\0a'", QString(QChar(0xDC00))},
        {"type('Name', (str,), {})('sub')", QStringLiteral("sub")},
        {"b'\\xe9\\0a'", QString(QChar(0xE9))},
        {"type('Raw', (bytes,), {})(b'sub')", QStringLiteral("sub")},
        {"42", QString()},
        {"bytearray(b'a')", QString()},
    };
    for (const auto& [expression, text] : rows) {
        EXPECT_EQ(PyStringToQString(eval(expression).get()), text) << expression;
        EXPECT_EQ(PyErr_Occurred(), nullptr) << expression;
    }
    EXPECT_EQ(PyStringToQString(nullptr), QString());
}

TEST_F(Bridge, writesStringsWithoutLoss)
{
    const QString text = QString::fromUtf8("я\U0001F600") + QChar(0) + QChar(0xD800) + QStringLiteral("z");
    PyDict_SetItemString(globals(), "text", PythonRef(QStringToPyString(text)).get());
    EXPECT_EQ(eval("text == 'я\\U0001F600\\0\\ud800z'").get(), Py_True);
    EXPECT_EQ(eval("len(text)").get(), eval("5").get());
    PyDict_SetItemString(globals(), "text", PythonRef(QStringToPyString(QString())).get());
    EXPECT_EQ(eval("text == ''").get(), Py_True);
}

TEST_F(Bridge, showsObjectsBesideAPendingError)
{
    run("class Mute:\n  def __repr__(self): raise KeyboardInterrupt\n");
    const PythonRef mute = eval("Mute()");
    const PythonRef text = eval("'a'");
    PyErr_SetString(PyExc_KeyError, "k");
    EXPECT_EQ(PyObjectToRepr(text.get()), QStringLiteral("'a'"));
    EXPECT_EQ(PyObjectToStr(text.get()), QStringLiteral("a"));
    EXPECT_EQ(PyObjectToRepr(mute.get()), QString());
    EXPECT_EQ(takeError(), QStringLiteral("KeyError('k')"));
}

TEST_F(Bridge, readsThePendingErrorAndConsumesIt)
{
    EXPECT_EQ(currentError(), QStringLiteral("pythonError: traceback is null"));
    PyErr_SetString(PyExc_ValueError, "raised natively");
    EXPECT_EQ(currentError(), QStringLiteral("pythonError: traceback is null"));

    raise("try:\n  1 / 0\nexcept ZeroDivisionError:\n  raise ValueError('\\ud800ы')");
    const std::string text = utils::pythonError().what();
    EXPECT_EQ(text.rfind("Traceback (most recent call last):\n", 0), 0U) << text;
    EXPECT_NE(text.find("ZeroDivisionError: division by zero"), std::string::npos) << text;
    EXPECT_NE(text.find("ы\n"), std::string::npos) << text;
    EXPECT_EQ(PyErr_Occurred(), nullptr);

    raise("1 / 0"); // made by the interpreter: a class and a text, no instance yet
    EXPECT_TRUE(currentError().endsWith(QLatin1String("\nZeroDivisionError: division by zero\n")));
    run("import sys, traceback\ntraceback.format_exception = None");
    raise("1 / 0");
    EXPECT_EQ(currentError(), QStringLiteral("ZeroDivisionError('division by zero')"));
    run("sys.modules['traceback'] = None");
    raise("raise ValueError(1)");
    EXPECT_EQ(currentError(), QStringLiteral("pythonError: tracebackModule equals null"));
    EXPECT_EQ(PyErr_Occurred(), nullptr);
}

TEST_F(Bridge, countsParameters)
{
    const std::pair<const char*, int> rows[] = {
        {"lambda: 0", 0},
        {"lambda a, b=1, *c, d, **e: 0", 5},
        {"type('T', (), {'m': lambda self: 0})().m", 0},
    };
    for (const auto& [expression, count] : rows) {
        EXPECT_EQ(callableArgsCount(eval(expression).get()), count) << expression;
    }
    try {
        callableArgsCount(eval("5").get());
        FAIL();
    } catch (const err::FunctionReturnsErrorCode& e) {
        EXPECT_TRUE(QString::fromUtf8(e.what()).endsWith(
            QStringLiteral("TypeError: 5 is not a callable object\n возвращает NULL. ")));
    }
    EXPECT_EQ(PyErr_Occurred(), nullptr);

    run("import inspect\ninspect.signature = lambda c: None");
    EXPECT_EQ(callableArgsCount(eval("lambda: 0").get()), -1);
    EXPECT_NE(PyErr_ExceptionMatches(PyExc_AttributeError), 0);
    PyErr_Clear();
    run("import sys\nsys.modules['inspect'] = None");
    EXPECT_THROW(callableArgsCount(eval("lambda: 0").get()), err::FunctionReturnsErrorCode);
}

TEST_F(Bridge, findsTheExceptionClassInEachInterpreterAnew)
{
    const std::pair<std::exception_ptr, const char*> rows[] = {
        {std::make_exception_ptr(err::OutOfRange(1)), "common.OutOfRangeException"},
        {std::make_exception_ptr(std::invalid_argument("")), "common.LogicException"},
        {std::make_exception_ptr(std::range_error("")), "common.RuntimeException"},
        {std::make_exception_ptr(utils::PythonError(QString())), "common.BasicException"},
        {std::make_exception_ptr(1), "common.BasicException"},
        {nullptr, "common.BasicException"},
    };
    for (int round = 0; round < 2; ++round) {
        installCommonModule();
        for (const auto& [native, name] : rows) {
            EXPECT_EQ(findExceptionType(native), eval(name).get()) << name;
        }
        ASSERT_EQ(Py_FinalizeEx(), 0);
        Py_InitializeEx(0);
    }
}

TEST_F(Bridge, fallsBackUntilTheModuleHoldsTheClasses)
{
    test::LogCapture log;
    const std::exception_ptr native = std::make_exception_ptr(std::logic_error(""));
    PyErr_SetString(PyExc_KeyError, "k");
    EXPECT_EQ(findExceptionType(native), PyExc_RuntimeError);
    EXPECT_EQ(takeError(), QStringLiteral("KeyError('k')"));
    installCommonModule();
    run("common.LogicException = 'no class'");
    EXPECT_EQ(findExceptionType(native), PyExc_RuntimeError);
    const QStringList texts = log.takeTexts(logging::LogLevel::Error);
    ASSERT_EQ(texts.size(), 2);
    EXPECT_TRUE(texts[0].contains(QLatin1String("No module named 'veltor'"))) << texts[0].toStdString();
    EXPECT_TRUE(texts[1].contains(QLatin1String("veltor.common.LogicException is no exception class")));

    run("common.LogicException = KeyError");
    EXPECT_EQ(findExceptionType(native), PyExc_KeyError);
    EXPECT_TRUE(log.take().empty());
}

TEST_F(PythonReference, takesTheLockForTheLastReferenceOnly)
{
    run("gone = []\nclass Watched:\n  def __del__(self): gone.append(1)\nwatched = Watched()");
    PythonRef shared = PythonRef::share(eval("watched").get());
    // This thread holds the lock meanwhile: taking it, the other one would wait for ever.
    std::thread([&shared] { shared = PythonRef(); }).join();
    EXPECT_EQ(eval("len(gone)").get(), eval("0").get());

    PythonRef last = eval("globals().pop('watched')");
    PyThreadState* const state = PyEval_SaveThread();
    std::thread([&last] { last = PythonRef(); }).join();
    PyEval_RestoreThread(state);
    EXPECT_EQ(eval("len(gone)").get(), eval("1").get());
}

TEST_F(PythonReference, isLeftAloneOnceTheInterpreterIsGone)
{
    PythonRef dropped = eval("type('T', (), {'__del__': lambda self: print('ran')})()");
    ASSERT_EQ(Py_FinalizeEx(), 0);
    dropped = PythonRef();
    Py_InitializeEx(0);
}

TEST_F(Bridge, keepsNoReferences)
{
    installCommonModule();
    const auto useAll = [] {
        const PythonRef object = eval("['ы', '\\ud800']");
        EXPECT_FALSE(PyObjectToStr(object.get()).isEmpty());
        EXPECT_FALSE(PyStringToQString(PyList_GetItem(object.get(), 1)).isEmpty());
        const PythonRef callback = eval("lambda: __import__('time').sleep(1e-5) or 1 / 0");
        callableArgsCount(callback.get());
        Concurrent([] { throw std::runtime_error("ы"); }, callback.get());
        takeError();
        raise("raise ValueError(1)");
        EXPECT_FALSE(currentError().isEmpty());
    };
    const auto blocks = [] {
        run("import gc, sys\ngc.collect()");
        return PyLong_AsLong(eval("sys.getallocatedblocks()").get());
    };
    constexpr int rounds = 1500; // far more than the blocks in caches that fill on the way
    useAll();
    const long before = blocks();
    for (int i = 0; i < rounds; ++i) {
        useAll();
    }
    EXPECT_LT(blocks() - before, rounds);
}

} // namespace
} // namespace veltor::python
