#include "Curves.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace
{

using namespace Corvane::Benchmark;

void print(const Curve& curve, const Options& options)
{
    std::printf("# %s: %s\n", curve.name, curve.columns);
    const int points = options.isQuick ? 2 : static_cast<int>(curve.points.size());
    curve.measure({curve.points.begin(), curve.points.begin() + points}, options, [](const std::vector<double>& row) {
        for (double number : row)
            std::printf("%g ", number);
        std::printf("\n");
        std::fflush(stdout);
    });
}

std::vector<Figure> measure(const Options& options)
{
    const std::vector<Curve> curves = listCurves();
    for (const std::string& word : options.words)
        if (std::none_of(curves.begin(), curves.end(), [&](const Curve& curve) { return curve.name == word; }))
            throw std::runtime_error("no curve of the name " + word);
    for (const Curve& curve : curves)
        if (options.words.empty() || std::count(options.words.begin(), options.words.end(), curve.name) != 0)
            print(curve, options);
    return {};
}

} // namespace

int main(int argc, char** argv)
{
    return runBenchmark(
        argc, argv,
        "How cost grows. Names of curves say which: connections, subscribers, listeners, messages, box; "
        "all of them\notherwise. Prints columns of numbers, which scripts/bench --curves draws.",
        measure);
}
