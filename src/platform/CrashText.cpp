// A crash as text and as JSON, without anything that a crash may have broken.

#include "platform/CrashText.h"

#include "platform/CrashModules.h"
#include "platform/UtcTime.h"

#include <csignal>
#include <cstdint>

namespace veltor::platform {
namespace {

constexpr int registersInLine = 4;

CrashModule module; // of the frame in work: too large for a stack that may be nearly full

} // namespace

const char* signalName(int signal) noexcept
{
    switch (signal) {
    case SIGFPE:
        return "SIGFPE";
    case SIGABRT:
        return "SIGABRT";
    case SIGILL:
        return "SIGILL";
    case SIGINT:
        return "SIGINT";
    case SIGSEGV:
        return "SIGSEGV";
    case SIGTERM:
        return "SIGTERM";
    default:
        return "signal";
    }
}

void writeHeadline(RawText& out, const CrashState& crash) noexcept
{
    out.text("\n*** crash: signal ").decimal(crash.signal).text(" (").text(signalName(crash.signal));
    out.text("), code ").decimal(crash.code).text(", address ").hex(crash.address);
    out.text(", process ").decimal(crash.process).text(", thread ").decimal(crash.thread);
    if (crash.threadName[0]) {
        out.text(" \"").text(crash.threadName).text("\"");
    }
    for (int i = 0; i < crash.registerCount; ++i) {
        out.text(i % registersInLine == 0 ? "\n" : "  ");
        out.text(crash.registers[i].name).text(" ").hex(crash.registers[i].value);
    }
    out.text("\n").flush();
}

void writeFrames(RawText& out, const CrashState& crash) noexcept
{
    for (int i = 0; i < crash.frameCount; ++i) {
        const auto address = reinterpret_cast<std::uintptr_t>(crash.frames[i]);
        out.text("#").decimal(i).text(" ").hex(address).text(" ").flush();
        if (findCrashModule(address, module)) {
            out.text(module.path).text("+").hex(module.offset).text("\n");
        } else {
            out.text("outside all modules\n");
        }
        out.flush();
    }
}

namespace {

void writeJsonFrames(RawText& out, const CrashState& crash) noexcept
{
    for (int i = 0; i < crash.frameCount; ++i) {
        const auto address = reinterpret_cast<std::uintptr_t>(crash.frames[i]);
        out.text(i == 0 ? "{\"address\":\"" : ",{\"address\":\"").hex(address).text("\"");
        if (findCrashModule(address, module)) {
            out.text(",\"module\":").json(module.path);
            out.text(",\"offset\":\"").hex(module.offset).text("\"");
            out.text(",\"loadAddress\":\"").hex(module.loadAddress).text("\"");
            out.text(",\"buildId\":\"").hexBytes(module.buildId, module.buildIdSize).text("\"");
        }
        out.text("}");
    }
}

} // namespace

void writeJson(RawText& out, const CrashState& crash, const CrashIdentity& identity) noexcept
{
    out.text("{\"crash\":1,\"time\":\"");
    const UtcTime time = utcTime(crash.seconds);
    out.decimal(time.year, 4).text("-").decimal(time.month, 2).text("-").decimal(time.day, 2).text("T");
    out.decimal(time.hour, 2).text(":").decimal(time.minute, 2).text(":").decimal(time.second, 2).text("Z\"");
    out.text(",\"application\":").json(identity.application);
    out.text(",\"version\":").json(identity.applicationVersion);
    out.text(",\"library\":").json(identity.libraryVersion);
    out.text(",\"signal\":").decimal(crash.signal).text(",\"signalName\":").json(signalName(crash.signal));
    out.text(",\"code\":").decimal(crash.code).text(",\"address\":\"").hex(crash.address).text("\"");
    out.text(",\"process\":").decimal(crash.process).text(",\"thread\":").decimal(crash.thread);
    out.text(",\"threadName\":").json(crash.threadName).text(",\"registers\":{");
    for (int i = 0; i < crash.registerCount; ++i) {
        out.text(i == 0 ? "" : ",").json(crash.registers[i].name).text(":\"");
        out.hex(crash.registers[i].value).text("\"");
    }
    out.text("},\"frames\":[");
    writeJsonFrames(out, crash);
    out.text("]}\n").flush();
}

} // namespace veltor::platform
