// An exam folder: exam.json, and the folder Cache with up to three pixel files per image.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "examFile.h"

namespace qvr::tool {

enum class FileState {
    whole,
    missing,
    tooShort,
    tooLong,
    differs,   ///< the right length, but not the bytes that the exam file tells of
    unusable,  ///< it cannot be read, or it is no file
};

/// What was found under the name of a pixel file.
struct FileReport {
    FileState state = FileState::missing;
    std::uint64_t bytes = 0;
    std::uint64_t expected = 0;
    bool whole() const { return state == FileState::whole; }
};

/// "whole", "missing", "short (100 of 12288 bytes)", …
std::string describe(const FileReport& report);
/// One word: "whole", "missing", "short", "long", "differs", "unusable".
const char* wordFor(FileState state);

/// The checksum (CRC-32) of pixels as their file holds them.
std::uint32_t checksumOf(const std::uint16_t* pixels, std::size_t count);

class ExamFolder {
public:
    explicit ExamFolder(std::string path);

    const std::string& path() const { return m_path; }
    std::string examFile() const { return m_path + "/exam.json"; }
    std::string cache() const { return m_path + "/Cache"; }
    /// The folder in it of an exam that takes its place. That one is whole.
    std::string exchange() const { return m_path + "/.qvr-exchange"; }
    /// In that folder, the cache that was replaced.
    std::string replaced() const { return m_path + "/replaced"; }
    std::string rawCopy(const std::string& uid) const;
    std::string imageFile(const std::string& uid) const;
    std::string workFile(const std::string& uid) const;

    bool hasExamFile() const;
    bool hasCache() const;
    /// Another exam has begun to take its place: its files may be those of both.
    bool inExchange() const;
    /// Names in the cache folder, or in the exam folder, sorted; none when there is no such folder. @throws Failure
    std::vector<std::string> cacheNames() const;
    std::vector<std::string> names() const;

    /// Reads the exam file, but not that of an exam in exchange. @throws Failure
    ExamRecord read() const;
    /// Writes it to a new file and renames it, also after Ctrl-C: what was done is always written down. @throws Failure
    void write(const ExamRecord& exam) const;

    /// Looks at a pixel file; with `content` every byte is read and compared with the checksum.
    FileReport look(const std::string& file, const PixelFileRecord& expected, bool content) const;
    /// The same for the image file. One that the exam file does not know yet must hold what the raw copy does: it was
    /// written after the exam file was.
    FileReport lookAtImage(const ImageRecord& image, bool content) const;
    FileReport lookAtRawCopy(const ImageRecord& image, bool content) const;

private:
    std::string m_path;
};

/// The files of an exam as the disk knows them, so that they are found behind other names too.
class ExamFiles {
public:
    /// @throws Failure when a folder cannot be read
    explicit ExamFiles(const ExamFolder& folder);
    /// True for the exam file, everything in the cache folder, links to them, and what they are links to.
    bool hold(const std::string& path) const;

private:
    std::string m_cache;
    std::set<std::pair<std::uint64_t, std::uint64_t>> m_known;  // device and number
};

}  // namespace qvr::tool
