#include "Tasks.h"

#include "AlternateSignalStack.h"

#include <exception>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

void Tasks::run(int count, const std::function<void(int number)>& task)
{
    std::vector<std::exception_ptr> failures(static_cast<std::size_t>(count));
    const auto runOne = [&](int number) {
        try {
            task(number);
        } catch (...) {
            failures[static_cast<std::size_t>(number)] = std::current_exception();
        }
    };
    const auto runElsewhere = [&runOne](int number) {
        const AlternateSignalStack signalStack;
        runOne(number);
    };
    {
        std::vector<std::jthread> others;
        others.reserve(static_cast<std::size_t>(count));
        int number = 1;
        try {
            for (; number < count; ++number) {
                auto other = std::jthread(runElsewhere, number);
                others.push_back(std::move(other));
            }
        } catch (const std::system_error&) {
            // The system has no more threads: this one does what is left.
        }
        if (count > 0) {
            runOne(0);
        }
        for (; number < count; ++number) {
            runOne(number);
        }
    }
    for (const std::exception_ptr& failure : failures) {
        if (failure) {
            std::rethrow_exception(failure);
        }
    }
}
