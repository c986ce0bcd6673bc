#include "support/Text.h"

#include <veltor/err/ConcurrentNestedException.h>
#include <veltor/err/Exceptions.h>
#include <veltor/err/HandleCurrentException.h>
#include <veltor/err/TaskError.h>

#include <QtCore/QVariant>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace veltor {

using err::TaskError;
using test::u;

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

TEST(Exceptions, textsAndStandardBases)
{
    using namespace err;
    const QObject object;
    const auto* const none = static_cast<const QObject*>(nullptr);
    expectMessage<std::logic_error>(FunctionReturnsErrorCode(u("f%2"), u("c"), QString()),
                                    "Функция f%2 возвращает c. ");
    expectMessage<std::logic_error>(FunctionReturnsErrorCode(u("f"), -7, u("%1")),
                                    "Функция f возвращает -7. %1");
    expectMessage<std::runtime_error>(CouldNotInitializeObject(u("o"), u("r")),
                                      "Не удалось инициализировать объект o. r");
    expectMessage<std::logic_error>(UnexpectedType(u("a"), QStringList{u("b"), u("c")}),
                                    "Неизвестный тип данных 'a', ожидается 'b,c'");
    expectMessage<std::logic_error>(UnexpectedType(u("a"), QStringList()),
                                    "Неизвестный тип данных 'a', ожидается 'иное'");
    expectMessage<std::logic_error>(UnexpectedType(&object, u("b")),
                                    "Неизвестный тип данных 'QObject', ожидается 'b'");
    expectMessage<std::logic_error>(UnexpectedType(none, QStringList{u("b")}),
                                    "Неизвестный тип данных 'NULL', ожидается 'b'");
    expectMessage<std::out_of_range>(UnexpectedValue(u("n"), 1.5),
                                     "Величина n содержит недопустимое значение 1.5");
    expectMessage<std::logic_error>(UnsupportedOperation(u("d")), "Неподдерживаемая операция. d");
    expectMessage<std::logic_error>(NotImplementedOperation(u("w")), "Не реализовано w");
    expectMessage<std::logic_error>(OperationAborted(u("d")), "Операция прервана. d");
    expectMessage<std::runtime_error>(EofException(u("конец")), "конец");
    expectMessage<std::out_of_range>(OutOfRange(-1), "Индекс -1 вышел за пределы");
    expectMessage<std::invalid_argument>(NullArgument(u("x")), "Не задан аргумент x");
}

err::ConcurrentNestedException carrierOfAbort()
{
    try {
        throw err::OperationAborted(u("x"));
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
#ifndef VELTOR_EMULATED // where the program cannot start itself anew
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
#endif
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

TEST(Carriers, areCopiedIntoQueuedSignalsUnderEveryName)
{
    const err::ConcurrentNestedException nested = carrierOfAbort();
    const TaskError task(nested.nested_ptr());
    const auto exceptionOfCopy = [](const char* name, const auto& carrier) {
        using Carrier = std::decay_t<decltype(carrier)>;
        const QMetaType type(QMetaType::type(name));
        const std::unique_ptr<Carrier> copy(static_cast<Carrier*>(type.create(&carrier)));
        if constexpr (std::is_same_v<Carrier, TaskError>) {
            return copy->exception();
        } else {
            return copy->nested_ptr();
        }
    };
    for (const char* name : {"veltor::err::ConcurrentNestedException", "err::ConcurrentNestedException"}) {
        EXPECT_EQ(exceptionOfCopy(name, nested), nested.nested_ptr()) << name;
    }
    for (const char* name : {"veltor::err::TaskError", "TaskError"}) {
        EXPECT_EQ(exceptionOfCopy(name, task), nested.nested_ptr()) << name;
    }
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
