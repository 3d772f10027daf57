// Person names as DICOM writes them: "family^given^middle^prefix^suffix" in up to three groups, alphabetic, ideographic
// and phonetic, with "=" between them. A group may be empty.
#pragma once

#include <string>
#include <string_view>

namespace qvr::tool {

/// The name without what only fills it up: spaces around its parts, "^" and "=" at their ends.
std::string tidyName(std::string_view name);

/// What a screen shows: of the alphabetic group, or where that is empty of the next one that is not.
struct ShownName {
    std::string family, given;
};
ShownName shownName(std::string_view name);

/// Whether two tidy names can be of one person: each group that both have is equal, and they have one in common, or both
/// names are empty.
bool samePerson(std::string_view a, std::string_view b);

/// A tidy name with the groups that another tidy name of the same person has and it lacks.
std::string completeName(std::string_view name, std::string_view other);

}  // namespace qvr::tool
