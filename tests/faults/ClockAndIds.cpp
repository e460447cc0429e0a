#include "ClockAndIds.h"

#include <QUuid>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace
{

/// Seconds since 1970; 0 where the clock goes.
std::int64_t moment()
{
    static const std::int64_t seconds = [] {
        const char* const text = std::getenv("CORVANE_FAULTS_MOMENT");
        return text == nullptr ? 0 : std::strtoll(text, nullptr, 10);
    }();
    return seconds;
}

std::uint64_t next(std::uint64_t& state)
{
    // SplitMix64: Steele, Lea, Flood, "Fast splittable pseudorandom number generators", 2014.
    std::uint64_t mixed = state += 0x9E3779B97F4A7C15;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EB;
    return mixed ^ (mixed >> 31U);
}

} // namespace

void keepMoment(int file)
{
    if (moment() != 0) {
        const std::array<timespec, 2> times{timespec{moment(), 0}, timespec{moment(), 0}};
        const int before = errno;
        ::syscall(SYS_utimensat, file, nullptr, times.data(), 0);
        errno = before;
    }
}

// When a file was made no program can set; it is told as when it was last changed.
extern "C" int
statx(int folder, const char* name, int flags, unsigned mask, struct statx* found) noexcept
{
    const auto result =
        static_cast<int>(::syscall(SYS_statx, folder, name, flags, mask | STATX_MTIME, found));
    if (result == 0 && moment() != 0) {
        found->stx_btime = found->stx_mtime;
    }
    return result;
}

extern "C" int clock_gettime(clockid_t clock, timespec* now)
{
    if (clock == CLOCK_REALTIME && moment() != 0) {
        *now = {moment(), 0};
        return 0;
    }
    return static_cast<int>(::syscall(SYS_clock_gettime, clock, now));
}

extern "C" int gettimeofday(timeval* now, void* zone)
{
    if (moment() != 0) {
        *now = {moment(), 0};
        return 0;
    }
    return static_cast<int>(::syscall(SYS_gettimeofday, now, zone));
}

extern "C" time_t time(time_t* now)
{
    timespec found{};
    clock_gettime(CLOCK_REALTIME, &found);
    if (now != nullptr) {
        *now = found.tv_sec;
    }
    return found.tv_sec;
}

QUuid QUuid::createUuid()
{
    static std::atomic<std::uint64_t> count{0};
    std::uint64_t state = static_cast<std::uint64_t>(moment()) * 1'000'003 + ++count;
    if (moment() == 0) {
        ::syscall(SYS_getrandom, &state, sizeof(state), 0);
    }
    const std::uint64_t first = next(state);
    const std::uint64_t second = next(state);
    constexpr std::uint64_t kRandom = 0x4000;              // version 4
    constexpr std::uint64_t kVariant = 0x8000000000000000; // RFC 4122
    const auto high = static_cast<ushort>((first & 0x0FFF) | kRandom);
    const std::uint64_t low = (second >> 2U) | kVariant;
    const auto byteOf = [low](unsigned index) {
        constexpr unsigned kLast = 7;
        constexpr unsigned kBits = 8;
        return static_cast<uchar>(low >> (kBits * (kLast - index)));
    };
    return {static_cast<uint>(first >> 32U),
            static_cast<ushort>(first >> 16U),
            high,
            byteOf(0),
            byteOf(1),
            byteOf(2),
            byteOf(3),
            byteOf(4),
            byteOf(5),
            byteOf(6),
            byteOf(7)};
}
