// qvr: command line tool over the library. Sets up the common options, hands over to a verb, turns failures into one
// sentence and an exit code.
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <new>
#include <sstream>

#include "interrupt.h"
#include "sourceReader.h"
#include "verb.h"

namespace qvr::tool {

namespace {

struct Setup {
    Common common;
    CLI::App app{"Adopts, measures and renders radiographs.", "qvr"};
    std::vector<std::unique_ptr<Verb>> verbs;
    std::vector<CLI::App*> apps;
};

void declareCommon(CLI::App& app, Common& common) {
    static const std::map<std::string, ProgressMode> modes = {{"auto", ProgressMode::automatic},
                                                              {"always", ProgressMode::always},
                                                              {"never", ProgressMode::never},
                                                              {"json", ProgressMode::json}};
    auto* quiet = app.add_flag("-q,--quiet", common.quiet, "no warnings and no progress");
    app.add_flag("-v,--verbose", common.verbose, "say what is done")->excludes(quiet);
    app.add_flag("--json", common.json, "results as JSON, one object per file");
    app.add_flag("--force", common.force, "replace an output file that exists (verbs that write one)");
    app.add_option("--progress", common.progress,
                   "auto (several files), always, never or json; on standard error")
        ->type_name("MODE")
        ->transform(CLI::CheckedTransformer(modes).description(""));
    app.set_version_flag("--version", "qvr " QVR_VERSION, "print the version and exit");
    app.set_help_flag("-h,--help", "print this help and exit");
}

// The end of a verb's help, and of its own verbs' help.
void describeCommon(CLI::App& app, const Verb& verb) {
    const bool writes = app.get_option_no_throw(verb.targetOption()) != nullptr;
    app.footer(fmt::format("Common options: -q -v --json {}--progress --version; see qvr --help.",
                           writes ? "--force " : ""));
    for (auto* below : app.get_subcommands({})) describeCommon(*below, verb);
}

void declare(Setup& setup) {
    declareCommon(setup.app, setup.common);
    setup.app.require_subcommand(1);
    setup.app.fallthrough();  // the common options may also stand behind the verb
    setup.app.get_formatter()->label("SUBCOMMAND", "VERB");
    setup.app.footer(
        "Results go to standard output, everything else to standard error. NO_COLOR turns colour off.");
    for (const auto* entry : allVerbs()) {
        auto* sub = setup.app.add_subcommand(entry->name, entry->summary);
        sub->group("Verbs");
        sub->set_help_flag("-h,--help", "print this help and exit");
        setup.verbs.push_back(entry->make());
        setup.verbs.back()->declare(*sub);
        describeCommon(*sub, *setup.verbs.back());
        setup.apps.push_back(sub);
    }
}

// The verb as typed, down to the last word: "exam build".
const CLI::App& innermost(const CLI::App& app, std::string& name) {
    name = app.get_name();
    const CLI::App* last = &app;
    while (!last->get_subcommands().empty()) {
        last = last->get_subcommands().front();
        name += ' ' + last->get_name();
    }
    return *last;
}

// CLI11's text as one sentence of ours.
Failure usageFailure(const Setup& setup, const CLI::ParseError& error) {
    const auto unknown = setup.app.remaining();
    const bool noVerb =
        std::none_of(setup.apps.begin(), setup.apps.end(), [](auto* app) { return app->parsed(); });
    std::string why = error.what();
    if (why == "A subcommand is required") why = "a verb is required";
    if (noVerb && unknown.empty() && error.get_name() == "RequiredError") why = "a verb is required";
    if (noVerb && !unknown.empty()) why = fmt::format("\"{}\" is no verb and no option", unknown.front());
    std::replace(why.begin(), why.end(), '\n', ' ');
    while (!why.empty() && (why.back() == '.' || why.back() == ' ')) why.pop_back();
    std::string help = "qvr --help";
    for (const auto* app : setup.apps) {
        std::string name;
        if (!app->parsed()) continue;
        innermost(*app, name);
        help = "qvr " + name + " --help";
    }
    return {Exit::usage, "command line", "not understood", why, "See " + help + "."};
}

void checkForce(const CLI::App& app, const Verb& verb) {
    std::string name;
    const auto* target = innermost(app, name).get_option_no_throw(verb.targetOption());
    if (target && target->count() > 0 && target->as<std::string>() != "-") return;
    const std::string why = target ? fmt::format("without {} FILE no file is written", verb.targetOption())
                                   : fmt::format("{} replaces no file", name);
    throw Failure(Exit::usage, "--force", "of no use", why, "Leave it out.");
}

Exit runVerb(Setup& setup, Console& console) {
    for (std::size_t i = 0; i < setup.apps.size(); ++i) {
        if (!setup.apps[i]->parsed()) continue;
        if (setup.common.force) checkForce(*setup.apps[i], *setup.verbs[i]);
        return setup.verbs[i]->run(setup.common, console);
    }
    return Exit::usage;
}

// Reads the command line. True when it asks for help or the version, which then is a result.
bool answeredHelp(Setup& setup, int argc, char** argv, Console& console) {
    try {
        setup.app.parse(argc, argv);
        return false;
    } catch (const CLI::Success& asked) {
        std::ostringstream text;
        setup.app.exit(asked, text);
        console.result(text.str());
        return true;
    }
}

Exit run(int argc, char** argv) {
    Setup setup;
    Console console(setup.common);
    try {
        declare(setup);
        const Exit result = answeredHelp(setup, argc, argv, console) ? Exit::done : runVerb(setup, console);
        console.finish();
        return result;
    } catch (const CLI::ParseError& error) {
        const auto failure = usageFailure(setup, error);
        console.error(failure);
        return failure.code();
    } catch (const Failure& failure) {
        console.error(failure);
        return failure.code();
    } catch (const std::bad_alloc&) {
        console.error(Failure(Exit::internal, "", "stopped", "there is not enough memory",
                              "Nothing more was changed."));
    } catch (const std::exception& error) {
        console.error(
            Failure(Exit::internal, "", "internal error", error.what(), "Nothing more was changed."));
    }
    return Exit::internal;
}

}  // namespace

}  // namespace qvr::tool

int main(int argc, char** argv) {
    qvr::tool::silenceDicomToolkit();
    qvr::tool::catchInterrupts();
    return static_cast<int>(qvr::tool::run(argc, argv));
}
