#include "Benchmark.h"

#include "Process.h"

#include <cstdio>
#include <exception>
#include <string_view>

namespace Corvane::Benchmark
{

namespace
{

bool isReached(const Figure& figure)
{
    const double is = figure.goal.of == Goal::Of::RATIO ? figure.ratio : figure.value;
    return figure.goal.isAtLeast ? is >= figure.goal.limit : is <= figure.goal.limit;
}

std::string format(const char* form, double number)
{
    char text[64];
    std::snprintf(text, sizeof text, form, number);
    return text;
}

/// @return "ratio <= 1.10", and whether it is reached
std::string describeGoal(const Figure& figure)
{
    if (figure.goal.of == Goal::Of::NOTHING)
        return {};
    const std::string what = figure.goal.of == Goal::Of::RATIO ? "ratio " : "value ";
    return what + (figure.goal.isAtLeast ? ">= " : "<= ") + format("%g", figure.goal.limit) +
           (isReached(figure) ? ", reached" : ", missed");
}

void printTable(const std::vector<Figure>& figures)
{
    std::printf("%-58s %10s %10s %6s  %s\n", "figure", "value", "reference", "ratio", "goal");
    for (const Figure& figure : figures) {
        const bool hasReference = figure.ratio != 0;
        std::printf("%-58s %10.2f %10s %6s  %s\n", (figure.name + ", " + figure.unit).c_str(), figure.value,
                    hasReference ? format("%.2f", figure.reference).c_str() : "",
                    hasReference ? format("%.3f", figure.ratio).c_str() : "", describeGoal(figure).c_str());
    }
}

/// Names and units are this folder's own and have nothing that would need an escape.
void printJson(const std::string& program, const std::vector<Figure>& figures)
{
    std::string list;
    for (const Figure& figure : figures) {
        list += (list.empty() ? "{\"name\":\"" : ",{\"name\":\"") + figure.name + "\",\"unit\":\"" + figure.unit +
                "\",\"value\":" + format("%.6g", figure.value);
        if (figure.ratio != 0)
            list += ",\"reference\":" + format("%.6g", figure.reference) + ",\"ratio\":" + format("%.4f", figure.ratio);
        if (figure.goal.of != Goal::Of::NOTHING)
            list += ",\"goal\":\"" + describeGoal(figure) + "\"";
        list += "}";
    }
    std::printf("{\"program\":\"%s\",\"figures\":[%s]}\n", program.c_str(), list.c_str());
}

void printUsage(const std::string& program, const std::string& help)
{
    std::printf("usage: %s [--json] [--quick]\n\n%s\n\n  --json   one line of JSON instead of a table\n"
                "  --quick  a few rounds only, to see that it works\n",
                program.c_str(), help.c_str());
}

} // namespace

int runBenchmark(int argc, char** argv, const std::string& help,
                 const std::function<std::vector<Figure>(const Options&)>& measure)
{
    const std::string path = argv[0];
    const std::string program = path.substr(path.rfind('/') + 1);
    Options options;
    bool asJson = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--json") {
            asJson = true;
        } else if (word == "--quick") {
            options.isQuick = true;
        } else if (word.starts_with("-")) {
            printUsage(program, help);
            return word == "--help" || word == "-h" ? 0 : 2;
        } else {
            options.words.emplace_back(word);
        }
    }
    try {
        setScheduling(Scheduling::BATCH);
        const std::vector<Figure> figures = measure(options);
        if (asJson)
            printJson(program, figures);
        else if (!figures.empty())
            printTable(figures);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", program.c_str(), error.what());
        return 1;
    }
}

} // namespace Corvane::Benchmark
