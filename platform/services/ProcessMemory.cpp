#include "ProcessMemory.h"

#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>

ProcessMemory::Outcome ProcessMemory::copy(std::uintptr_t address, std::span<std::byte> to) noexcept
{
    const int errorNumber = errno;
    const iovec here{to.data(), to.size()};
    const iovec there{reinterpret_cast<void*>(address), to.size()};
    const ssize_t count = process_vm_readv(getpid(), &here, 1, &there, 1, 0);
    const bool isRefused = count < 0 && (errno == ENOSYS || errno == EPERM || errno == EACCES);
    errno = errorNumber;
    if (count == static_cast<ssize_t>(to.size())) {
        return Outcome::Copied;
    }
    return isRefused ? Outcome::Refused : Outcome::NotThere;
}
