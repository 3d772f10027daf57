// Checking reads; only repairImage and removeTemporary write.
#include "cacheCheck.h"

#include <fmt/format.h>

#include <filesystem>
#include <map>
#include <set>

#include "safeFile.h"

namespace qvr::tool {

namespace fs = std::filesystem;

namespace {

bool absentOrShort(const FileReport& report) {
    return report.state == FileState::missing || report.state == FileState::tooShort;
}

bool sameContent(const PixelFileRecord& a, const PixelFileRecord& b) {
    return a.columns == b.columns && a.rows == b.rows && a.checksum == b.checksum;
}

// Puts a sentence into the report when it fails. Where it succeeds, the bytes are those that were just compared.
bool restore(const ExamFolder& folder, const std::string& from, const std::string& to,
             const PixelFileRecord& file, ImageCheck& check) {
    const auto needed = static_cast<double>(file.bytes());
    const double space = freeSpace(folder.cache());
    if (CopyFileA(from.c_str(), to.c_str(), 0)) return true;
    check.notRestored.emplace(
        Exit::notWritten, to, "not restored",
        space < needed ? noSpaceText(needed, space) : fmt::format("the copy of {} cannot be written", from));
    return false;
}

std::string sizeOf(const std::string& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error)) return "no file";
    const auto bytes = fs::file_size(path, error);
    return error ? "unreadable" : fmt::format("{} bytes", bytes);
}

// "R.1.2.3.raw" is the raw copy of 1.2.3. Empty when the name is none of that kind.
std::string uidIn(const std::string& name, char role) {
    if (name.size() <= 6 || name[0] != role || name[1] != '.' || !name.ends_with(".raw")) return {};
    return name.substr(2, name.size() - 6);
}

// Files of an image without a record: nobody knows its size, but a file that is shorter than the other is not whole.
std::string describeUnknown(const ExamFolder& folder, const std::string& uid) {
    std::error_code rawError, imageError;
    const auto raw = fs::file_size(folder.rawCopy(uid), rawError);
    const auto image = fs::file_size(folder.imageFile(uid), imageError);
    if (imageError) return fmt::format("raw copy {} bytes, no image file", raw);
    if (rawError) return fmt::format("no raw copy, image file {} bytes", image);
    const char* compared = image < raw   ? " (short: less than the raw copy)"
                           : image > raw ? " (more than the raw copy)"
                                         : " (as long as the raw copy)";
    return fmt::format("raw copy {} bytes, image file {} bytes{}", raw, image, compared);
}

}  // namespace

ImageCheck checkImage(const ExamFolder& folder, const ImageRecord& image) {
    return {image.attributes.SOPInstanceUID.GetString(),
            folder.lookAtImage(image, true),
            folder.lookAtRawCopy(image, true),
            {},
            {}};
}

ImageCheck repairImage(const ExamFolder& folder, ImageRecord& image) {
    ImageCheck check = checkImage(folder, image);
    const std::string raw = folder.rawCopy(check.uid);
    const std::string file = folder.imageFile(check.uid);
    const bool edited = image.imageFile && !sameContent(*image.imageFile, image.rawCopy);
    const auto isAsAcquired = [&] {
        image.imageFile = image.rawCopy;
        image.attributes.Width = image.rawCopy.columns;
        image.attributes.Height = image.rawCopy.rows;
    };
    if (check.rawCopy.whole() && absentOrShort(check.imageFile)) {
        if (!restore(folder, raw, file, image.rawCopy, check)) return check;
        isAsAcquired();
        check.imageFile = folder.look(file, image.rawCopy, false);
        check.repaired =
            edited ? "image file restored from the raw copy: the pixels as acquired, changes are lost"
                   : "image file restored from the raw copy";
        return check;
    }
    if (edited && !check.imageFile.whole() && folder.look(file, image.rawCopy, true).whole()) {
        // A repair that ended between the file and the exam file.
        isAsAcquired();
        check.imageFile = folder.look(file, image.rawCopy, false);
        check.repaired = "image file has the pixels as acquired, the exam file tells of that now";
        return check;
    }
    if (check.imageFile.whole()) image.imageFile = image.imageFile.value_or(image.rawCopy);
    if (check.imageFile.whole() && absentOrShort(check.rawCopy) &&
        sameContent(*image.imageFile, image.rawCopy) && restore(folder, file, raw, image.rawCopy, check)) {
        check.rawCopy = folder.look(raw, image.rawCopy, false);
        check.repaired = "raw copy restored from the image file, which has the same pixels";
    }
    return check;
}

std::vector<StrayFile> strayFiles(const ExamFolder& folder, ExamRecord& exam) {
    using Kind = StrayFile::Kind;
    std::set<std::string> known;
    for (const auto& image : imagesOf(exam)) known.insert(image.uid());
    std::vector<StrayFile> strays;
    for (const auto& name : folder.names()) {
        if (!isTemporaryName(name)) continue;
        const std::string path = folder.path() + '/' + name;
        std::error_code error;
        if (fs::is_directory(path, error))
            strays.push_back({Kind::unfinished, name, "it was to replace this one", false});
        else
            strays.push_back({Kind::temporary, name, sizeOf(path), false});
    }
    std::error_code missing;
    if (fs::exists(folder.exchange(), missing))
        strays.push_back({Kind::replaced, fs::path(folder.exchange()).filename().string(),
                          "files that this one replaced are in it", false});

    std::set<std::string> unknown;
    for (const auto& name : folder.cacheNames()) {
        const std::string path = folder.cache() + '/' + name;
        std::string uid = uidIn(name, 'R');
        if (uid.empty()) uid = uidIn(name, 'I');
        std::error_code error;
        if (!uid.empty() && fs::is_regular_file(path, error)) {
            if (!known.contains(uid)) unknown.insert(uid);
            continue;
        }
        if (!uid.empty() && known.contains(uid)) continue;  // reported with its image
        const Kind kind = isTemporaryName(name)       ? Kind::temporary
                          : !uidIn(name, 'W').empty() ? Kind::workFile
                                                      : Kind::other;
        strays.push_back({kind, "Cache/" + name, sizeOf(path), false});
    }
    for (const auto& uid : unknown)
        strays.push_back({Kind::unknownImage, uid, describeUnknown(folder, uid), false});
    return strays;
}

bool removeTemporary(const ExamFolder& folder, const StrayFile& file) {
    std::error_code error;
    fs::remove_all(folder.path() + '/' + file.name, error);
    return !error;
}

}  // namespace qvr::tool
