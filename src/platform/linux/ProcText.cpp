// Reads the lines of /proc that tell of locks, mappings, processes and mounts.
#include "platform/linux/ProcText.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>

namespace veltor::platform {
namespace {

using std::string_view;

/// Takes the next word of a line, empty at its end.
string_view takeWord(string_view& line)
{
    const std::size_t begin = line.find_first_not_of(" \t");
    if (begin == string_view::npos) {
        line = {};
        return {};
    }
    const std::size_t end = line.find_first_of(" \t", begin);
    const string_view word = line.substr(begin, end - begin);
    line.remove_prefix(end == string_view::npos ? line.size() : end);
    return word;
}

/// The whole word as a number.
template <typename Number>
bool readNumber(string_view word, Number& number, int base = 10)
{
    const char* const end = word.data() + word.size();
    const auto parsed = std::from_chars(word.data(), end, number, base);
    return !word.empty() && parsed.ec == std::errc() && parsed.ptr == end;
}

/// "08:01" in the given base.
bool readDevice(string_view word, int base, unsigned& major, unsigned& minor)
{
    const std::size_t colon = word.find(':');
    return colon != string_view::npos && readNumber(word.substr(0, colon), major, base) &&
           readNumber(word.substr(colon + 1), minor, base);
}

FileLockKind lockKind(string_view word)
{
    constexpr std::array<std::pair<string_view, FileLockKind>, 4> kinds{{
        {"FLOCK", FileLockKind::Flock},
        {"POSIX", FileLockKind::Posix},
        {"OFDLCK", FileLockKind::OpenFile},
        {"LEASE", FileLockKind::Lease},
    }};
    for (const auto& [name, kind] : kinds) {
        if (word == name) {
            return kind;
        }
    }
    return FileLockKind::Other;
}

/// Blanks, line breaks and backslashes of a name stand there as \ooo.
std::string unescaped(string_view word)
{
    std::string text;
    for (std::size_t at = 0; at < word.size(); ++at) {
        unsigned code = 0;
        if (word[at] == '\\' && readNumber(word.substr(at + 1, 3), code, 8) && code < 256 &&
            at + 3 < word.size()) {
            text += static_cast<char>(code);
            at += 3;
        } else {
            text += word[at];
        }
    }
    return text;
}

bool hasOption(string_view options, string_view wanted)
{
    while (!options.empty()) {
        const std::size_t end = options.find(',');
        if (options.substr(0, end) == wanted) {
            return true;
        }
        options.remove_prefix(end == string_view::npos ? options.size() : end + 1);
    }
    return false;
}

} // namespace

std::optional<LockLine> parseLockLine(string_view line)
{
    // 1: POSIX  ADVISORY  WRITE 4321 08:01:131 0 EOF; the number may be followed by "->" for who waits.
    LockLine result;
    string_view word = takeWord(line);
    if (word.size() < 2 || word.back() != ':') {
        return std::nullopt;
    }
    word = takeWord(line);
    if (word == "->") {
        result.lock.waiting = true;
        word = takeWord(line);
    }
    result.lock.kind = lockKind(word);
    const string_view rule = takeWord(line);
    result.lock.mandatory = rule == "MANDATORY";
    result.lock.exclusive = takeWord(line) == "WRITE";
    if (!readNumber(takeWord(line), result.lock.pid)) {
        return std::nullopt;
    }
    const string_view file = takeWord(line);
    const std::size_t colon = file.rfind(':');
    if (colon == string_view::npos || !readNumber(file.substr(colon + 1), result.file.inode) ||
        !readDevice(file.substr(0, colon), 16, result.file.major, result.file.minor)) {
        return std::nullopt;
    }
    const string_view last = [&] {
        return readNumber(takeWord(line), result.lock.begin) ? takeWord(line) : string_view();
    }();
    if (last != "EOF" && !readNumber(last, result.lock.last)) {
        return std::nullopt;
    }
    return result;
}

std::optional<MapLine> parseMapLine(string_view line)
{
    // 7f00a000-7f00b000 r-xp 00000000 08:01 131    /usr/lib/libm.so
    MapLine result;
    result.range = takeWord(line);
    takeWord(line);
    takeWord(line);
    if (!readDevice(takeWord(line), 16, result.file.major, result.file.minor) ||
        !readNumber(takeWord(line), result.file.inode) || result.file.inode == 0) {
        return std::nullopt;
    }
    return result;
}

std::optional<ProcessStat> parseProcessStat(string_view text)
{
    const std::size_t open = text.find('(');
    const std::size_t close = text.rfind(')');
    if (open == string_view::npos || close == string_view::npos || close < open) {
        return std::nullopt;
    }
    ProcessStat result;
    result.name = text.substr(open + 1, close - open - 1);
    string_view rest = text.substr(close + 1);
    // Behind the name, the second word: the state is the third, the flags the 9th, the start the 22nd.
    const string_view state = takeWord(rest);
    const auto skip = [&rest](int words) {
        for (int i = 0; i < words; ++i) {
            takeWord(rest);
        }
    };
    skip(5);
    unsigned flags = 0;
    constexpr unsigned kernelThread = 0x00200000;
    if (!readNumber(takeWord(rest), flags)) {
        return std::nullopt;
    }
    skip(12);
    if (!readNumber(takeWord(rest), result.startTicks)) {
        return std::nullopt;
    }
    result.hasFiles = (flags & kernelThread) == 0 && state != "Z" && state != "X";
    return result;
}

std::optional<unsigned> parseProcessUser(string_view text)
{
    std::optional<unsigned> result;
    forEachLine(text, [&result](string_view line) {
        unsigned user = 0;
        if (!result && takeWord(line) == "Uid:" && !takeWord(line).empty() &&
            readNumber(takeWord(line), user)) {
            result = user;
        }
    });
    return result;
}

std::optional<MountLine> parseMountLine(string_view line)
{
    // 36 35 98:0 /root /mnt rw,noatime shared:1 - ext3 /dev/sda1 rw,errors=continue
    MountLine result;
    if (!readNumber(takeWord(line), result.id)) {
        return std::nullopt;
    }
    takeWord(line);
    if (!readDevice(takeWord(line), 10, result.major, result.minor)) {
        return std::nullopt;
    }
    takeWord(line);
    result.place = unescaped(takeWord(line));
    result.readOnly = hasOption(takeWord(line), "ro");
    string_view word = takeWord(line);
    while (!word.empty() && word != "-") {
        word = takeWord(line);
    }
    result.type = takeWord(line);
    result.source = unescaped(takeWord(line));
    result.options = takeWord(line);
    result.readOnly |= hasOption(result.options, "ro");
    return word.empty() || result.place.empty() ? std::nullopt : std::make_optional(std::move(result));
}

std::string readProcFile(int folder, const char* name)
{
    std::string text;
    int fd = -1;
    do {
        fd = ::openat(folder, name, O_RDONLY | O_CLOEXEC | O_NOCTTY);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) {
        return text;
    }
    std::array<char, 16384> buffer;
    ssize_t got = 0;
    do {
        got = ::read(fd, buffer.data(), buffer.size());
        if (got > 0) {
            text.append(buffer.data(), static_cast<std::size_t>(got));
        }
    } while (got > 0 || (got < 0 && errno == EINTR));
    const int error = got < 0 ? errno : 0;
    ::close(fd);
    if (error != 0) {
        text.clear(); // cut off somewhere: better nothing than half of a list
    }
    errno = error;
    return text;
}

} // namespace veltor::platform
