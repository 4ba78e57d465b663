#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace Corvane
{

constexpr int clampToInt(std::int64_t value)
{
    return static_cast<int>(
        std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

} // namespace Corvane
