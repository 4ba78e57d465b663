#include "Rounds.h"

#include <algorithm>
#include <stdexcept>

namespace Corvane::Benchmark
{

double quantile(Series values, double share)
{
    if (values.empty())
        throw std::runtime_error("nothing was measured");
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

double median(const Series& values)
{
    return quantile(values, 0.5);
}

double medianRatio(const Series& own, const Series& reference)
{
    Series quotients;
    for (std::size_t i = 0; i < own.size(); ++i)
        quotients.push_back(own[i] / reference.at(i));
    return median(quotients);
}

std::vector<Series> takeTurns(int rounds, const std::vector<std::function<double()>>& contenders)
{
    for (const auto& measure : contenders)
        measure();
    std::vector<Series> series(contenders.size());
    for (int round = 0; round < rounds; ++round)
        for (std::size_t i = 0; i < contenders.size(); ++i) {
            const std::size_t turn = (static_cast<std::size_t>(round) + i) % contenders.size();
            series[turn].push_back(contenders[turn]());
        }
    return series;
}

double timeEach(int times, const std::function<void()>& what)
{
    Series latencies;
    latencies.reserve(static_cast<std::size_t>(times));
    for (int i = 0; i < times; ++i) {
        const Clock::time_point start = Clock::now();
        what();
        latencies.push_back(Microseconds(Clock::now() - start).count());
    }
    return median(latencies);
}

Figure compare(const std::string& name, const std::string& unit, const Series& own, const Series& reference,
               const Goal& goal)
{
    return {name, median(own), unit, median(reference), medianRatio(own, reference), goal};
}

} // namespace Corvane::Benchmark
