// System calls that change names and attributes of files, as the fault ring hands them on.

#include "FaultPoint.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace
{

constexpr std::uint32_t kMakesName = kFaultOfName | kFaultOfSpace;

int renaming(const char* call,
             int oldFolder,
             const char* from,
             int newFolder,
             const char* to,
             unsigned flags)
{
    const FaultPath path = FaultPath::of(oldFolder, from);
    const FaultPath target = FaultPath::of(newFolder, to);
    FaultPoint point(call, path, kMakesName);
    if (point.fails()) {
        return -1;
    }
    const auto result =
        static_cast<int>(::syscall(SYS_renameat2, oldFolder, from, newFolder, to, flags));
    if (result == 0) {
        const bool isExchange = (flags & RENAME_EXCHANGE) != 0;
        point.did(isExchange ? FaultEffect::Exchange : FaultEffect::Rename, target);
    }
    return result;
}

int linking(
    const char* call, int oldFolder, const char* from, int newFolder, const char* to, int flags)
{
    constexpr const char* kDescriptors = "/proc/self/fd/";
    const FaultPath path = FaultPath::of(oldFolder, from);
    const FaultPath target = FaultPath::of(newFolder, to);
    // A file without a name gets its first one.
    const bool isNameless = std::strncmp(from, kDescriptors, std::strlen(kDescriptors)) == 0;
    FaultPoint point(call, isNameless ? target : path, kMakesName);
    if (point.fails()) {
        return -1;
    }
    const auto result =
        static_cast<int>(::syscall(SYS_linkat, oldFolder, from, newFolder, to, flags));
    if (result == 0 && isNameless) {
        const int file = static_cast<int>(
            ::syscall(SYS_openat, newFolder, to, O_RDONLY | O_CLOEXEC | O_NOFOLLOW, 0));
        point.didCopy(FaultEffect::WholeFile, file, 0, 0);
        ::syscall(SYS_close, file);
    } else if (result == 0) {
        point.did(FaultEffect::Link, target);
    }
    return result;
}

int removing(const char* call, int folder, const char* name, int flags)
{
    const FaultPath path = FaultPath::of(folder, name);
    FaultPoint point(call, path, kFaultOfName);
    if (point.fails()) {
        return -1;
    }
    const auto result = static_cast<int>(::syscall(SYS_unlinkat, folder, name, flags));
    if (result == 0) {
        point.did((flags & AT_REMOVEDIR) != 0 ? FaultEffect::RemoveFolder : FaultEffect::Remove);
    }
    return result;
}

int makingFolder(const char* call, int folder, const char* name, mode_t mode)
{
    const FaultPath path = FaultPath::of(folder, name);
    FaultPoint point(call, path, kMakesName);
    if (point.fails()) {
        return -1;
    }
    const auto result = static_cast<int>(::syscall(SYS_mkdirat, folder, name, mode));
    if (result == 0) {
        point.did(FaultEffect::MakeFolder);
    }
    return result;
}

int linkingSymbolically(const char* call, const char* content, int folder, const char* name)
{
    const FaultPath path = FaultPath::of(folder, name);
    FaultPath target;
    std::snprintf(target.text.data(), target.text.size(), "%s", content);
    FaultPoint point(call, path, kMakesName);
    if (point.fails()) {
        return -1;
    }
    const auto result = static_cast<int>(::syscall(SYS_symlinkat, content, folder, name));
    if (result == 0) {
        point.did(FaultEffect::SymbolicLink, target);
    }
    return result;
}

/// Permissions, times, owners and extended attributes.
template <typename... Arguments>
int changing(const char* call,
             const FaultPath& path,
             std::uint32_t abilities,
             Arguments... arguments)
{
    FaultPoint point(call, path, abilities);
    return point.fails() ? -1 : static_cast<int>(::syscall(arguments...));
}

} // namespace

// The headers name the parameters otherwise.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {

int rename(const char* from, const char* to) noexcept
{
    return renaming("rename", AT_FDCWD, from, AT_FDCWD, to, 0);
}

int renameat(int oldFolder, const char* from, int newFolder, const char* to) noexcept
{
    return renaming("renameat", oldFolder, from, newFolder, to, 0);
}

int renameat2(
    int oldFolder, const char* from, int newFolder, const char* to, unsigned flags) noexcept
{
    return renaming("renameat2", oldFolder, from, newFolder, to, flags);
}

int link(const char* from, const char* to) noexcept
{
    return linking("link", AT_FDCWD, from, AT_FDCWD, to, 0);
}

int linkat(int oldFolder, const char* from, int newFolder, const char* to, int flags) noexcept
{
    return linking("linkat", oldFolder, from, newFolder, to, flags);
}

int symlink(const char* content, const char* name) noexcept
{
    return linkingSymbolically("symlink", content, AT_FDCWD, name);
}

int symlinkat(const char* content, int folder, const char* name) noexcept
{
    return linkingSymbolically("symlinkat", content, folder, name);
}

int unlink(const char* name) noexcept
{
    return removing("unlink", AT_FDCWD, name, 0);
}

int unlinkat(int folder, const char* name, int flags) noexcept
{
    return removing("unlinkat", folder, name, flags);
}

int rmdir(const char* name) noexcept
{
    return removing("rmdir", AT_FDCWD, name, AT_REMOVEDIR);
}

int remove(const char* name) noexcept
{
    struct stat status = {};
    const bool isFolder = ::lstat(name, &status) == 0 && S_ISDIR(status.st_mode);
    return removing("remove", AT_FDCWD, name, isFolder ? AT_REMOVEDIR : 0);
}

int mkdir(const char* name, mode_t mode) noexcept
{
    return makingFolder("mkdir", AT_FDCWD, name, mode);
}

int mkdirat(int folder, const char* name, mode_t mode) noexcept
{
    return makingFolder("mkdirat", folder, name, mode);
}

int truncate(const char* name, off_t size) noexcept
{
    const FaultPath path = FaultPath::of(AT_FDCWD, name);
    FaultPoint point("truncate", path, kMakesName);
    if (point.fails()) {
        return -1;
    }
    const auto result = static_cast<int>(::syscall(SYS_truncate, name, size));
    if (result == 0) {
        point.did(FaultEffect::Truncate, size, nullptr, 0);
    }
    return result;
}

int truncate64(const char* name, off64_t size) noexcept
{
    return truncate(name, size);
}

int chmod(const char* name, mode_t mode) noexcept
{
    const FaultPath path = FaultPath::of(AT_FDCWD, name);
    return changing("chmod", path, kFaultOfName, SYS_fchmodat, AT_FDCWD, name, mode);
}

int fchmodat(int folder, const char* name, mode_t mode, int /*flags*/) noexcept
{
    const FaultPath path = FaultPath::of(folder, name);
    return changing("fchmodat", path, kFaultOfName, SYS_fchmodat, folder, name, mode);
}

int fchmod(int file, mode_t mode) noexcept
{
    return changing("fchmod", FaultPath::of(file), 0, SYS_fchmod, file, mode);
}

int fchown(int file, uid_t user, gid_t group) noexcept
{
    return changing("fchown", FaultPath::of(file), 0, SYS_fchown, file, user, group);
}

int utimensat(int folder, const char* name, const timespec* times, int flags) noexcept
{
    const FaultPath path = FaultPath::of(folder, name);
    return changing("utimensat", path, kFaultOfName, SYS_utimensat, folder, name, times, flags);
}

int futimens(int file, const timespec* times) noexcept
{
    return changing("futimens", FaultPath::of(file), 0, SYS_utimensat, file, nullptr, times, 0);
}

int fsetxattr(int file, const char* name, const void* value, size_t size, int flags) noexcept
{
    return changing("fsetxattr",
                    FaultPath::of(file),
                    kFaultOfSpace,
                    SYS_fsetxattr,
                    file,
                    name,
                    value,
                    size,
                    flags);
}
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
