// A folder that is gone with the test, and whole files in one call. Test programs run beside each other: whatever writes
// has a folder of its own.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

class TemporaryFolder {
public:
    TemporaryFolder() : TemporaryFolder(std::filesystem::temp_directory_path()) {}
    explicit TemporaryFolder(const std::filesystem::path& place) {
        std::string pattern = (place / "qvr-test-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
        m_path = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// @return a folder in memory where there is one: for thousands of synchronised files
    static std::filesystem::path quickPlace() {
        return ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : std::filesystem::temp_directory_path();
    }
    const std::string& path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + '/' + name; }
    /// @return path of a new file with that content
    std::string file(const std::string& name, const std::string& content) const {
        std::ofstream(*this / name, std::ios::binary) << content;
        return *this / name;
    }
    /// @return path of a new file with those values as they stand in memory
    std::string file(const std::string& name, const std::vector<std::uint16_t>& pixels) const {
        return file(name, std::string(reinterpret_cast<const char*>(pixels.data()), 2 * pixels.size()));
    }

private:
    std::string m_path;
};

/// The whole content, or "(missing)".
inline std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return "(missing)";
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The 16-bit values of a raw file.
inline std::vector<std::uint16_t> pixelsOf(const std::string& path) {
    const std::string content = contentOf(path);
    std::vector<std::uint16_t> pixels(content.size() / 2);
    content.copy(reinterpret_cast<char*>(pixels.data()), 2 * pixels.size());
    return pixels;
}
