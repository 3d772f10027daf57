// check: how the demo tells what it found out, and stops when that is not what was claimed.
#pragma once

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace qvr {

/// What went wrong, as a sentence for the person at the terminal.
class DemoFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws DemoFailure with the sentence unless it holds.
void require(bool holds, const std::string& otherwise);

/// Makes a folder with its parents; one that is there is fine. Throws DemoFailure.
void makeFolder(const std::filesystem::path& folder);

/// Prints the heading of what follows.
void tellHeading(const std::string& heading);
/// Prints the line of one result.
void tell(const std::string& what, const std::string& result);

/// Time since it was made.
class Stopwatch {
public:
    [[nodiscard]] double milliseconds() const {
        return std::chrono::duration<double, std::milli>(Clock::now() - m_begun).count();
    }
    /// As text: "3.1 ms".
    [[nodiscard]] std::string text() const;

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point m_begun = Clock::now();
};

}  // namespace qvr
