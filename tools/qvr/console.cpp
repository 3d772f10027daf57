// Standard output and standard error; colour only on a terminal and without NO_COLOR.
#include "console.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace qvr::tool {

namespace {

bool colourWanted() {
    const char* off = std::getenv("NO_COLOR");
    return !off || !*off;
}

std::string painted(bool colour, const char* code, std::string_view text) {
    return colour ? fmt::format("\x1b[{}m{}\x1b[0m", code, text) : std::string(text);
}

}  // namespace

Console::Console(const Common& common)
    : m_common(common), m_terminal(isatty(STDERR_FILENO) == 1), m_colour(m_terminal && colourWanted()) {}

void Console::raw(std::string_view bytes) {
    clearProgress();
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);  // finish() looks at the stream's error flag
}

void Console::result(std::string_view text) {
    raw(text);
}

void Console::object(const nlohmann::ordered_json& object) {
    raw(object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n');
}

void Console::toError(std::string_view text) {
    clearProgress();
    std::fflush(stdout);
    std::fwrite(text.data(), 1, text.size(), stderr);
}

void Console::error(const Failure& failure) {
    std::string text = failure.printed();
    text.replace(0, 4, painted(m_colour, "31", "qvr:"));
    toError(text + '\n');
}

void Console::error(std::string_view sentence) {
    toError(fmt::format("{} {}\n", painted(m_colour, "31", "qvr:"), sentence));
}

void Console::warning(std::string_view file, std::string_view text) {
    if (m_common.quiet) return;
    toError(fmt::format("qvr: {} {}: {}\n", painted(m_colour, "33", "warning:"), printable(file),
                        printable(text)));
}

void Console::note(std::string_view file, std::string_view text) {
    if (m_common.verbose) toError(fmt::format("qvr: {}: {}\n", printable(file), printable(text)));
}

void Console::progressLine(std::string_view line, bool rewritable) {
    toError(rewritable ? std::string(line) : std::string(line) + '\n');
    m_lineOpen = rewritable;
}

void Console::clearProgress() {
    if (!m_lineOpen) return;
    std::fputs("\r\x1b[K", stderr);
    m_lineOpen = false;
}

void Console::endProgress() {
    if (m_lineOpen) std::fputc('\n', stderr);
    m_lineOpen = false;
}

void Console::finish() {
    endProgress();
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        throw Failure(Exit::notWritten, "standard output", "not written", "it takes no more data");
}

}  // namespace qvr::tool
