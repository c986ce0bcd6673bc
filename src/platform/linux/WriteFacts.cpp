// What stands against writing to a file: the way to it, rights, marks, the mount, room and quota.
#include "platform/WriteFacts.h"

#include "platform/linux/Descriptor.h"

#include <fcntl.h>
#include <sys/quota.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <ctime>
#include <string>

namespace veltor::platform {
namespace {

using Way = WriteFacts::Way;

constexpr int LongestLinks = 40;

std::string folderOf(const std::string& path)
{
    const std::size_t end = path.find_last_not_of('/');
    const std::size_t slash = end == std::string::npos ? std::string::npos : path.rfind('/', end);
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

/// The target of a link as a path, empty when it is none.
std::string targetOf(const std::string& link)
{
    std::string target(PATH_MAX, '\0');
    const ssize_t size = ::readlink(link.c_str(), target.data(), target.size());
    if (size <= 0) {
        return {};
    }
    target.resize(static_cast<std::size_t>(size));
    return target.front() == '/' ? target : folderOf(link) + '/' + target;
}

/// Where a way that does not lead on ends: the first of its folders that is not as it must be.
void findEnd(const std::string& path, WriteFacts& facts)
{
    struct stat status = {};
    for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        if (slash == std::string::npos) {
            return;
        }
        const std::string place = path.substr(0, slash);
        if (::stat(place.c_str(), &status) != 0) {
            facts.place = errno == EACCES ? folderOf(place) : place;
            facts.way = errno == EACCES ? Way::NoPassage : errno == ENOENT ? Way::NoFolder : facts.way;
            return;
        }
        if (!S_ISDIR(status.st_mode)) {
            facts.place = place;
            facts.way = Way::NotAFolder;
            return;
        }
        if (::faccessat(AT_FDCWD, place.c_str(), X_OK, AT_EACCESS) != 0) {
            facts.place = place;
            facts.way = Way::NoPassage;
            return;
        }
    }
}

/// Follows the way to the file; sets the way, the place and, of an existing file, its kind.
void goThere(std::string path, WriteFacts& facts)
{
    struct stat status = {};
    facts.place = path;
    if (path.empty()) {
        facts.error = {ENOENT, std::system_category()};
        return;
    }
    for (int links = 0; ::stat(path.c_str(), &status) != 0; ++links) {
        const int error = errno;
        facts.error = {error, std::system_category()};
        if (error == ELOOP || links > LongestLinks) {
            facts.way = Way::Loop;
            return;
        }
        if (error == ENAMETOOLONG) {
            facts.way = Way::NameTooLong;
            return;
        }
        if (error != ENOENT) {
            findEnd(path, facts);
            return;
        }
        // A link that leads to nothing: writing makes what it leads to.
        if (const std::string target = targetOf(path); !target.empty()) {
            path = target;
            continue;
        }
        const std::string folder = folderOf(path);
        if (::stat(folder.c_str(), &status) != 0 || path.back() == '/') {
            facts.way = Way::NoFolder;
            facts.place = path;
            findEnd(path, facts);
            return;
        }
        facts.way = Way::New;
        facts.place = folder;
        facts.error = {};
        return;
    }
    facts.way = Way::There;
    facts.error = {};
    facts.place = path;
    facts.kind = S_ISREG(status.st_mode)   ? FileKind::File
                 : S_ISDIR(status.st_mode) ? FileKind::Folder
                                           : FileKind::Other;
    facts.readOnlyMark = (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

bool exceeds(std::uint64_t used, std::uint64_t wanted, std::uint64_t soft, std::uint64_t hard,
             std::uint64_t until)
{
    return (hard != 0 && used + wanted > hard) ||
           (soft != 0 && used > soft && until != 0 && until < static_cast<std::uint64_t>(std::time(nullptr)));
}

bool isQuotaFull(const WriteFacts& facts, std::uint64_t wantedBytes)
{
#ifdef SYS_quotactl_fd
    const std::string folder = facts.way == Way::New ? facts.place : folderOf(facts.place);
    const Descriptor fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
    const std::array<std::pair<int, unsigned>, 2> kinds{{{USRQUOTA, ::geteuid()}, {GRPQUOTA, ::getegid()}}};
    return fd && std::any_of(kinds.begin(), kinds.end(), [&](const auto& kind) {
               dqblk quota = {};
               if (::syscall(SYS_quotactl_fd, fd.get(), QCMD(Q_GETQUOTA, kind.first), kind.second, &quota) !=
                   0) {
                   return false; // there are none
               }
               constexpr std::uint64_t block = 1024;
               return exceeds(quota.dqb_curspace, wantedBytes, quota.dqb_bsoftlimit * block,
                              quota.dqb_bhardlimit * block, quota.dqb_btime) ||
                      (facts.way == Way::New && exceeds(quota.dqb_curinodes, 1, quota.dqb_isoftlimit,
                                                        quota.dqb_ihardlimit, quota.dqb_itime));
           });
#else
    static_cast<void>(wantedBytes);
    return facts.quotaFull;
#endif
}

void lookAtFileSystem(WriteFacts& facts)
{
    struct statvfs system = {};
    if (::statvfs(facts.place.c_str(), &system) != 0) {
        return;
    }
    facts.readOnlyMount = (system.f_flag & ST_RDONLY) != 0;
    if (system.f_blocks != 0) { // else one that counts none
        const auto free = ::geteuid() == 0 ? system.f_bfree : system.f_bavail;
        facts.freeBytes = std::uint64_t{free} * system.f_frsize;
    }
    facts.noMoreFiles = facts.way == Way::New && system.f_files != 0 && system.f_favail == 0;
}

} // namespace

WriteFacts writeFacts(const NativeString& path, std::uint64_t wantedBytes)
{
    WriteFacts facts;
    goThere(path, facts);
    if (facts.way != Way::There && facts.way != Way::New) {
        return facts;
    }
    const int rights = facts.way == Way::New ? W_OK | X_OK : W_OK;
    if (::faccessat(AT_FDCWD, facts.place.c_str(), rights, AT_EACCESS) != 0) {
        const bool refused = errno == EACCES;
        facts.readOnlyMount = errno == EROFS;
        facts.noRights = refused && !facts.readOnlyMark;
        facts.readOnlyMark = refused && facts.readOnlyMark;
    } else {
        facts.readOnlyMark = false; // which does not count for this user
    }
    struct statx marks = {};
    if (::statx(AT_FDCWD, facts.place.c_str(), AT_NO_AUTOMOUNT, STATX_TYPE, &marks) == 0) {
        facts.immutableMark = (marks.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
        facts.appendMark = facts.way == Way::There && (marks.stx_attributes & STATX_ATTR_APPEND) != 0;
    }
    lookAtFileSystem(facts);
    facts.quotaFull = isQuotaFull(facts, wantedBytes);
    return facts;
}

} // namespace veltor::platform
