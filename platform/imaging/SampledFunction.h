#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

/// A function over 0..1, held by its values at `kSteps` equal distances and straight between them:
/// for what is asked often and slow to compute. Immutable; any thread.
template <std::size_t kSteps>
class SampledFunction final
{
public:
    /// `function`: a double for a double.
    template <typename Function>
    explicit SampledFunction(const Function& function)
    {
        for (std::size_t i = 0; i < m_values.size(); ++i) {
            m_values[i] = static_cast<float>(function(static_cast<double>(i) / kSteps));
        }
    }

    /// At `x`; what is beyond 0..1 counts as its end.
    [[nodiscard]] float at(float x) const
    {
        const float place = std::clamp(x, 0.0F, 1.0F) * kSteps;
        const auto below = std::min(static_cast<std::size_t>(place), kSteps - 1);
        const float from = m_values[below];
        return from + (m_values[below + 1] - from) * (place - static_cast<float>(below));
    }

private:
    std::array<float, kSteps + 1> m_values{};
};
