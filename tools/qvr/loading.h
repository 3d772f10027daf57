// What every verb that reads pixels does first: the options for it, and a file with its adopted pixels.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "adoption.h"
#include "console.h"
#include "sourceReader.h"
#include "windowChoice.h"

namespace qvr::tool {

/// A value of the command line that was not understood. @throws Failure, always
[[noreturn]] void notUnderstood(const std::string& option, const std::string& value,
                                const std::string& advice);

/// --raw, for files without a header.
class InputOptions {
public:
    void declare(CLI::App& app);
    /// @throws Failure for a value that is not understood
    void check();
    const std::optional<RawSpec>& raw() const { return m_raw; }

private:
    std::string m_text;
    std::optional<RawSpec> m_raw;
};

/// --window and --view-preset.
class WindowOptions {
public:
    void declare(CLI::App& app, bool withWindow);
    void check();
    const WindowRequest& request() const { return m_request; }
    const std::vector<ViewPreset>& views() const { return m_views; }

private:
    std::string m_window;
    std::vector<std::string> m_viewTexts;
    WindowRequest m_request;
    std::vector<ViewPreset> m_views;
};

struct Loaded {
    SourceImage source;  ///< without its pixel words, which are no longer needed
    Adoption adoption;
    AdoptedImage image;
    WindowSubject subject() const { return {source, adoption, image}; }
};

/// Reads and adopts a file; its warnings are printed. @throws Failure
Loaded load(const std::string& file, const InputOptions& options, Console& console);
/// The same for a source that was read already.
Loaded adopted(const std::string& file, SourceImage source, Console& console);

/// The keys that every verb's object begins with.
nlohmann::ordered_json commonJson(const Loaded& loaded, const Window& window);
/// "3072 x 3072  12 -> 14 bits  window 4825/8546 (collimation)"
std::string summaryLine(const Loaded& loaded, const Window& window);

}  // namespace qvr::tool
