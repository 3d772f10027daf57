// qvr cache check: are all files of an exam whole, and with --repair, what can be brought back.
#include <fmt/format.h>

#include <unistd.h>

#include <filesystem>

#include "../cacheCheck.h"
#include "../examExchange.h"
#include "../examLock.h"
#include "../interrupt.h"
#include "../progress.h"
#include "../safeFile.h"
#include "../verb.h"

namespace qvr::tool {

namespace fs = std::filesystem;

namespace {

const char* wordFor(StrayFile::Kind kind) {
    switch (kind) {
        case StrayFile::Kind::unknownImage:
            return "not in the exam file";
        case StrayFile::Kind::workFile:
            return "work file that was never committed";
        case StrayFile::Kind::temporary:
            return "temporary file of a write that was killed";
        case StrayFile::Kind::unfinished:
            return "exam of a build that did not end";
        case StrayFile::Kind::replaced:
            return "replaced exam";
        case StrayFile::Kind::other:
            break;
    }
    return "unknown file";
}

nlohmann::ordered_json toJson(const FileReport& report) {
    return {{"state", wordFor(report.state)}, {"bytes", report.bytes}, {"expected", report.expected}};
}

class Cache : public Verb {
public:
    void declare(CLI::App& app) override {
        app.require_subcommand(1);
        auto* check = app.add_subcommand(
            "check", "every image file and raw copy: whole, missing, short; orphans, temporary files");
        check->set_help_flag("-h,--help", "print this help and exit");
        check->add_option("EXAM", m_path, "exam folder")->required();
        check->add_flag(
            "--repair", m_repair,
            "restore missing and short image files from whole raw copies, and remove temporary files");
    }

    Exit run(const Common& common, Console& console) override {
        const ExamFolder folder(m_path);
        std::optional<ExamLock> lock;
        if (m_repair) {
            lock.emplace(m_path, ExamLock::Use::writing);
            checkWritable(folder);
            finishExchange(folder);
        }
        ExamRecord exam = readExam(folder, console);
        const std::string asRead = toText(exam);
        try {
            checkImages(folder, exam, common, console);
        } catch (...) {
            saveRepairs(folder, exam, asRead);
            throw;
        }
        saveRepairs(folder, exam, asRead);
        checkStrays(folder, exam, common, console);
        if (!common.json && !common.quiet)
            console.result(fmt::format("{}  {} {}, {} {}{}\n", printable(m_path), m_images,
                                       m_images == 1 ? "image" : "images", m_problems,
                                       m_problems == 1 ? "problem" : "problems",
                                       m_repairable && !m_repair ? "; --repair mends some" : ""));
        if (m_notRestored) return Exit::notWritten;
        return m_problems == 0 ? Exit::done : Exit::someFailed;
    }

private:
    // Without an exam file the cache is still told, file by file.
    ExamRecord readExam(const ExamFolder& folder, Console& console) {
        if (folder.hasExamFile() || !folder.hasCache() || folder.inExchange()) return folder.read();
        console.warning(m_path, "it has no exam.json; the files are named, but nobody knows their sizes.");
        ++m_problems;
        return {};
    }

    static void checkWritable(const ExamFolder& folder) {
        for (const auto& path : {folder.path(), folder.cache()}) {
            std::error_code error;
            if (!fs::is_directory(path, error) || access(path.c_str(), W_OK) == 0) continue;
            throw Failure(Exit::notWritten, path, "not repaired", "nothing may be written into it",
                          "Check its permissions.");
        }
    }

    void checkImages(const ExamFolder& folder, ExamRecord& exam, const Common& common, Console& console) {
        const auto images = imagesOf(exam);
        Progress progress(common, console, images.size());
        for (const auto& image : images) {
            stopIfInterrupted();
            progress.start(image.uid());
            const auto check =
                m_repair ? repairImage(folder, image.image()) : checkImage(folder, image.image());
            ++m_images;
            m_restored = m_restored || !check.repaired.empty();
            if (!check.whole()) ++m_problems;
            if (!check.imageFile.whole() && check.rawCopy.whole()) m_repairable = true;
            report(check, common, console);
            if (check.notRestored) {
                m_notRestored = true;
                console.error(*check.notRestored);
            }
            progress.finish(image.uid(), check.whole() ? std::optional<std::string>("whole") : std::nullopt);
        }
        console.endProgress();
    }

    void report(const ImageCheck& check, const Common& common, Console& console) const {
        if (common.json) {
            console.object({{"file", m_path},
                            {"sop_instance_uid", check.uid},
                            {"image_file", toJson(check.imageFile)},
                            {"raw_copy", toJson(check.rawCopy)},
                            {"repaired", check.repaired},
                            {"result", check.whole() ? "ok" : "failed"}});
            return;
        }
        std::string text = fmt::format("{}  image file {}, raw copy {}\n", check.uid,
                                       describe(check.imageFile), describe(check.rawCopy));
        if (!check.repaired.empty()) text += fmt::format("  {}\n", check.repaired);
        console.result(text);
    }

    // The exam file tells of the restored files too, but is not touched where nothing was restored.
    void saveRepairs(const ExamFolder& folder, const ExamRecord& exam, const std::string& asRead) const {
        if (!m_repair || toText(exam) == asRead) return;
        try {
            folder.write(exam);
        } catch (const Failure& failure) {
            if (!m_restored) throw;
            throw Failure(Exit::notWritten, folder.examFile(), "not written",
                          "image files are restored, and it does not tell of them yet",
                          fmt::format("Repeat the repair ({} are free).", readableSize(freeSpace(m_path))));
        }
    }

    void checkStrays(const ExamFolder& folder, ExamRecord& exam, const Common& common, Console& console) {
        for (auto& file : strayFiles(folder, exam)) {
            const bool temporary =
                file.kind == StrayFile::Kind::temporary || file.kind == StrayFile::Kind::unfinished;
            m_repairable = m_repairable || temporary || file.kind == StrayFile::Kind::replaced;
            if (m_repair && temporary) file.removed = removeTemporary(folder, file);
            if (!file.removed) ++m_problems;
            if (common.json)
                console.object({{"file", m_path},
                                {"stray", file.name},
                                {"kind", wordFor(file.kind)},
                                {"found", file.described},
                                {"result", file.removed ? "removed" : "failed"}});
            else
                console.result(fmt::format("{}  {}: {}{}\n", printable(file.name), wordFor(file.kind),
                                           file.described, file.removed ? ", removed" : ""));
        }
    }

    std::string m_path;
    bool m_repair = false;
    bool m_restored = false;
    bool m_notRestored = false;
    bool m_repairable = false;
    int m_images = 0;
    int m_problems = 0;
};

const VerbEntry entry(90, "cache", "check the files of an exam folder, and repair them", makeVerb<Cache>);

}  // namespace

}  // namespace qvr::tool
