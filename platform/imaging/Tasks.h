#pragma once

#include <functional>
#include <optional>
#include <type_traits>
#include <utility>

/// Work that is done on several cores at once.
namespace Tasks
{

/// Calls `task` with each number from 0 to below `count`, once and each in a thread of its own; 0
/// is the calling thread's. Returns when all are done. An exception of a task is thrown on, after
/// the others ended; that of the lowest number where there are several.
void run(int count, const std::function<void(int number)>& task);

/// What two functions return that are called at the same time, the first in the calling thread.
template <typename First, typename Second>
[[nodiscard]] auto both(First&& first, Second&& second)
{
    std::optional<std::invoke_result_t<First>> one;
    std::optional<std::invoke_result_t<Second>> other;
    run(2, [&](int number) {
        if (number == 0) {
            one.emplace(first());
        } else {
            other.emplace(second());
        }
    });
    return std::pair(std::move(*one), std::move(*other));
}

} // namespace Tasks
