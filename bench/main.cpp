// qvr_bench: every pixel operation beside the machine's limit for it, measured in the same run.
#include <stdlib.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <string>

#include "bench/peers.h"
#include "bench/sample.h"
#include "tools/phantom/phantom.h"

namespace bench {

Sample makeSample(int width, int height) {
    const auto phantom = qvr::makePhantom({qvr::PhantomKind::chest, width, height, 1});
    return {width, height, qvr::copyPixels(width, height, phantom.data())};
}

namespace {

bool wanted(const std::string& only, const char* group) {
    return only.empty() || only.find(group) != std::string::npos;
}

void run(const std::string& only, bool scaling, const Options& options, Report& report) {
    if (scaling) return addScaling(options, report);
    printHead(report);
    if (wanted(only, "exam")) addExamRun(options, report);
    for (const int side : {3072, 4288}) {
        const Sample sample = makeSample(side, side);
        if (wanted(only, "display")) addDisplayRows(sample, options, report);
        if (wanted(only, "toolkit")) addToolkitRows(sample, options, report);
        if (wanted(only, "file")) addFileRows(sample, options, report);
        if (side == 3072) {
            if (wanted(only, "picture")) addPictureRows(sample, options, report);
            if (wanted(only, "surface")) addSurfaceRows(sample, report);
            if (wanted(only, "table")) addTableRows(report);
            if (wanted(only, "operation")) addResidency(sample, options, report);
        } else if (wanted(only, "operation")) {
            addAcquisition(sample, options, report);
            addDrag(sample, options, report);
        }
    }
    if (only.empty()) addScaling(options, report);
}

}  // namespace

}  // namespace bench

int main(int count, char** arguments) {
    CLI::App app("Measures the library's pixel operations beside the limits of memory and disk.");
    std::string json;
    std::string only;
    std::string folder = ".";
    bool scaling = false;
    bench::Options options;
    bench::Report report;
    app.add_flag("--peers", options.peers, "measure OpenCV and DCMTK beside ours");
    app.add_flag("--scaling", scaling, "nothing but the time per megapixel from 512 x 512 to 8192 x 8192");
    app.add_option("--json", json, "write the results to this file as well");
    app.add_option(
        "--only", only,
        "comma-separated groups: exam, display, toolkit, file, picture, surface, table, operation");
    app.add_option("--folder", folder,
                   "where the files of the file rows are written, the disk that is measured")
        ->check(CLI::ExistingDirectory);
    CLI11_PARSE(app, count, arguments);
    if (options.peers && !bench::peersBuilt()) {
        std::fprintf(
            stderr,
            "qvr_bench: built without OpenCV and DCMTK; install libopencv-dev and libdcmtk-dev and build "
            "again\n");
        return 1;
    }
    std::string scratch = folder + "/qvr-bench-XXXXXX";
    if (!mkdtemp(scratch.data())) {
        std::perror(("qvr_bench: cannot make a folder in " + folder).c_str());
        return 1;
    }
    options.folder = scratch;
    report.peers = options.peers;
    bench::run(only, scaling, options, report);
    std::error_code ignored;
    std::filesystem::remove_all(scratch, ignored);
    if (json.empty() || bench::writeJson(report, json)) return 0;
    std::fprintf(stderr, "qvr_bench: cannot write %s\n", json.c_str());
    return 1;
}
