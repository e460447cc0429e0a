#include "UncaughtException.h"

#include "PathRedaction.h"

#include <cxxabi.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <memory>
#include <typeinfo>

void UncaughtException::takeCurrent() noexcept
{
    pid_t nobody = 0;
    if (!m_thread.compare_exchange_strong(nobody, gettid())) {
        return;
    }
    const std::type_info* const type = abi::__cxa_current_exception_type();
    if (type == nullptr) {
        return;
    }
    // First what is sure to work.
    setType(type->name());
    try {
        throw;
    } catch (const std::exception& exception) {
        m_textLength = PathRedaction::copyWithoutPaths(exception.what(), m_text);
    } catch (...) { // NOLINT(bugprone-empty-catch): it has no text
    }
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> readable(
        abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), &std::free);
    if (readable) {
        setType(readable.get());
    }
}

void UncaughtException::setType(std::string_view name) noexcept
{
    m_typeLength = std::min(name.size(), m_type.size());
    std::copy_n(name.begin(), m_typeLength, m_type.begin());
}
