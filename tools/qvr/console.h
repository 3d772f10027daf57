// What the program prints: results on standard output, everything else on standard error.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "errors.h"

namespace qvr::tool {

enum class ProgressMode { automatic, always, never, json };

/// The options that every verb takes.
struct Common {
    bool quiet = false;    ///< neither warnings nor progress
    bool verbose = false;  ///< notes on what is done
    bool json = false;     ///< results as JSON, one object per file
    bool force = false;    ///< an existing output file is replaced
    ProgressMode progress = ProgressMode::automatic;
};

class Console {
public:
    explicit Console(const Common& common);

    /// Text of a result; the caller ends its lines.
    void result(std::string_view text);
    /// One JSON object on one line of standard output. Bytes that are not UTF-8 are replaced.
    void object(const nlohmann::ordered_json& object);
    /// Bytes for standard output as they are.
    void raw(std::string_view bytes);

    void error(const Failure& failure);
    void error(std::string_view sentence);
    /// "qvr: warning: file: text"; nothing with -q.
    void warning(std::string_view file, std::string_view text);
    /// "qvr: file: text"; only with -v.
    void note(std::string_view file, std::string_view text);

    /// A line on standard error that the next output replaces (terminal) or follows (anything else).
    void progressLine(std::string_view line, bool rewritable);
    /// Ends a line that could still be rewritten.
    void endProgress();

    bool errorIsTerminal() const { return m_terminal; }
    /// Throws when standard output did not take everything.
    void finish();

private:
    void toError(std::string_view text);
    void clearProgress();

    const Common& m_common;
    bool m_terminal;
    bool m_colour;
    bool m_lineOpen = false;
};

}  // namespace qvr::tool
