// Crashes of every kind, in processes of their own: each leaves last words, a crash file and, where the
// process can still do it, the report in the log.

#include "support/Files.h"
#include "support/LogCapture.h"
#include "support/Printers.h"
#include "support/Process.h"
#include "support/Text.h"

#include <veltor/concurrent/Runners.h>
#include <veltor/concurrent/Task.h>
#include <veltor/concurrent/TaskThreadPool.h>
#include <veltor/utils/CrashHandlerStack.h>
#include <veltor/utils/CrashReport.h>
#include <veltor/utils/Tracer.h>

#include <QtCore/QDir>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#ifndef Q_OS_WIN
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>
#endif

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VELTOR_SANITIZED 1
#endif

// An allocator that tells when it is used where it may not be.
static std::atomic<bool> allocatorForbidden{false};
#if defined(Q_OS_LINUX) && !defined(VELTOR_SANITIZED)
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* malloc(std::size_t size)
{
    if (allocatorForbidden.exchange(false)) {
        constexpr char words[] = "ALLOCATED\n";
        static_cast<void>(!write(STDERR_FILENO, words, sizeof words - 1));
        std::abort();
    }
    void* const memory = __libc_malloc(size);
    asm volatile(""); // no tail call: the handler looks for this frame
    return memory;
}
#endif

namespace veltor::test {
namespace {

using logging::LogRecord;
using testing::AllOf;
using testing::HasSubstr;
using utils::Tracer;

volatile int afterCall = 0; // written after a call that must keep its frame

#ifdef Q_OS_WIN
constexpr bool seesCallers = false; // Wine's walk stops early
#else
constexpr bool seesCallers = true;
#endif

// ---- Ways to crash

void print(const LogRecord& record)
{
    std::fprintf(stderr, "%d|%s|%d|%s|%s\n", static_cast<int>(record.level), qPrintable(record.file),
                 record.line, qPrintable(record.function), qPrintable(record.text));
}

Q_NEVER_INLINE void writeToNowhere()
{
    volatile std::uintptr_t nowhere = 8; // the compiler must not see where it leads
    *reinterpret_cast<volatile int*>(nowhere) = 1;
}

Q_NEVER_INLINE void callAddress(std::uintptr_t address)
{
    volatile std::uintptr_t target = address;
    reinterpret_cast<void (*)()>(target)();
    afterCall = 1;
}

Q_NEVER_INLINE int fillStack(int depth) // NOLINT(misc-no-recursion)
{
    std::array<volatile char, 4096> frame;
    frame[0] = static_cast<char>(depth);
    return depth < 0 ? 0 : fillStack(depth + 1) + frame[0];
}

struct Overflow : concurrent::Task
{
    void onStart() override { afterCall = fillStack(0); }
};

[[noreturn]] void sleepForEver()
{
    for (;;) {
        std::this_thread::sleep_for(std::chrono::hours(1));
    }
}

#ifndef Q_OS_WIN
/// Gives the last block of the heap a wrong size: the next large allocation aborts with the heap's lock held.
Q_NEVER_INLINE void damageHeap()
{
    volatile std::size_t size = 60000;
    for (int i = 0; i < 2; ++i) {
        auto* const block = static_cast<volatile char*>(std::malloc(size));
        std::fill_n(block + size, 64, '\1');
    }
    afterCall = std::malloc(size + 40000) != nullptr;
}

void damageHeapBesideAnotherThread()
{
    std::thread(sleepForEver).detach();
    damageHeap();
}

/// Another thread asks this one to end, while it does nothing but allocate.
void allocateUntilAskedToEnd()
{
    std::thread([thread = pthread_self()] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        pthread_kill(thread, SIGTERM);
    }).detach();
    for (std::size_t size = 1;; size = size % 5000 + 7) {
        void* volatile memory = std::malloc(size);
        std::free(memory);
    }
}

#ifdef __x86_64__
/// A stack pointer that leads nowhere: the walk itself meets the fault.
Q_NEVER_INLINE void loseStack()
{
    asm volatile("mov $64, %rsp\n\tret");
}
#endif

void crashWithStandardErrorAs(int descriptor)
{
    dup2(descriptor, STDERR_FILENO);
    writeToNowhere();
}
#endif

enum Expect
{
    Words = 1,  ///< last words and the crash file
    Log = 2,    ///< the report in the log, and the exit functions
    Unseen = 4, ///< standard error is out of reach
    Both = Words | Log
};

struct Scenario
{
    const char* name;
    void (*act)();
    int signal;
    int expected;
    const char* frame; ///< in the log's backtrace, or without one in the crash file's
    bool sanitized = true;
};

const Scenario scenarios[] = {
    {"write", writeToNowhere, SIGSEGV, Both, "writeToNowhere"},
    {"abort", [] { std::abort(); }, SIGABRT, Both, "playedRole"},
    {"raise FPE", [] { std::raise(SIGFPE); }, SIGFPE, Both, "playedRole"},
    {"raise ILL", [] { std::raise(SIGILL); }, SIGILL, Both, "playedRole"},
    {"raise INT", [] { std::raise(SIGINT); }, SIGINT, Both, "playedRole"},
    {"raise TERM", [] { std::raise(SIGTERM); }, SIGTERM, Both, "playedRole"},
    {"thread", [] { std::thread(writeToNowhere).join(); }, SIGSEGV, Both, "writeToNowhere"},
    {"call 0", [] { callAddress(0); }, SIGSEGV, Both, "callAddress"},
    {"call small", [] { callAddress(0x10); }, SIGSEGV, Both, "callAddress"},
    {"call data", [] { callAddress(reinterpret_cast<std::uintptr_t>(&afterCall)); }, SIGSEGV, Both,
     "callAddress"},
    {"call stack",
     [] {
         char local = 0;
         callAddress(reinterpret_cast<std::uintptr_t>(&local));
     },
     SIGSEGV, Both, "callAddress"},
    {"two threads", writeToNowhere, SIGSEGV, Both, "writeToNowhere"},
#ifndef Q_OS_WIN
    {"end meanwhile",
     [] {
         std::atomic<bool> begun{false};
         logging::setLogSink([&](const LogRecord& record) {
             begun = true;
             std::this_thread::sleep_for(std::chrono::milliseconds(50)); // main() returns meanwhile
             print(record);
         });
         std::thread(writeToNowhere).detach();
         while (!begun) {
             std::this_thread::yield();
         }
         std::exit(0);
     },
     SIGSEGV, Both, "writeToNowhere"},
    {"asked meanwhile",
     [] {
         static std::atomic<int> rounds{0};
         logging::setLogSink([asked = pthread_self()](const LogRecord& record) {
             pthread_kill(asked, SIGTERM);
             for (const int begin = rounds; rounds < begin + 20;) { // the other thread goes on
                 std::this_thread::yield();
             }
             print(record);
         });
         std::thread(writeToNowhere).detach();
         for (;; ++rounds) {
             std::this_thread::sleep_for(std::chrono::milliseconds(1));
         }
     },
     SIGSEGV, Both, "writeToNowhere"},
#ifdef __x86_64__
    {"lost stack", loseStack, SIGSEGV, Both, "loseStack"},
#endif
    {"sink crashes", writeToNowhere, SIGSEGV, Words, "writeToNowhere"},
    {"sink hangs", writeToNowhere, SIGSEGV, Words, "writeToNowhere"},
    {"call above", [] { callAddress(0x7ffffffff000); }, SIGSEGV, Both, "callAddress"},
    {"overflow", [] { afterCall = fillStack(0); }, SIGSEGV, Both, "fillStack"},
    {"overflow in the pool",
     [] {
         concurrent::TaskThreadPool pool;
         pool.start(new Overflow);
         sleepForEver();
     },
     SIGSEGV, Both, "fillStack"},
    {"overflow in a new thread",
     [] {
         concurrent::runInNewThread(new Overflow);
         sleepForEver();
     },
     SIGSEGV, Both, "fillStack"},
    {"overflow in a thread with a stack",
     [] {
         std::thread([] {
             const utils::CrashHandlerStack stack;
             afterCall = fillStack(0);
         }).join();
     },
     SIGSEGV, Both, "fillStack"},
    {"no allocation",
     [] {
         allocatorForbidden = true;
         writeToNowhere();
     },
     SIGSEGV, Words, "writeToNowhere", false},
    {"damaged heap", damageHeap, SIGABRT, Words, "damageHeap", false},
    {"damaged heap, two threads", damageHeapBesideAnotherThread, SIGABRT, Words, "damageHeap", false},
    {"asked while it allocates", allocateUntilAskedToEnd, SIGTERM, Both, "allocateUntilAskedToEnd", false},
    {"closed",
     [] {
         close(STDERR_FILENO);
         writeToNowhere();
     },
     SIGSEGV, Words | Unseen, "writeToNowhere"},
    {"full", [] { crashWithStandardErrorAs(open("/dev/full", O_WRONLY)); }, SIGSEGV, Words | Unseen,
     "writeToNowhere"},
    {"nobody reads",
     [] {
         std::array<int, 2> ends{};
         afterCall = pipe(ends.data());
         close(ends[0]);
         crashWithStandardErrorAs(ends[1]);
     },
     SIGSEGV, Words | Unseen, "writeToNowhere"},
#endif
};

const Role crashes("crash", [](const QStringList& arguments) {
    const QString how = arguments[0];
    logging::setLogSink([how](const LogRecord& record) {
        print(record);
        if (how == u("sink crashes")) {
            writeToNowhere();
        } else if (how == u("sink hangs")) {
            sleepForEver();
        } else if (how == u("two threads") && record.line != 0) {
            std::thread(writeToNowhere).detach();
            std::this_thread::sleep_for(std::chrono::milliseconds(200)); // it crashes meanwhile
        }
    });
    Tracer::registerSignalHandler();
    if (!utils::setCrashReportFile(arguments[1] + u("/") + arguments.value(2, u("crash-%t-%p")))) {
        return 3;
    }
    std::atexit([] { std::fputs("exit functions ran\n", stderr); });
    for (const Scenario& scenario : scenarios) {
        if (how == u(scenario.name)) {
            scenario.act();
        }
    }
    return 0;
});

/// The sanitizers' own handlers stand back; what a crash leaks is no matter.
void quietenSanitizers()
{
    const char* const options = "handle_segv=0:handle_abort=0:handle_sigfpe=0:handle_sigill=0:";
    static const QByteArray asan = qgetenv("ASAN_OPTIONS");
    static const QByteArray tsan = qgetenv("TSAN_OPTIONS");
    qputenv("ASAN_OPTIONS", options + asan + ":detect_leaks=0");
    qputenv("TSAN_OPTIONS", options + tsan + ":report_signal_unsafe=0:report_thread_leaks=0");
}

std::string tracedTo(const utils::CrashReport& report)
{
    return utils::resolveCrash(report).join(u("\n")).toStdString();
}

void expectLeaves(const Scenario& scenario, const Outcome& outcome, const QString& folder)
{
    EXPECT_EQ(outcome.status, 1);
    const std::string number = std::to_string(scenario.signal);
    if (!(scenario.expected & Unseen)) {
        EXPECT_THAT(outcome.errors, AllOf(HasSubstr("*** crash: signal " + number + " ("),
                                          HasSubstr("\n#0 0x"), HasSubstr("crash file: ")));
        EXPECT_LT(outcome.errors.find("crash file: "), outcome.errors.find("ALLOCATED"));
        EXPECT_EQ(u(outcome.errors.c_str()).count(u("*** crash: ")), 1);
    }
    if (scenario.expected & Log) {
        EXPECT_THAT(outcome.errors,
                    AllOf(HasSubstr("4|Tracer.cpp|11|void veltor::utils::signal_handler(int)|Program crashed "
                                    "with signal " +
                                    number + "\n4||0||Backtrace:\n"),
                          HasSubstr(seesCallers ? std::string(scenario.frame) + "(" : ""),
                          HasSubstr("exit functions ran")));
    }
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files | QDir::Hidden);
    ASSERT_EQ(files.size(), 1);
    QString error;
    const auto report = utils::readCrashReport(files[0].filePath(), &error);
    ASSERT_TRUE(report) << qPrintable(error);
    EXPECT_EQ(report->signal, scenario.signal);
    if (seesCallers) {
        EXPECT_EQ(files[0].permissions() & (QFile::ReadGroup | QFile::ReadOther), 0);
        EXPECT_THAT(tracedTo(*report), HasSubstr(scenario.frame));
    }
    EXPECT_TRUE(QFile::remove(files[0].filePath()));
}

TEST(Crash, AlwaysLeavesAReport)
{
    quietenSanitizers();
    const Folder folder;
    for (const Scenario& scenario : scenarios) {
#ifdef VELTOR_SANITIZED
        if (!scenario.sanitized) {
            continue; // the sanitizer has an allocator of its own
        }
#endif
        SCOPED_TRACE(scenario.name);
        const Outcome outcome = play("crash", {u(scenario.name), folder.path()});
        expectLeaves(scenario, outcome, folder.path());
        if (HasFailure()) {
            ADD_FAILURE() << outcome.errors;
            return;
        }
    }
}

// ---- The files

/// Crashes once more, with that template in the folder.
Outcome crashInto(const Folder& folder, const char* nameTemplate, const char* how = "write")
{
    return play("crash", {u(how), folder.path(), u(nameTemplate)});
}

TEST(CrashFile, TheNewestIsFoundAndWhatElseLiesThereIsLeftAlone)
{
    quietenSanitizers();
    const Folder folder;
    const LogCapture log;
    const QString nameTemplate = folder.path("100%%-%p");
    ASSERT_TRUE(utils::setCrashReportFile(nameTemplate));
    EXPECT_TRUE(QDir(folder.path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    QString error = u("former");
    EXPECT_FALSE(utils::lastCrash(&error));
    EXPECT_EQ(error, QString());

    folder.write("100%-x", "no number");
    folder.write("100%%-7", "another name");
    ASSERT_EQ(crashInto(folder, "100%%-%p", "abort").status, 1);
    const auto first = utils::lastCrash(&error);
    ASSERT_TRUE(first) << qPrintable(error);
    EXPECT_EQ(first->signal, SIGABRT);
    EXPECT_EQ(first->application, u("tst_crash"));
    EXPECT_EQ(first->time.secsTo(QDateTime::currentDateTimeUtc()) / 3600, 0);

    const QString damaged = folder.write("100%-1", "{\"crash\":1,");
    EXPECT_FALSE(utils::lastCrash(&error));
    EXPECT_TRUE(error.contains(damaged)) << qPrintable(error);
    ASSERT_TRUE(QFile::remove(damaged));
#ifndef Q_OS_WIN // where QFile makes shortcuts
    ASSERT_TRUE(QFile::link(first->file, folder.path("100%-2")));
    const auto besideLink = utils::lastCrash(&error);
    ASSERT_TRUE(besideLink) << qPrintable(error);
    EXPECT_EQ(besideLink->file, first->file);
#endif

    ASSERT_TRUE(QDir(folder.path()).removeRecursively());
    EXPECT_FALSE(utils::lastCrash(&error));
    EXPECT_NE(error, QString());
    ASSERT_TRUE(utils::setCrashReportFile(QString()));
    EXPECT_FALSE(utils::lastCrash(&error));
    EXPECT_EQ(error, QString());
}

TEST(CrashFile, NeverWritesToWhatIsThere)
{
    quietenSanitizers();
    const Folder folder;
    const QString victim = folder.write("victim", "precious");
    ASSERT_TRUE(QFile::link(victim, folder.path("name")));
    for (const char* name : {"name.1", "name.2"}) {
        EXPECT_EQ(crashInto(folder, "name").status, 1);
        EXPECT_TRUE(utils::readCrashReport(folder.path(name))) << name;
    }
    QFile file(victim);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "precious");
}

TEST(CrashFile, TemplatesThatDoNotFitAreRefused)
{
    const Folder folder;
    const std::string tooLong = std::string(250, 'x') + "%p";
    for (const char* path : {tooLong.c_str(), "%", "name%d", "nowhere/name", "victim/name", "sub/"}) {
        LogCapture log;
        folder.write("victim", "a file");
        EXPECT_FALSE(utils::setCrashReportFile(folder.path(path))) << path;
        const QStringList texts = log.takeTexts(logging::LogLevel::Error);
        ASSERT_EQ(texts.size(), 1) << path;
        EXPECT_TRUE(texts[0].contains(folder.path())) << qPrintable(texts[0]);
    }
}

TEST(CrashFile, BytesThatAreNoReportAreRefused)
{
    const Folder folder;
    const QByteArray whole =
        R"({"crash":1,"time":"2026-01-02T03:04:05Z","signal":11,"code":1,"process":2,"thread":3,"frames":[)"
        R"({"address":"0x1234","module":"/m","offset":"0x234","loadAddress":"0x1000",)"
        R"("buildId":"ab01"}]})";
    const auto read = [&](const QByteArray& bytes) {
        return utils::readCrashReport(folder.write("f", bytes));
    };
    const auto report = read(whole);
    ASSERT_TRUE(report);
    EXPECT_EQ(report->frames[0].buildId, QByteArray("\xab\x01"));
    EXPECT_EQ(utils::resolveCrash(*report), QStringList(u("[0x234]: /m")));
    const std::pair<const char*, const char*> changes[] = {
        {"\"crash\":1", "\"crash\":2"},
        {":11", ":-1"},
        {":11", ":1e99"},
        {":11", ":11.5"},
        {"2026-01", "2026-13"},
        {"0x1234", "1234"},
        {"0x1234", "0xg"},
        {"0x234", "0x235"},
        {"ab01", "ab0"},
        {"\"frames\":[", "\"f\":["},
        {"\"address\"", "\"a\""},
    };
    for (const auto& [from, to] : changes) {
        EXPECT_FALSE(read(QByteArray(whole).replace(from, to))) << from << " " << to;
    }
    for (int size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(read(whole.left(size))) << size;
    }
    EXPECT_FALSE(utils::readCrashReport(folder.path()));
}

} // namespace
} // namespace veltor::test
