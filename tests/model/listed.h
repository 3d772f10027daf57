// Values as one line of text, so that a whole record is compared at once and a swapped pair of fields shows.
#pragma once

#include <sstream>
#include <string>

#include "qvr/platform/COleDateTime.h"

inline void list(std::ostream& out, const COleDateTime& date) {
    out << date.GetValue();
}
template <class Value>
void list(std::ostream& out, const Value& value) {
    out << value;
}

/// The values with a blank behind each; an empty text is just its blank.
template <class... Values>
std::string listed(const Values&... values) {
    std::ostringstream out;
    ((list(out, values), out << ' '), ...);
    return out.str();
}

/// Days between a date and now: 0 for one that was taken a moment ago.
inline double age(const COleDateTime& date) {
    return (COleDateTime::GetCurrentTime() - date).GetDays();
}
inline constexpr double kMoment = 10.0 / 86400;
