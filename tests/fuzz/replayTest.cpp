// Every kept input of the fuzzers, once.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/targets.h"

namespace {

int replay(const char* folder, int (*target)(const std::uint8_t*, std::size_t)) {
    int count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(QVR_CORPUS) / folder)) {
        SCOPED_TRACE(entry.path().filename().string());
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        target(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++count;
    }
    return count;
}

// A target traps on a broken promise; a missing corpus would test nothing.
TEST(FuzzCorpus, Bitmap) {
    EXPECT_GE(replay("bitmap", fuzz::bitmap), 20);
}
TEST(FuzzCorpus, Tools) {
    EXPECT_GE(replay("tools", fuzz::tools), 20);
}
TEST(FuzzCorpus, Readers) {
    EXPECT_GE(replay("readers", fuzz::readers), 5);
}
TEST(FuzzCorpus, Sequences) {
    EXPECT_GE(replay("sequence", fuzz::sequence), 20);
}

}  // namespace
