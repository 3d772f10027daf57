// The new exam's folder takes a name of its own first: from then on it is whole, and everything goes forward.
#include "examExchange.h"

#include <fmt/format.h>

#include <filesystem>
#include <utility>
#include <vector>

#include "errors.h"
#include "safeFile.h"

namespace qvr::tool {

namespace fs = std::filesystem;

namespace {

bool isThere(const std::string& path) {
    std::error_code error;
    return fs::symlink_status(path, error).type() != fs::file_type::not_found;
}

void move(const ExamFolder& folder, const std::string& from, const std::string& to) {
    std::error_code error;
    fs::rename(from, to, error);
    if (!error) return;
    throw Failure(Exit::notWritten, folder.path(), "not replaced to the end",
                  fmt::format("{}: {}", to, error.message()),
                  fmt::format("Use qvr cache check {} --repair to finish it.", folder.path()));
}

// True when the exam is as it was before anything was moved.
bool takeBack(const ExamFolder& folder, const ExamFolder& waiting) {
    const ExamFolder from(folder.exchange());
    std::error_code error;
    if (!from.hasExamFile()) return false;
    if (!from.hasCache()) fs::rename(folder.cache(), from.cache(), error);
    if (!error && isThere(from.replaced())) fs::rename(from.replaced(), folder.cache(), error);
    if (!error) fs::rename(from.path(), waiting.path(), error);
    return !error;
}

}  // namespace

void finishExchange(const ExamFolder& folder) {
    const ExamFolder from(folder.exchange());
    if (!isThere(from.path())) return;
    if (from.hasCache()) {
        if (folder.hasCache() && !isThere(from.replaced())) move(folder, folder.cache(), from.replaced());
        move(folder, from.cache(), folder.cache());
        syncFolder(from.path());
    }
    if (from.hasExamFile()) move(folder, from.examFile(), folder.examFile());
    syncFolder(folder.path());
    // From here on the new exam is in place. Raw copies of other images, and files that are not the exam's, stay in it.
    const ExamFolder old(from.replaced());
    for (const auto& name : old.names()) {
        const std::string back = folder.cache() + '/' + name;
        if (!isThere(back)) move(folder, old.path() + '/' + name, back);
    }
    syncFolder(folder.cache());
    std::error_code error;
    fs::remove_all(from.path(), error);
    if (error)
        throw Failure(Exit::notWritten, from.path(), "not removed", error.message(),
                      "The new exam is in place; this folder holds what it replaced.");
}

void exchangeExam(const ExamFolder& folder, const ExamFolder& waiting) {
    std::error_code error, ignored;
    for (const auto& [from, to] :
         {std::pair(folder.cache(), waiting.cache()), std::pair(folder.examFile(), waiting.examFile())}) {
        const auto status = fs::status(from, error);
        if (fs::exists(status)) fs::permissions(to, status.permissions(), ignored);
    }
    syncFolder(waiting.cache());
    syncFolder(waiting.path());
    fs::rename(waiting.path(), folder.exchange(), error);
    if (error)
        throw Failure(Exit::notWritten, folder.path(), "not built", error.message(),
                      "The exam that was there is kept as it was.");
    syncFolder(folder.path());
    try {
        finishExchange(folder);
    } catch (const Failure& failure) {
        if (!takeBack(folder, waiting)) throw;
        throw Failure(Exit::notWritten, folder.path(), "not built", "it could not take its place",
                      "The exam that was there is kept as it was.");
    }
}

}  // namespace qvr::tool
