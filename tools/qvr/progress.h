// Progress: on a terminal one line that rewrites itself, elsewhere one line per file, or one JSON object per file.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "console.h"

namespace qvr::tool {

class Progress {
public:
    /// @param total  how many files there are; with one, nothing is shown unless --progress asks for it
    Progress(const Common& common, Console& console, std::size_t total);

    void start(const std::string& file);
    /// @param summary  what the line says, without name and time; nothing for a file that failed, whose own sentence
    ///                 says it already
    void finish(const std::string& file, const std::optional<std::string>& summary);

private:
    std::string counter() const;

    Console& m_console;
    std::size_t m_total;
    std::size_t m_index = 0;
    bool m_json = false;
    bool m_lines = false;
    std::chrono::steady_clock::time_point m_begin;
};

}  // namespace qvr::tool
