// COleDateTime: calendar arithmetic through std::chrono's day numbers.
#include "qvr/platform/COleDateTime.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>

#include "qvr/platform/detail/numbers.h"

namespace {

using std::chrono::day;
using std::chrono::days;
using std::chrono::month;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr sys_days kEpoch{year{1899} / 12 / 30};
constexpr std::int64_t kSecondsPerDay = 86400;
constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;
constexpr double kFirst = (sys_days{year{kFirstYear} / 1 / 1} - kEpoch).count();
constexpr double kEnd = (sys_days{year{kLastYear} / 12 / 31} - kEpoch).count() + 1;

struct Parts {
    year_month_day date;
    int hour;
    int minute;
    int second;
};

Parts partsOf(double value) {
    // The last half second of the year 9999 belongs to no other year, and a host may have called any value valid.
    const double rounded = std::clamp(std::floor(value * kSecondsPerDay + 0.5), kFirst * kSecondsPerDay,
                                      kEnd * kSecondsPerDay - 1.0);
    const std::int64_t seconds = qvr::toInt64(rounded);
    std::int64_t dayNumber = seconds / kSecondsPerDay;
    auto rest = static_cast<int>(seconds % kSecondsPerDay);
    if (rest < 0) {
        rest += kSecondsPerDay;
        --dayNumber;
    }
    return {year_month_day{kEpoch + days{dayNumber}}, rest / 3600, rest / 60 % 60, rest % 60};
}

}  // namespace

COleDateTime::COleDateTime(double days) : m_value(days) {
    if (!(days >= kFirst && days < kEnd)) m_status = invalid;
}

COleDateTime::COleDateTime(int yearNumber, int monthNumber, int dayNumber, int hour, int minute, int second) {
    const bool inRange = yearNumber >= kFirstYear && yearNumber <= kLastYear && monthNumber >= 1 &&
                         monthNumber <= 12 && dayNumber >= 1 && dayNumber <= 31;
    const bool timeInRange =
        hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60;
    if (!inRange || !timeInRange) {
        m_status = invalid;
        return;
    }
    const year_month_day date{year{yearNumber}, month{static_cast<unsigned>(monthNumber)},
                              day{static_cast<unsigned>(dayNumber)}};
    if (!date.ok()) {
        m_status = invalid;
        return;
    }
    const double seconds = hour * 3600.0 + minute * 60.0 + second;
    m_value = static_cast<double>((sys_days{date} - kEpoch).count()) + seconds / kSecondsPerDay;
}

COleDateTime COleDateTime::GetCurrentTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    if (!localtime_r(&now, &local)) {
        COleDateTime unknown;
        unknown.SetStatus(invalid);
        return unknown;
    }
    // A leap second would not exist as a time of day here.
    const int second = local.tm_sec < 60 ? local.tm_sec : 59;
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, second};
}

int COleDateTime::GetYear() const {
    return m_status == valid ? static_cast<int>(partsOf(m_value).date.year()) : -1;
}

int COleDateTime::GetMonth() const {
    return m_status == valid ? static_cast<int>(static_cast<unsigned>(partsOf(m_value).date.month())) : -1;
}

int COleDateTime::GetDay() const {
    return m_status == valid ? static_cast<int>(static_cast<unsigned>(partsOf(m_value).date.day())) : -1;
}

int COleDateTime::GetHour() const {
    return m_status == valid ? partsOf(m_value).hour : -1;
}
int COleDateTime::GetMinute() const {
    return m_status == valid ? partsOf(m_value).minute : -1;
}
int COleDateTime::GetSecond() const {
    return m_status == valid ? partsOf(m_value).second : -1;
}

COleDateTime operator+(const COleDateTime& date, const COleDateTimeSpan& span) {
    COleDateTime sum(date.m_value + span.GetDays());
    if (date.m_status != COleDateTime::valid) sum.m_status = COleDateTime::invalid;
    return sum;
}

COleDateTime operator-(const COleDateTime& date, const COleDateTimeSpan& span) {
    return date + COleDateTimeSpan(-span.GetDays());
}

COleDateTimeSpan operator-(const COleDateTime& a, const COleDateTime& b) {
    if (a.m_status != COleDateTime::valid || b.m_status != COleDateTime::valid) return COleDateTimeSpan(0.0);
    return COleDateTimeSpan(a.m_value - b.m_value);
}

bool operator==(const COleDateTime& a, const COleDateTime& b) {
    return a.m_status == b.m_status && (a.m_status != COleDateTime::valid || a.m_value == b.m_value);
}

bool operator<(const COleDateTime& a, const COleDateTime& b) {
    return a.m_status == COleDateTime::valid && b.m_status == COleDateTime::valid && a.m_value < b.m_value;
}
