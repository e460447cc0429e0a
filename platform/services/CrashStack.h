#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

class LoadedModules;

/// Tells the calls that led to a crash, newest first. Of a stack too deep to be told in full the
/// newest and the oldest calls are told: the one end shows what went on and on, the other what
/// began it. For signal handlers: allocates nothing and takes no lock of its own. Not for the
/// stack.
///
/// It walks with the unwinder of the compiler's own library (libgcc), which needs no frame pointers
/// but is not on POSIX's list of what a signal handler may call. With GCC 12 and glibc 2.35 it
/// finds its tables by _dl_find_object, which is documented as safe in signal handlers, and else
/// only reads memory; before those it walks the dynamic linker's list, behind a lock that the
/// crashed thread may hold. What else it does at its first call, warmUp() has done before. A
/// destroyed stack can make it crash; the calls up to there have been told by then.
class CrashStack final
{
public:
    static constexpr std::size_t kNewestTold = 96;
    static constexpr std::size_t kOldestTold = 32;

    /// Who is told.
    class Listener
    {
    public:
        virtual ~Listener() = default;

        /// `index` counts from 0, the interrupted instruction itself. Of the other addresses each
        /// lies within the instruction that made the call, so that tools name the line of the call
        /// and not the one after it.
        virtual void call(std::size_t index, std::uintptr_t address) noexcept = 0;
        /// So many calls are not told, between the newest and the oldest.
        virtual void leftOut(std::size_t count) noexcept = 0;

    protected:
        Listener() = default;
        Listener(const Listener&) = default;
        Listener& operator=(const Listener&) = default;
    };

    /// What the unwinder does but once. To be called before there is any crash.
    static void warmUp() noexcept;

    /// To be called in a signal handler, with its third argument; that is unchanged afterwards.
    /// Where a call went astray to an address that holds no code, the calls before it are found
    /// if the address after the call is one of `modules`.
    void walk(void* context, const LoadedModules& modules, Listener& listener) noexcept;

private:
    struct Walk;

    void add(std::uintptr_t address, Listener& listener) noexcept;
    void tellOldest(Listener& listener) const noexcept;

    std::size_t m_count{0};
    std::array<std::uintptr_t, kOldestTold> m_oldest{}; ///< a ring
};
