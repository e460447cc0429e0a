#include "CrashStack.h"

#include "LoadedModules.h"
#include "ProcessMemory.h"

#include <ucontext.h>
#include <unwind.h>

namespace
{

/// A stack of 8 MB holds fewer; a damaged one may go on for ever.
constexpr std::size_t kMostFrames = 1U << 20U;

/// Goes to the outermost frame: on the way the unwinder and what it calls are bound to each other.
_Unwind_Reason_Code goOn(_Unwind_Context* frame, void*)
{
    int isInterrupted = 0;
    _Unwind_GetIPInfo(frame, &isInterrupted);
    return _URC_NO_REASON;
}

#if defined(__x86_64__)

std::uintptr_t programCounter(const ucontext_t& context)
{
    return static_cast<std::uintptr_t>(context.uc_mcontext.gregs[REG_RIP]);
}

/// Where the function that was just called, and has done nothing yet, returns to; 0 if unknown.
std::uintptr_t returnAddress(const ucontext_t& context)
{
    std::uintptr_t address = 0;
    const auto top = static_cast<std::uintptr_t>(context.uc_mcontext.gregs[REG_RSP]);
    const auto outcome = ProcessMemory::copy(top, std::as_writable_bytes(std::span(&address, 1)));
    return outcome == ProcessMemory::Outcome::Copied ? address : 0;
}

/// Makes the context that of the caller at its call.
void stepOut(ucontext_t& context, std::uintptr_t call)
{
    context.uc_mcontext.gregs[REG_RIP] = static_cast<greg_t>(call);
    context.uc_mcontext.gregs[REG_RSP] += static_cast<greg_t>(sizeof(std::uintptr_t));
}

#elif defined(__aarch64__)

std::uintptr_t programCounter(const ucontext_t& context)
{
    return context.uc_mcontext.pc;
}

std::uintptr_t returnAddress(const ucontext_t& context)
{
    return context.uc_mcontext.regs[30];
}

void stepOut(ucontext_t& context, std::uintptr_t call)
{
    context.uc_mcontext.pc = call;
}

#else // not known here: the unwinder alone must know

std::uintptr_t programCounter(const ucontext_t&)
{
    return 0;
}

std::uintptr_t returnAddress(const ucontext_t&)
{
    return 0;
}

void stepOut(ucontext_t&, std::uintptr_t) {}

#endif

} // namespace

struct CrashStack::Walk {
    CrashStack& stack;
    Listener& listener;
    std::uintptr_t begin{0}; ///< told already; the calls above it are those of the handler
    bool hasBegun{false};
    std::size_t visited{0};

    static _Unwind_Reason_Code visit(_Unwind_Context* frame, void* argument)
    {
        auto& walk = *static_cast<Walk*>(argument);
        int isInterrupted = 0;
        const std::uintptr_t address = _Unwind_GetIPInfo(frame, &isInterrupted);
        ++walk.visited;
        if (!walk.hasBegun) {
            walk.hasBegun = address == walk.begin;
        } else if (address != 0) {
            const bool isReturnAddress = isInterrupted == 0;
            walk.stack.add(isReturnAddress ? address - 1 : address, walk.listener);
        }
        return walk.visited < kMostFrames ? _URC_NO_REASON : _URC_END_OF_STACK;
    }
};

void CrashStack::warmUp() noexcept
{
    _Unwind_Backtrace(&goOn, nullptr);
}

void CrashStack::walk(void* context, const LoadedModules& modules, Listener& listener) noexcept
{
    m_count = 0;
    auto& interrupted = *static_cast<ucontext_t*>(context);
    const auto registers = interrupted.uc_mcontext;
    std::uintptr_t begin = programCounter(interrupted);
    add(begin, listener);
    if (modules.find(begin) == nullptr) {
        const std::uintptr_t call = returnAddress(interrupted) - 1;
        if (modules.find(call) != nullptr) {
            add(call, listener);
            stepOut(interrupted, call);
            begin = call;
        }
    }
    Walk walk{.stack = *this, .listener = listener, .begin = begin, .hasBegun = begin == 0};
    _Unwind_Backtrace(&Walk::visit, &walk);
    interrupted.uc_mcontext = registers;
    tellOldest(listener);
}

void CrashStack::add(std::uintptr_t address, Listener& listener) noexcept
{
    if (m_count < kNewestTold) {
        listener.call(m_count, address);
    } else {
        m_oldest[m_count % kOldestTold] = address;
    }
    ++m_count;
}

void CrashStack::tellOldest(Listener& listener) const noexcept
{
    std::size_t index = kNewestTold;
    if (m_count > kNewestTold + kOldestTold) {
        index = m_count - kOldestTold;
        listener.leftOut(index - kNewestTold);
    }
    for (; index < m_count; ++index) {
        listener.call(index, m_oldest[index % kOldestTold]);
    }
}
