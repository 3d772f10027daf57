// A verb of the command line, and the list of them.
//
// Each verb is one file in verbs/: a class derived from Verb and, at its end, one `const VerbEntry` that enters it into
// the list. Nothing else names it.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <vector>

#include "console.h"
#include "errors.h"

namespace qvr::tool {

class Verb {
public:
    Verb() = default;
    virtual ~Verb() = default;
    Verb(const Verb&) = delete;
    Verb& operator=(const Verb&) = delete;

    /// Declares the verb's own options and its files; the common options are there already.
    virtual void declare(CLI::App& app) = 0;
    /// The option that names what is written: only with it has --force something to act on.
    virtual const char* targetOption() const { return "--output"; }
    /// Does the work. @throws Failure for what concerns no single file
    virtual Exit run(const Common& common, Console& console) = 0;
};

class VerbEntry {
public:
    /// @param rank  place in the help
    VerbEntry(int rank, const char* name, const char* summary, std::unique_ptr<Verb> (*make)());
    int rank;
    const char* name;
    const char* summary;
    std::unique_ptr<Verb> (*make)();
};

template <class Derived>
std::unique_ptr<Verb> makeVerb() {
    return std::make_unique<Derived>();
}

/// All verbs of this build, by rank.
std::vector<const VerbEntry*> allVerbs();

}  // namespace qvr::tool
