#include <veltor/err/ConcurrentNestedException.h>
#include <veltor/err/Exceptions.h>
#include <veltor/err/HandleCurrentException.h>
#include <veltor/err/TaskError.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QObject>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace veltor {

using err::TaskError;

/// Spells each carrier under every name that a signal may use.
class Wire : public QObject
{
    Q_OBJECT
public:
    std::vector<std::exception_ptr> received;

Q_SIGNALS:
    void longNested(veltor::err::ConcurrentNestedException error);
    void shortNested(err::ConcurrentNestedException error);
    void longTask(veltor::err::TaskError error);
    void shortTask(TaskError error);

public Q_SLOTS:
    void onLongNested(veltor::err::ConcurrentNestedException error)
    {
        received.push_back(error.nested_ptr());
    }
    void onShortNested(err::ConcurrentNestedException error) { received.push_back(error.nested_ptr()); }
    void onLongTask(veltor::err::TaskError error) { received.push_back(error.exception()); }
    void onShortTask(TaskError error) { received.push_back(error.exception()); }
};

namespace {

template <typename Base, typename Exception>
void expectMessage(const Exception& exception, const char* text)
{
    try {
        throw exception;
    } catch (const Base& caught) {
        EXPECT_STREQ(caught.what(), text);
    } catch (...) {
        ADD_FAILURE() << "another base: " << text;
    }
}

QString s(const char* text)
{
    return QString::fromUtf8(text);
}

TEST(Exceptions, textsAndStandardBases)
{
    using namespace err;
    const QObject object;
    const auto* const none = static_cast<const QObject*>(nullptr);
    expectMessage<std::logic_error>(FunctionReturnsErrorCode(s("f%2"), s("c"), QString()),
                                    "Функция f%2 возвращает c. ");
    expectMessage<std::logic_error>(FunctionReturnsErrorCode(s("f"), -7, s("%1")),
                                    "Функция f возвращает -7. %1");
    expectMessage<std::runtime_error>(CouldNotInitializeObject(s("o"), s("r")),
                                      "Не удалось инициализировать объект o. r");
    expectMessage<std::logic_error>(UnexpectedType(s("a"), QStringList{s("b"), s("c")}),
                                    "Неизвестный тип данных 'a', ожидается 'b,c'");
    expectMessage<std::logic_error>(UnexpectedType(s("a"), QStringList()),
                                    "Неизвестный тип данных 'a', ожидается 'иное'");
    expectMessage<std::logic_error>(UnexpectedType(&object, s("b")),
                                    "Неизвестный тип данных 'QObject', ожидается 'b'");
    expectMessage<std::logic_error>(UnexpectedType(none, QStringList{s("b")}),
                                    "Неизвестный тип данных 'NULL', ожидается 'b'");
    expectMessage<std::out_of_range>(UnexpectedValue(s("n"), 1.5),
                                     "Величина n содержит недопустимое значение 1.5");
    expectMessage<std::logic_error>(UnsupportedOperation(s("d")), "Неподдерживаемая операция. d");
    expectMessage<std::logic_error>(NotImplementedOperation(s("w")), "Не реализовано w");
    expectMessage<std::logic_error>(OperationAborted(s("d")), "Операция прервана. d");
    expectMessage<std::runtime_error>(EofException(s("конец")), "конец");
    expectMessage<std::out_of_range>(OutOfRange(-1), "Индекс -1 вышел за пределы");
    expectMessage<std::invalid_argument>(NullArgument(s("x")), "Не задан аргумент x");
}

err::ConcurrentNestedException carrierOfAbort()
{
    try {
        throw err::OperationAborted(s("x"));
    } catch (...) {
        return {};
    }
}

TEST(ConcurrentNestedException, clonesAndRethrowsTheOriginal)
{
    const std::unique_ptr<err::ConcurrentNestedException> clone(carrierOfAbort().clone());
    EXPECT_THROW(clone->raise(), err::OperationAborted);

    try {
        try {
            throw std::length_error("inner");
        } catch (...) {
            err::ConcurrentNestedException::rethrow();
        }
    } catch (const QException& carrier) {
        EXPECT_THROW(carrier.raise(), std::length_error);
    }
}

TEST(ConcurrentNestedExceptionDeathTest, raiseOfAnEmptyCarrierTerminates)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_DEATH(
        {
            std::set_terminate([] {
                std::fputs("terminated\n", stderr);
                std::abort();
            });
            err::ConcurrentNestedException().raise();
        },
        "terminated");
}

TEST(Carriers, travelThroughQueuedSignalsUnderEveryName)
{
    Wire wire;
    ASSERT_TRUE(QObject::connect(&wire, SIGNAL(longNested(veltor::err::ConcurrentNestedException)), &wire,
                                 SLOT(onLongNested(veltor::err::ConcurrentNestedException)),
                                 Qt::QueuedConnection));
    ASSERT_TRUE(QObject::connect(&wire, SIGNAL(shortNested(err::ConcurrentNestedException)), &wire,
                                 SLOT(onShortNested(err::ConcurrentNestedException)), Qt::QueuedConnection));
    ASSERT_TRUE(QObject::connect(&wire, SIGNAL(longTask(veltor::err::TaskError)), &wire,
                                 SLOT(onLongTask(veltor::err::TaskError)), Qt::QueuedConnection));
    ASSERT_TRUE(QObject::connect(&wire, SIGNAL(shortTask(TaskError)), &wire, SLOT(onShortTask(TaskError)),
                                 Qt::QueuedConnection));
    const err::ConcurrentNestedException nested = carrierOfAbort();
    const TaskError task(nested.nested_ptr());
    Q_EMIT wire.longNested(nested);
    Q_EMIT wire.shortNested(nested);
    Q_EMIT wire.longTask(task);
    Q_EMIT wire.shortTask(task);
    EXPECT_TRUE(wire.received.empty());
    QCoreApplication::sendPostedEvents(&wire);
    EXPECT_EQ(wire.received, std::vector<std::exception_ptr>(4, nested.nested_ptr()));
    EXPECT_FALSE(TaskError().exception());
}

TEST(HandleCurrentException, visitsEveryLevelAndReturnsTheLastResult)
{
    EXPECT_FALSE(err::handleCurrentException([](unsigned) { return true; }));
    try {
        try {
            throw std::runtime_error("inner");
        } catch (...) {
            std::throw_with_nested(std::logic_error("outer"));
        }
    } catch (...) {
        std::vector<std::string> seen;
        const auto note = [&](unsigned level) {
            try {
                throw;
            } catch (const std::exception& e) {
                seen.push_back(std::to_string(level) + e.what());
            }
            return level == 1;
        };
        EXPECT_TRUE(err::handleCurrentException(note));
        EXPECT_EQ(seen, (std::vector<std::string>{"0outer", "1inner"}));
        EXPECT_FALSE(err::handleCurrentException([](unsigned level) { return level == 0; }));
        EXPECT_THROW(err::handleCurrentException({}), std::bad_function_call);
    }
}

} // namespace
} // namespace veltor

#include "tst_err.moc"
