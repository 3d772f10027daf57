// The list of verbs fills itself before main().
#include "verb.h"

#include <algorithm>

namespace qvr::tool {

namespace {

std::vector<const VerbEntry*>& entries() {
    static std::vector<const VerbEntry*> all;
    return all;
}

}  // namespace

VerbEntry::VerbEntry(int rank_, const char* name_, const char* summary_, std::unique_ptr<Verb> (*make_)())
    : rank(rank_), name(name_), summary(summary_), make(make_) {
    entries().push_back(this);
}

std::vector<const VerbEntry*> allVerbs() {
    auto all = entries();
    std::sort(all.begin(), all.end(), [](const auto* a, const auto* b) { return a->rank < b->rank; });
    return all;
}

}  // namespace qvr::tool
