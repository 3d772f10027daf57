// sample: the radiograph that is measured, and what every row needs of it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/bench.h"
#include "qvr/platform/detail/memory.h"

namespace bench {

/// A phantom radiograph in a buffer such as the library's own images have.
struct Sample {
    int width = 0;
    int height = 0;
    qvr::Pixels pixels;

    std::size_t count() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
    double bytes() const { return 2.0 * static_cast<double>(count()); }
    std::string size() const { return std::to_string(width) + " x " + std::to_string(height); }
};

Sample makeSample(int width, int height);

struct Options {
    bool peers = false;
    std::string folder;  ///< where files are written; removed by main
};

void addDisplayRows(const Sample& sample, const Options& options, Report& report);
void addTableRows(Report& report);
void addSurfaceRows(const Sample& sample, Report& report);
void addPictureRows(const Sample& sample, const Options& options, Report& report);
void addToolkitRows(const Sample& sample, const Options& options, Report& report);
void addFileRows(const Sample& sample, const Options& options, Report& report);
void addAcquisition(const Sample& sample, const Options& options, Report& report);
void addResidency(const Sample& sample, const Options& options, Report& report);
void addDrag(const Sample& sample, const Options& options, Report& report);
/// Two hundred acquisitions in one exam: first of all, while nothing else is in memory.
void addExamRun(const Options& options, Report& report);
void addScaling(const Options& options, Report& report);

/// Measures a row, prints it and puts it into the report.
void add(const Row& row, Report& report);

void printHead(const Report& report);
void printNote(const Note& note);
void printScaling(const Scaling& scaling);
/// @return false when the file cannot be written
bool writeJson(const Report& report, const std::string& path);

}  // namespace bench
