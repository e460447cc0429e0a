// System calls on open files, and those that open one, as the fault ring hands them on. The names
// are the C library's: loaded before it, this library is asked instead.

#include "FaultPoint.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace
{

bool exists(const FaultPath& path)
{
    struct stat status = {};
    return ::lstat(path.text.data(), &status) == 0;
}

int openAt(const char* call, int folder, const char* name, int flags, mode_t mode)
{
    const auto really = [&] {
        return static_cast<int>(::syscall(SYS_openat, folder, name, flags, mode));
    };
    const bool isNameless = (flags & O_TMPFILE) == O_TMPFILE;
    if ((flags & O_ACCMODE) == O_RDONLY && (flags & (O_CREAT | O_TRUNC)) == 0) {
        return really();
    }
    const FaultPath path = FaultPath::of(folder, name);
    const int before = errno;
    const bool isNew = !isNameless && !exists(path);
    errno = before;
    const bool takesSpace = isNameless || (isNew && (flags & O_CREAT) != 0);
    FaultPoint point(call, path, kFaultOfName | (takesSpace ? kFaultOfSpace : 0U));
    if (point.fails()) {
        return -1;
    }
    const int file = really();
    if (file >= 0 && (isNew || isNameless || (flags & O_TRUNC) != 0)) {
        point.changed(file);
    }
    if (file >= 0 && isNew) {
        point.did(FaultEffect::MakeFile);
    } else if (file >= 0 && (flags & O_TRUNC) != 0) {
        point.did(FaultEffect::Truncate, 0, nullptr, 0);
    }
    return file;
}

mode_t modeOf(int flags, va_list arguments)
{
    const bool isGiven = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has started it
    return isGiven ? static_cast<mode_t>(va_arg(arguments, int)) : 0;
}

/// `really` writes so many of the bytes, at `offset` or, where that is negative, where the file
/// stands.
template <typename Really>
ssize_t writing(
    const char* call, int file, const void* data, std::size_t bytes, off_t offset, Really really)
{
    const FaultPath path = FaultPath::of(file);
    FaultPoint point(call, path, kFaultOfSpace);
    const std::size_t share = point.share(bytes);
    if (share == bytes && point.fails()) {
        return -1;
    }
    const ssize_t count = really(share);
    if (count > 0) {
        point.changed(file);
        const int before = errno;
        const off_t start = offset >= 0 ? offset : ::lseek(file, 0, SEEK_CUR) - count;
        errno = before;
        if (data != nullptr) {
            point.did(FaultEffect::Write, start, data, static_cast<std::size_t>(count));
        } else {
            point.didCopy(FaultEffect::Write, file, start, static_cast<std::size_t>(count));
        }
    }
    point.written();
    return count;
}

/// What is flushed is only noted: the machine goes on, so the file system's cache is as good.
int flushing(const char* call, int file, FaultEffect effect)
{
    const FaultPath path = FaultPath::of(file);
    FaultPoint point(call, path, kFaultOfSpace);
    if (point.fails()) {
        return -1;
    }
    point.did(effect);
    return 0;
}

FaultEffect flushOf(int file)
{
    struct stat status = {};
    const bool isFolder = ::fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
    return isFolder ? FaultEffect::FlushFolder : FaultEffect::FlushFile;
}

int cutting(const char* call, int file, off_t size)
{
    const FaultPath path = FaultPath::of(file);
    FaultPoint point(call, path, kFaultOfSpace);
    if (point.fails()) {
        return -1;
    }
    const auto result = static_cast<int>(::syscall(SYS_ftruncate, file, size));
    if (result == 0) {
        point.changed(file);
        point.did(FaultEffect::Truncate, size, nullptr, 0);
    }
    return result;
}

int allocating(const char* call, int file, int mode, off_t offset, off_t size)
{
    const FaultPath path = FaultPath::of(file);
    FaultPoint point(call, path, kFaultOfSpace);
    if (point.fails()) {
        return -1;
    }
    const auto result = static_cast<int>(::syscall(SYS_fallocate, file, mode, offset, size));
    if (result == 0) {
        point.changed(file);
        point.didCopy(FaultEffect::WholeFile, file, 0, 0);
    }
    return result;
}

ssize_t sending(const char* call, int to, int from, off_t* offset, std::size_t bytes)
{
    return writing(call, to, nullptr, bytes, -1, [&](std::size_t share) {
        return ::syscall(SYS_sendfile, to, from, offset, share);
    });
}

FILE* openStream(const char* call, const char* name, const char* mode)
{
    using Open = FILE* (*)(const char*, const char*);
    static const auto kReally = reinterpret_cast<Open>(::dlsym(RTLD_NEXT, "fopen64"));
    if (std::strpbrk(mode, "wa+") == nullptr) {
        return kReally(name, mode);
    }
    const FaultPath path = FaultPath::of(AT_FDCWD, name);
    const bool isNew = !exists(path);
    FaultPoint point(call, path, kFaultOfName | (isNew ? kFaultOfSpace : 0U));
    if (point.fails()) {
        return nullptr;
    }
    FILE* const stream = kReally(name, mode);
    if (stream != nullptr && isNew) {
        point.did(FaultEffect::MakeFile);
    } else if (stream != nullptr && mode[0] == 'w') {
        point.did(FaultEffect::Truncate, 0, nullptr, 0);
    }
    return stream;
}

} // namespace

#define CORVANE_OPEN(NAME)                                                                         \
    int NAME(const char* name, int flags, ...)                                                     \
    {                                                                                              \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = modeOf(flags, arguments);                                              \
        va_end(arguments);                                                                         \
        return openAt(#NAME, AT_FDCWD, name, flags, mode);                                         \
    }
#define CORVANE_OPEN_AT(NAME)                                                                      \
    int NAME(int folder, const char* name, int flags, ...)                                         \
    {                                                                                              \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = modeOf(flags, arguments);                                              \
        va_end(arguments);                                                                         \
        return openAt(#NAME, folder, name, flags, mode);                                           \
    }

// The headers name the parameters otherwise.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {

CORVANE_OPEN(open)
CORVANE_OPEN(open64)
CORVANE_OPEN(__open_2)
CORVANE_OPEN(__open64_2)
CORVANE_OPEN_AT(openat)
CORVANE_OPEN_AT(openat64)

int creat(const char* name, mode_t mode)
{
    return openAt("creat", AT_FDCWD, name, O_CREAT | O_WRONLY | O_TRUNC, mode);
}

int creat64(const char* name, mode_t mode)
{
    return openAt("creat64", AT_FDCWD, name, O_CREAT | O_WRONLY | O_TRUNC, mode);
}

FILE* fopen(const char* name, const char* mode)
{
    return openStream("fopen", name, mode);
}

FILE* fopen64(const char* name, const char* mode)
{
    return openStream("fopen64", name, mode);
}

ssize_t write(int file, const void* data, size_t bytes)
{
    return writing("write", file, data, bytes, -1, [&](std::size_t share) {
        return ::syscall(SYS_write, file, data, share);
    });
}

ssize_t pwrite(int file, const void* data, size_t bytes, off_t offset)
{
    return writing("pwrite", file, data, bytes, offset, [&](std::size_t share) {
        return ::syscall(SYS_pwrite64, file, data, share, offset);
    });
}

ssize_t pwrite64(int file, const void* data, size_t bytes, off64_t offset)
{
    return writing("pwrite64", file, data, bytes, offset, [&](std::size_t share) {
        return ::syscall(SYS_pwrite64, file, data, share, offset);
    });
}

ssize_t writev(int file, const iovec* parts, int count)
{
    // A vector is not taken apart: it is written whole or not at all.
    return writing("writev", file, nullptr, 1, -1, [&](std::size_t /*share*/) {
        return ::syscall(SYS_writev, file, parts, count);
    });
}

ssize_t sendfile(int to, int from, off_t* offset, size_t bytes) noexcept
{
    return sending("sendfile", to, from, offset, bytes);
}

ssize_t sendfile64(int to, int from, off64_t* offset, size_t bytes) noexcept
{
    return sending("sendfile64", to, from, offset, bytes);
}

ssize_t
copy_file_range(int from, off64_t* start, int to, off64_t* target, size_t bytes, unsigned flags)
{
    const off_t offset = target == nullptr ? -1 : *target;
    return writing("copy_file_range", to, nullptr, bytes, offset, [&](std::size_t share) {
        return ::syscall(SYS_copy_file_range, from, start, to, target, share, flags);
    });
}

int ioctl(int file, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request != FICLONE) {
        return static_cast<int>(::syscall(SYS_ioctl, file, request, argument));
    }
    const FaultPath path = FaultPath::of(file);
    FaultPoint point("FICLONE", path, kFaultOfSpace);
    if (point.fails()) {
        return -1;
    }
    const auto result = static_cast<int>(::syscall(SYS_ioctl, file, request, argument));
    if (result == 0) {
        point.changed(file);
        point.didCopy(FaultEffect::WholeFile, file, 0, 0);
    }
    return result;
}

int fsync(int file)
{
    return flushing("fsync", file, flushOf(file));
}

int fdatasync(int file)
{
    return flushing("fdatasync", file, flushOf(file));
}

int syncfs(int file) noexcept
{
    return flushing("syncfs", file, FaultEffect::FlushAll);
}

int ftruncate(int file, off_t size) noexcept
{
    return cutting("ftruncate", file, size);
}

int ftruncate64(int file, off64_t size) noexcept
{
    return cutting("ftruncate64", file, size);
}

int fallocate(int file, int mode, off_t offset, off_t size)
{
    return allocating("fallocate", file, mode, offset, size);
}

int fallocate64(int file, int mode, off64_t offset, off64_t size)
{
    return allocating("fallocate64", file, mode, offset, size);
}

int posix_fallocate(int file, off_t offset, off_t size)
{
    return allocating("posix_fallocate", file, 0, offset, size) == 0 ? 0 : errno;
}

int posix_fallocate64(int file, off64_t offset, off64_t size)
{
    return allocating("posix_fallocate64", file, 0, offset, size) == 0 ? 0 : errno;
}
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
