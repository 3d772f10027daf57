// Raw files, beside a plain write with its sync and a plain read.
#include <unistd.h>

#include "bench/limits.h"
#include "bench/sample.h"
#include "qvr/image/QVR_COMP.h"

namespace bench {

void addFileRows(const Sample& sample, const Options& options, Report& report) {
    const std::string plain = options.folder + "/plain.raw";
    const std::string ours = options.folder + "/ours.raw";
    const std::size_t bytes = 2 * sample.count();
    const std::uint16_t* const pixels = sample.pixels.get();
    const Work limit = [=] { writeFile(plain.c_str(), pixels, bytes); };
    const Work write = [=, &sample] {
        QVR_COMP_WriteRAWFile(ours.c_str(), sample.width, sample.height, pixels);
    };
    Row row{.kernel = "raw write, new file",
            .size = sample.size(),
            .bytes = sample.bytes(),
            .clock = Clock::elapsed,
            .limit = limit,
            .ours =
                [=] {
                    unlink(ours.c_str());
                    write();
                },
            .rounds = 9};
    add(row, report);
    row.kernel = "raw write, over an old file";
    row.ours = write;
    add(row, report);

    // One target for both, and processor time: both copy out of the page cache.
    const auto target = std::make_shared<qvr::Pixels>(qvr::makePixels(sample.width, sample.height));
    row.kernel = "raw read";
    row.limit = [=] { readFile(ours.c_str(), target->get(), bytes); };
    row.ours = [=, &sample] {
        QVR_COMP_ReadRAWFile(ours.c_str(), sample.width, sample.height, target->get());
    };
    row.clock = Clock::processor;
    row.rounds = 21;
    add(row, report);
}

}  // namespace bench
