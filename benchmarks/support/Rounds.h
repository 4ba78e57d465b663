#pragma once

#include "Benchmark.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace Corvane::Benchmark
{

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

/// What one contender took, one figure a round.
using Series = std::vector<double>;

/// @param share  0.5 for the median
double quantile(Series values, double share);
double median(const Series& values);
/// @return the median of the quotients of each round: what slows a whole round down does not show in it
double medianRatio(const Series& own, const Series& reference);

/// Lets contenders measure one round after the other, each time beginning with another one. The first round of each is
/// not kept.
std::vector<Series> takeTurns(int rounds, const std::vector<std::function<double()>>& contenders);

/// Does something so many times. @return microseconds, the median
double timeEach(int times, const std::function<void()>& what);

/// A figure of two series of the same rounds: their medians, and their ratio.
Figure compare(const std::string& name, const std::string& unit, const Series& own, const Series& reference,
               const Goal& goal = {});

} // namespace Corvane::Benchmark
