// What is printed, and the same as JSON.
#include <benchmark/benchmark.h>
#include <sys/utsname.h>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "bench/sample.h"
#include "qvr/platform/detail/processor.h"

namespace bench {

namespace {

std::string processor() {
    std::ifstream info("/proc/cpuinfo");
    std::string line;
    while (std::getline(info, line))
        if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
    utsname system{};
    return uname(&system) == 0 ? system.machine : "unknown";
}

std::string date() {
    const std::time_t now = std::time(nullptr);
    char text[40];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", std::gmtime(&now));
    return text;
}

double best(const Result& row) {
    if (row.opencv > 0 && row.dcmtk > 0) return std::min(row.opencv, row.dcmtk);
    return row.opencv > 0 ? row.opencv : row.dcmtk;
}

void printNumber(double value, int width, int decimals) {
    if (value > 0)
        std::printf("%*.*f", width, decimals, value);
    else
        std::printf("%*s", width, "-");
}

}  // namespace

void printHead(const Report& report) {
    std::printf("processor  %s, %s; one thread\n", processor().c_str(), qvr::processorLevel());
    std::printf("compiler   %s, %s\n", QVR_COMPILER, QVR_BUILD_TYPE);
    std::printf("date       %s\n", date().c_str());
    std::printf(
        "medians of 21 rounds (9 where files are written) in which limit, ours and peers take turns; "
        "milliseconds\n\n");
    std::printf("%-46s %-28s %9s %9s %7s %7s", "kernel", "size", "limit", "ours", "x limit", "GB/s");
    if (report.peers) std::printf(" %9s %9s %8s", "OpenCV", "DCMTK", "x faster");
    std::printf("\n");
}

void add(const Row& row, Report& report) {
    const Result result = measure(row);
    report.rows.push_back(result);
    std::printf("%-46s %-28s ", result.kernel.c_str(), result.size.c_str());
    printNumber(1e3 * result.limit, 9, 3);
    printNumber(1e3 * result.ours, 10, 3);
    printNumber(result.limit > 0 ? result.ours / result.limit : 0, 8, 2);
    printNumber(1e-9 * result.bytes / result.ours, 8, 2);
    if (report.peers) {
        printNumber(1e3 * result.opencv, 10, 3);
        printNumber(1e3 * result.dcmtk, 10, 3);
        printNumber(best(result) / result.ours, 9, 1);
    }
    std::printf("\n");
    std::fflush(stdout);
}

void printNote(const Note& note) {
    std::printf("%s: %.0f %s (%s)\n", note.name.c_str(), note.value, note.unit.c_str(), note.text.c_str());
    std::fflush(stdout);
}

void printScaling(const Scaling& scaling) {
    static bool headed = false;
    if (!headed) {
        std::printf("\n%-28s", "milliseconds per megapixel");
        for (const int side : scaling.sides) std::printf(" %8d", side);
        std::printf("\n");
        headed = true;
    }
    std::printf("%-28s", scaling.kernel.c_str());
    for (const double time : scaling.nanosecondsPerPixel) std::printf(" %8.3f", time);
    std::printf("\n");
}

bool writeJson(const Report& report, const std::string& path) {
    using nlohmann::json;
    json rows = json::array();
    for (const Result& row : report.rows) {
        json entry{
            {"kernel", row.kernel}, {"size", row.size}, {"rounds", row.rounds}, {"oursSeconds", row.ours}};
        if (row.bytes > 0) entry["gigabytesPerSecond"] = 1e-9 * row.bytes / row.ours;
        if (row.limit > 0) entry["limitSeconds"] = row.limit;
        if (row.limit > 0) entry["timesLimit"] = row.ours / row.limit;
        if (row.opencv > 0) entry["opencvSeconds"] = row.opencv;
        if (row.dcmtk > 0) entry["dcmtkSeconds"] = row.dcmtk;
        if (best(row) > 0) entry["timesFaster"] = best(row) / row.ours;
        rows.push_back(entry);
    }
    json notes = json::array();
    for (const Note& note : report.notes)
        notes.push_back(
            {{"name", note.name}, {"value", note.value}, {"unit", note.unit}, {"text", note.text}});
    json scaling = json::array();
    for (const Scaling& kernel : report.scaling)
        scaling.push_back({{"kernel", kernel.kernel},
                           {"sides", kernel.sides},
                           {"nanosecondsPerPixel", kernel.nanosecondsPerPixel}});
    const json all{{"processor", processor()}, {"vectors", qvr::processorLevel()},
                   {"compiler", QVR_COMPILER}, {"buildType", QVR_BUILD_TYPE},
                   {"date", date()},           {"rows", rows},
                   {"notes", notes},           {"scaling", scaling}};
    std::ofstream file(path);
    file << all.dump(2) << '\n';
    file.close();
    return file.good();
}

}  // namespace bench
