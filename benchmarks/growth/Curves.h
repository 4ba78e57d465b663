#pragma once

#include <Benchmark.h>
#include <functional>
#include <vector>

namespace Corvane::Benchmark
{

/// How a cost grows with a number.
struct Curve {
    using Sink = std::function<void(const std::vector<double>& row)>;

    const char* name;
    const char* columns; ///< of a row, the first one being the number
    std::vector<int> points;
    std::function<void(const std::vector<int>& points, const Options&, const Sink&)> measure;
};

std::vector<Curve> listCurves();

/// The curve of the process manager, which has its applications for longer.
void measureBox(const std::vector<int>& points, const Options& options, const Curve::Sink& sink);

} // namespace Corvane::Benchmark
