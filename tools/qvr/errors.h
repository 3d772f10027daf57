// The one way in which the tool fails: an exit code and one sentence.
//
// A sentence reads "file: what: why. what to do." It is printed once, by the place that knows which file is worked on;
// everything below throws a Failure and prints nothing.
#pragma once

#include <exception>
#include <string>
#include <string_view>

namespace qvr::tool {

/// Exit codes of the program.
enum class Exit : int {
    done = 0,
    someFailed = 1,   ///< some files failed, others are done
    usage = 2,        ///< the command line, or an argument that does not fit the file
    unreadable = 3,   ///< input missing, unreadable or not an image
    unsupported = 4,  ///< readable, but not supported: compression, colour, bits
    notWritten = 5,   ///< output could not be written
    refused = 6,      ///< refused for safety
    internal = 7,     ///< internal error
    interrupted = 130
};

class Failure : public std::exception {
public:
    /// Any part may be empty and is then left out.
    /// @param subject  the file, or what else is concerned
    /// @param what     what did not happen: "not read"
    /// @param why      the reason, without a full stop
    /// @param advice   what to do, with its full stop
    Failure(Exit code, std::string_view subject, std::string_view what, std::string_view why,
            std::string_view advice = {});

    /// The same failure with its subject in front, for a place that did not know it.
    Failure about(std::string_view subject) const;

    Exit code() const noexcept { return m_code; }
    /// The sentence on one line.
    const char* what() const noexcept override { return m_sentence.c_str(); }
    /// The sentence as printed: a long one has its advice on a second, indented line.
    std::string printed() const;

private:
    Exit m_code;
    std::string m_sentence;
    std::size_t m_adviceAt;  // position of the advice in m_sentence
};

/// A failure after which no further file is worked on.
class StopFailure : public Failure {
public:
    using Failure::Failure;
    explicit StopFailure(const Failure& failure) : Failure(failure) {}
};

/// Text from a file or the command line, fit for one line of output: control bytes become '?'.
std::string printable(std::string_view text);

}  // namespace qvr::tool
