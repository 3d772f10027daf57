// A failure ends the work on its file only, unless it says that nothing further can be done.
#include "fileLoop.h"

#include <fmt/format.h>

#include <optional>

#include "interrupt.h"
#include "progress.h"

namespace qvr::tool {

namespace {

void reportFailure(const std::string& file, const Failure& failure, const Common& common, Console& console) {
    if (common.json)
        console.object(nlohmann::ordered_json{{"file", file},
                                              {"result", "failed"},
                                              {"exit_code", static_cast<int>(failure.code())},
                                              {"error", failure.what()}});
    console.error(failure);
}

}  // namespace

Exit forEachFile(const std::vector<std::string>& files, const Common& common, Console& console,
                 const std::function<std::string(const std::string&)>& work) {
    Progress progress(common, console, files.size());
    std::vector<std::string> failed;
    Exit first = Exit::done;
    for (const auto& file : files) {
        stopIfInterrupted();
        progress.start(file);
        try {
            progress.finish(file, work(file));
        } catch (const StopFailure&) {
            throw;
        } catch (const Failure& failure) {
            if (failure.code() == Exit::interrupted) throw;
            if (failed.empty()) first = failure.code();
            failed.push_back(printable(file));
            reportFailure(file, failure, common, console);
            progress.finish(file, std::nullopt);
        }
    }
    console.endProgress();
    if (failed.empty()) return Exit::done;
    if (files.size() > 1)
        console.error(
            fmt::format("{} of {} files failed: {}.", failed.size(), files.size(), fmt::join(failed, ", ")));
    return failed.size() == files.size() ? first : Exit::someFailed;
}

}  // namespace qvr::tool
