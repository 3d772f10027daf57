// Names of an exam's files and what is found under them.
#include "examFolder.h"

#include <dcmtk/config/osconfig.h>
#include <dcmtk/ofstd/ofcrc32.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

#include "errors.h"
#include "interrupt.h"
#include "safeFile.h"
#include "sourceReader.h"

namespace qvr::tool {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    if (fs::status(folder, error).type() == fs::file_type::not_found) return names;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        names.push_back(entry->path().filename().string());
    if (error) throw Failure(Exit::unreadable, folder, "not read", error.message(), "Check its permissions.");
    std::sort(names.begin(), names.end());
    return names;
}

// Nothing when the file cannot be read to its end.
std::optional<std::uint32_t> checksumOfFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<char> block(std::size_t{1} << 18);
    OFCRC32 sum;
    while (file) {
        file.read(block.data(), static_cast<std::streamsize>(block.size()));
        sum.addBlock(block.data(), static_cast<unsigned long>(file.gcount()));
        stopIfInterrupted();
    }
    if (!file.eof()) return std::nullopt;
    return static_cast<std::uint32_t>(sum.getCRC32());
}

std::optional<std::pair<std::uint64_t, std::uint64_t>> numberOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return std::pair(std::uint64_t{status.st_dev}, std::uint64_t{status.st_ino});
}

}  // namespace

const char* wordFor(FileState state) {
    constexpr std::array words = {"whole", "missing", "short", "long", "differs", "unusable"};
    return words.at(static_cast<std::size_t>(state));
}

std::string describe(const FileReport& report) {
    switch (report.state) {
        case FileState::tooShort:
        case FileState::tooLong:
            return fmt::format("{} ({} of {} bytes)", wordFor(report.state), report.bytes, report.expected);
        case FileState::differs:
            return "not as recorded (right length, other content)";
        case FileState::unusable:
            return "unreadable";
        default:
            return wordFor(report.state);
    }
}

std::uint32_t checksumOf(const std::uint16_t* pixels, std::size_t count) {
    OFCRC32 sum;
    std::vector<std::uint8_t> block;
    constexpr std::size_t step = std::size_t{1} << 16;
    for (std::size_t begin = 0; begin < count; begin += step) {
        block.clear();
        for (std::size_t i = begin; i < std::min(count, begin + step); ++i) {
            block.push_back(static_cast<std::uint8_t>(pixels[i] & 0xff));
            block.push_back(static_cast<std::uint8_t>(pixels[i] >> 8));
        }
        sum.addBlock(block.data(), static_cast<unsigned long>(block.size()));
    }
    return static_cast<std::uint32_t>(sum.getCRC32());
}

ExamFolder::ExamFolder(std::string path) : m_path(std::move(path)) {
    while (m_path.size() > 1 && m_path.back() == '/') m_path.pop_back();
}

std::string ExamFolder::rawCopy(const std::string& uid) const {
    return fmt::format("{}/R.{}.raw", cache(), uid);
}
std::string ExamFolder::imageFile(const std::string& uid) const {
    return fmt::format("{}/I.{}.raw", cache(), uid);
}
std::string ExamFolder::workFile(const std::string& uid) const {
    return fmt::format("{}/W.{}.raw", cache(), uid);
}

bool ExamFolder::hasExamFile() const {
    std::error_code error;
    return fs::exists(examFile(), error);
}

bool ExamFolder::hasCache() const {
    std::error_code error;
    return fs::is_directory(cache(), error);
}

bool ExamFolder::inExchange() const {
    const ExamFolder other(exchange());
    return other.hasCache() || other.hasExamFile();
}

std::vector<std::string> ExamFolder::cacheNames() const {
    return hasCache() ? namesIn(cache()) : std::vector<std::string>();
}

std::vector<std::string> ExamFolder::names() const {
    return namesIn(m_path);
}

ExamRecord ExamFolder::read() const {
    std::error_code error;
    const auto status = fs::status(m_path, error);
    if (status.type() == fs::file_type::not_found)
        throw Failure(Exit::unreadable, m_path, "not read", "there is no such folder", "Check the path.");
    if (status.type() == fs::file_type::none)
        throw Failure(Exit::unreadable, m_path, "not read", error.message(), "Check the path.");
    if (status.type() != fs::file_type::directory)
        throw Failure(Exit::unreadable, m_path, "not read", "it is no folder", "Name an exam folder.");
    if (inExchange())
        throw Failure(Exit::unreadable, m_path, "not read",
                      "it was being replaced when the program was ended",
                      fmt::format("Use qvr cache check {} --repair to finish that.", m_path));
    if (!hasExamFile())
        throw Failure(Exit::unreadable, m_path, "not read", "it is no exam folder: it has no exam.json",
                      hasCache() ? "See what its Cache holds with qvr cache check." : "Name an exam folder.");
    return parseExam(examFile(), readBytes(examFile()));
}

void ExamFolder::write(const ExamRecord& exam) const {
    const std::string text = toText(exam);
    if (text.size() > kLargestExamFile)
        throw Failure(Exit::notWritten, examFile(), "not written",
                      fmt::format("it would have {}", readableSize(static_cast<double>(text.size()))),
                      "Shorten the texts of its images.");
    writeSafely(examFile(), {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, true, true);
}

FileReport ExamFolder::look(const std::string& file, const PixelFileRecord& expected, bool content) const {
    FileReport report;
    report.expected = expected.bytes();
    std::error_code error;
    const auto status = fs::status(file, error);
    if (status.type() == fs::file_type::not_found) return report;
    report.state = FileState::unusable;
    if (status.type() != fs::file_type::regular) return report;
    report.bytes = fs::file_size(file, error);
    if (error) return report;
    report.state = report.bytes < report.expected   ? FileState::tooShort
                   : report.bytes > report.expected ? FileState::tooLong
                                                    : FileState::whole;
    if (!content || !report.whole()) return report;
    const auto sum = checksumOfFile(file);
    report.state = !sum                        ? FileState::unusable
                   : *sum == expected.checksum ? FileState::whole
                                               : FileState::differs;
    return report;
}

FileReport ExamFolder::lookAtImage(const ImageRecord& image, bool content) const {
    return look(imageFile(image.attributes.SOPInstanceUID.GetString()),
                image.imageFile.value_or(image.rawCopy), content);
}

FileReport ExamFolder::lookAtRawCopy(const ImageRecord& image, bool content) const {
    return look(rawCopy(image.attributes.SOPInstanceUID.GetString()), image.rawCopy, content);
}

ExamFiles::ExamFiles(const ExamFolder& folder) : m_cache(folder.cache()) {
    std::vector<std::string> paths = {folder.examFile()};
    for (const auto& name : folder.cacheNames()) paths.push_back(m_cache + '/' + name);
    for (const auto& path : paths)
        if (const auto number = numberOf(path)) m_known.insert(*number);
}

bool ExamFiles::hold(const std::string& path) const {
    const auto number = numberOf(path);
    if (number && m_known.contains(*number)) return true;
    std::error_code error;
    const auto parent = fs::weakly_canonical(path, error).parent_path();
    return !error && fs::equivalent(parent, m_cache, error);
}

}  // namespace qvr::tool
