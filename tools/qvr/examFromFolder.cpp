// qvr exam build: every DICOM file below a folder becomes an image of the exam.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

#include "dicomAttributes.h"
#include "dicomHeader.h"
#include "examBuild.h"
#include "examVerbs.h"
#include "fileLoop.h"

namespace qvr::tool {

namespace fs = std::filesystem;

namespace {

// A file that cannot be opened counts as one, so that it is named.
bool mayBeDicom(const fs::path& path) {
    if (path.filename() == "DICOMDIR") return false;  // the directory of a medium, no image
    std::ifstream file(path, std::ios::binary);
    if (!file) return true;
    std::array<char, 132> begin{};
    file.read(begin.data(), begin.size());
    return looksLikeDicom(
        {reinterpret_cast<const std::uint8_t*>(begin.data()), static_cast<std::size_t>(file.gcount())});
}

// The DICOM files below a folder by name, without those in the exam folder; everything else is counted.
std::vector<std::string> dicomFiles(const BuildRequest& request, Console& console) {
    std::error_code error;
    const auto status = fs::status(request.source, error);
    if (status.type() != fs::file_type::directory)
        throw Failure(
            Exit::unreadable, request.source, "not read",
            status.type() == fs::file_type::not_found ? "there is no such folder" : "it is no folder",
            "Name a folder of DICOM files.");
    std::vector<std::string> files;
    int others = 0, linked = 0;
    fs::recursive_directory_iterator entry(request.source, error);
    for (const fs::recursive_directory_iterator end; !error && entry != end; entry.increment(error)) {
        std::error_code ignored;
        if (entry->is_directory(ignored)) {
            if (fs::equivalent(entry->path(), request.exam, ignored)) {
                entry.disable_recursion_pending();
            } else if (entry->is_symlink(ignored)) {
                console.note(entry->path().string(), "left out, it is a link to a folder");
                ++linked;
            }
            continue;
        }
        const std::string path = entry->path().string();
        if (entry->is_regular_file(ignored) && mayBeDicom(entry->path())) {
            files.push_back(path);
        } else {
            console.note(path, "left out, it is no DICOM image");
            ++others;
        }
    }
    if (error) throw Failure(Exit::unreadable, request.source, "not read", error.message());
    if (files.empty())
        throw Failure(Exit::unreadable, request.source, "not read", "no DICOM file is in it",
                      linked ? "Links to folders are not followed: name what they lead to." : "");
    if (others)
        console.warning(request.source, fmt::format("{} other {} left out (-v names them).", others,
                                                    others == 1 ? "file is" : "files are"));
    if (linked)
        console.warning(request.source,
                        fmt::format("{} left out (-v names {}).",
                                    linked == 1 ? "1 link to a folder is"
                                                : fmt::format("{} links to folders are", linked),
                                    linked == 1 ? "it" : "them"));
    std::sort(files.begin(), files.end());
    return files;
}

class Build {
public:
    Build(const BuildRequest& request, const WindowOptions& window, const Common& common, Console& console)
        : m_request(request),
          m_window(window),
          m_common(common),
          m_console(console),
          m_builder(ExamFolder(request.exam)) {}

    Exit run() {
        std::error_code error;
        if (fs::equivalent(m_request.source, m_request.exam, error))
            throw Failure(Exit::refused, m_request.exam, "not built", "it is the folder of the input files",
                          "Name another one.");
        m_builder.checkFolder(m_common.force);
        const auto files = dicomFiles(m_request, m_console);
        m_builder.checkInputs(files);
        Exit result = Exit::done;
        try {
            result = forEachFile(files, m_common, m_console,
                                 [this](const std::string& file) { return addFile(file); });
        } catch (...) {
            finishAfterFailure();
            throw;
        }
        const auto left = m_builder.finish();
        if (!left.empty()) throw notWrittenOut(left);
        report(m_builder.putInPlace(result == Exit::done));
        return result;
    }

private:
    std::string addFile(const std::string& file) {
        // Patient and pixels come from one reading: the file may be replaced at any moment.
        auto bytes = readBytes(file);
        SourceImage source = readSource(file, bytes, std::nullopt);
        DicomRecords records = readRecords(file, bytes);
        std::vector<std::uint8_t>().swap(bytes);
        const Loaded loaded = adopted(file, std::move(source), m_console);
        const std::string stored = records.image.SOPInstanceUID.GetString();
        if (m_request.newUid && (!unusableInExam(stored).empty() || m_builder.holds(stored)))
            records.image.SOPInstanceUID = newUid().c_str();
        const std::string uid = records.image.SOPInstanceUID.GetString();
        if (uid != stored) m_console.note(file, fmt::format("new SOP Instance UID {}", uid));
        const Window window = chooseWindow(loaded.subject(), m_window.request(), m_window.views(), m_console);
        try {
            m_builder.add(std::move(records), loaded.image, window, m_request.curve);
        } catch (const StopFailure&) {
            throw;
        } catch (const Failure& failure) {
            throw failure.about(file);
        }
        if (m_common.json) {
            auto json = commonJson(loaded, window);
            json["exam"] = m_request.exam;
            json["sop_instance_uid"] = uid;
            json["result"] = "ok";
            m_console.object(json);
        }
        return summaryLine(loaded, window);
    }

    Failure notWrittenOut(const std::vector<std::string>& left) const {
        return {
            Exit::notWritten, m_request.exam, "not finished",
            fmt::format("{} {} not written out: {}{}", left.size(),
                        left.size() == 1 ? "image was" : "images were", fmt::join(left, ", "),
                        m_builder.replaces() ? "" : "; the raw copies are there"),
            m_builder.kept(fmt::format("Make room, then use qvr cache check {} --repair.", m_request.exam))};
    }

    // The failure itself is told by whoever catches it; here the exam is brought to rest as far as that goes.
    void finishAfterFailure() {
        if (m_builder.replaces()) return;
        try {
            const auto left = m_builder.finish();
            if (!left.empty())
                m_console.warning(m_request.exam, fmt::format("{} not written out; the raw copies are there.",
                                                              fmt::join(left, ", ")));
        } catch (const Failure& failure) {
            m_console.warning(
                m_request.exam,
                "the exam file may name an image that was not taken in; qvr cache check tells.");
        }
    }

    void report(const std::set<std::string>& left) {
        ExamRecord record = m_builder.record();
        const auto images = imagesOf(record);
        if (!images.empty() && !left.empty())
            m_console.warning(
                m_request.exam,
                fmt::format("files of {} {} of the exam that was replaced are still in Cache: {}.",
                            left.size(), left.size() == 1 ? "image" : "images", fmt::join(left, ", ")));
        if (images.empty() || m_common.json || m_common.quiet) return;
        m_console.result(fmt::format("{}  {} {} in {} {}\n", printable(m_request.exam), images.size(),
                                     images.size() == 1 ? "image" : "images", record.studies.size(),
                                     record.studies.size() == 1 ? "study" : "studies"));
    }

    const BuildRequest& m_request;
    const WindowOptions& m_window;
    const Common& m_common;
    Console& m_console;
    ExamBuilder m_builder;
};

}  // namespace

Exit buildExam(const BuildRequest& request, const WindowOptions& window, const Common& common,
               Console& console) {
    return Build(request, window, common, console).run();
}

}  // namespace qvr::tool
