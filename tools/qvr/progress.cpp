// How progress is put into a line.
#include "progress.h"

#include <fmt/format.h>

namespace qvr::tool {

Progress::Progress(const Common& common, Console& console, std::size_t total)
    : m_console(console), m_total(total) {
    const bool several = total > 1;
    m_json = common.progress == ProgressMode::json;
    m_lines =
        common.progress == ProgressMode::always || (common.progress == ProgressMode::automatic && several);
    if (common.quiet) m_json = m_lines = false;
}

void Progress::start(const std::string& file) {
    ++m_index;
    m_begin = std::chrono::steady_clock::now();
    if (m_lines && m_console.errorIsTerminal())
        m_console.progressLine(fmt::format("{} {} ...", counter(), printable(file)), true);
}

void Progress::finish(const std::string& file, const std::optional<std::string>& summary) {
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
    if (m_json) {
        const nlohmann::ordered_json line = {{"index", m_index},
                                             {"count", m_total},
                                             {"file", file},
                                             {"result", summary ? "ok" : "failed"},
                                             {"seconds", seconds}};
        m_console.progressLine(line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace),
                               false);
    } else if (m_lines && summary) {
        m_console.progressLine(
            fmt::format("{} {}   {}  ok   {:.2f} s", counter(), printable(file), *summary, seconds),
            m_console.errorIsTerminal());
    }
}

std::string Progress::counter() const {
    const auto total = fmt::format("{}", m_total);
    return fmt::format("[{:>{}}/{}]", m_index, total.size(), total);
}

}  // namespace qvr::tool
