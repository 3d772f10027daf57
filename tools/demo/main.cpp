// qvr_demo: shows what the library does with radiographs, as pictures in a folder and a line for each.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <utility>

#include "tools/demo/check.h"
#include "tools/demo/contactSheet.h"
#include "tools/demo/examRoad.h"
#include "tools/demo/sample.h"
#include "tools/demo/walk.h"

namespace {

constexpr int kViewsOfASample = 8;

void demonstrate(const std::filesystem::path& out, const std::string& sampleFolder) {
    qvr::makeFolder(out);
    auto samples = qvr::madeSamples();
    if (!sampleFolder.empty()) {
        for (auto& sample : qvr::samplesIn(sampleFolder)) samples.push_back(std::move(sample));
    }
    qvr::ContactSheet sheet(kViewsOfASample, {qvr::kWindowWidth / 5, qvr::kWindowHeight / 5});
    for (const auto& sample : samples) qvr::walkThrough(sample, out, sheet);
    const auto path = out / "sheet.png";
    sheet.save(path);
    std::printf("%s  all of them on one sheet\n", path.c_str());
    qvr::takeTheRoad(std::move(samples), out / "exam");
}

int run(int argc, char** argv) {
    CLI::App app("Shows what the library does with radiographs.");
    std::string out = "out";
    std::string samples;
    app.add_option("--out", out, "folder for the pictures")->capture_default_str();
    app.add_option("--samples", samples, "folder with more radiographs, NAME.raw and NAME.json each");
    CLI11_PARSE(app, argc, argv);
    demonstrate(out, samples);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fflush(stdout);
        std::fprintf(stderr, "qvr_demo: %s\n", error.what());
        return 1;
    }
}
