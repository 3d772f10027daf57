// Groups are compared as they are, letter by letter: what differs only in its writing is another person.
#include "personName.h"

#include <fmt/format.h>

#include <algorithm>

#include "parse.h"

namespace qvr::tool {

namespace {

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string joined(const std::vector<std::string>& parts, char separator) {
    std::string text = fmt::format("{}", fmt::join(parts, std::string_view(&separator, 1)));
    return text.substr(0, text.find_last_not_of(separator) + 1);
}

std::string_view groupOf(const std::vector<std::string_view>& groups, std::size_t i) {
    return i < groups.size() ? groups[i] : std::string_view();
}

}  // namespace

std::string tidyName(std::string_view name) {
    std::vector<std::string> groups;
    for (const auto group : split(name, '=')) {
        std::vector<std::string> parts;
        for (const auto part : split(group, '^')) parts.emplace_back(trimmed(part));
        groups.push_back(joined(parts, '^'));
    }
    return joined(groups, '=');
}

ShownName shownName(std::string_view name) {
    const std::string tidy = tidyName(name);
    for (const auto group : split(tidy, '=')) {
        if (group.empty()) continue;
        const auto parts = split(group, '^');
        return {std::string(parts[0]), parts.size() > 1 ? std::string(parts[1]) : ""};
    }
    return {};
}

bool samePerson(std::string_view a, std::string_view b) {
    if (a.empty() || b.empty()) return a.empty() && b.empty();
    const auto one = split(a, '='), other = split(b, '=');
    bool common = false;
    for (std::size_t i = 0; i < std::min(one.size(), other.size()); ++i) {
        if (one[i].empty() || other[i].empty()) continue;
        if (one[i] != other[i]) return false;
        common = true;
    }
    return common;
}

std::string completeName(std::string_view name, std::string_view other) {
    const auto own = split(name, '='), more = split(other, '=');
    std::vector<std::string> groups;
    for (std::size_t i = 0; i < std::max(own.size(), more.size()); ++i)
        groups.emplace_back(groupOf(own, i).empty() ? groupOf(more, i) : groupOf(own, i));
    return joined(groups, '=');
}

}  // namespace qvr::tool
