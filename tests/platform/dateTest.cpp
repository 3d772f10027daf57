// COleDateTime: day numbers, what exists in the calendar, rounding to the second, local time.
#include "qvr/platform/COleDateTime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <limits>

namespace {

constexpr int kMax = std::numeric_limits<int>::max();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Parts {
    int year, month, day, hour = 0, minute = 0, second = 0;
    friend bool operator==(const Parts&, const Parts&) = default;
    COleDateTime date() const { return {year, month, day, hour, minute, second}; }
};

Parts partsOf(const COleDateTime& d) {
    return {d.GetYear(), d.GetMonth(), d.GetDay(), d.GetHour(), d.GetMinute(), d.GetSecond()};
}

TEST(Date, HasItsNumberOfDays) {
    const auto same = [](const Parts& parts, double value) {
        EXPECT_EQ(parts.date().GetStatus(), COleDateTime::valid) << value;
        EXPECT_DOUBLE_EQ(parts.date().GetValue(), value);
        EXPECT_TRUE(partsOf(COleDateTime(value)) == parts) << value;
    };
    same({1899, 12, 30}, 0.0);
    same({1899, 12, 31, 6}, 1.25);
    same({1899, 12, 29, 18}, -0.25);
    same({1970, 1, 1}, 25569.0);
    same({2000, 2, 29, 12}, 36585.5);
    same({100, 1, 1}, -657434.0);
    same({9999, 12, 31, 23, 59, 59}, 2958465.0 + 86399.0 / 86400.0);
}

TEST(Date, WhatDoesNotExistIsInvalid) {
    for (const Parts& bad : {Parts{2023, 2, 29}, Parts{1900, 2, 29}, Parts{2024, 4, 31}, Parts{2024, 0, 1},
                             Parts{2024, 13, 1}, Parts{2024, 1, 0}, Parts{99, 1, 1}, Parts{10000, 1, 1},
                             Parts{2024, 1, 1, 24}, Parts{2024, 1, 1, 0, 60}, Parts{2024, 1, 1, 0, 0, 60},
                             Parts{2024, 1, 1, -1}, Parts{kMax, kMax, kMax, kMax, kMax, kMax}}) {
        EXPECT_EQ(bad.date().GetStatus(), COleDateTime::invalid)
            << bad.year << '-' << bad.month << '-' << bad.day;
        EXPECT_TRUE(partsOf(bad.date()) == (Parts{-1, -1, -1, -1, -1, -1}));
    }
    for (const double days : {kNaN, 1e300, -657435.0, 2958466.0})
        EXPECT_EQ(COleDateTime(days).GetStatus(), COleDateTime::invalid) << days;
    COleDateTime none;
    EXPECT_EQ(none.GetStatus(), COleDateTime::valid);
    none.SetStatus(COleDateTime::null);
    EXPECT_EQ(none.GetDay(), -1);
    for (const double days : {kNaN, 1e300, -1e300}) {
        COleDateTime called(days);
        called.SetStatus(COleDateTime::valid);
        EXPECT_TRUE(called.GetYear() >= 100 && called.GetYear() <= 9999 && called.GetHour() >= 0) << days;
    }
}

TEST(Date, EverySecondOfADayComesBack) {
    for (int second = 0; second < 86400; second += 7) {
        const Parts parts{2031, 12, 31, second / 3600, second / 60 % 60, second % 60};
        ASSERT_TRUE(partsOf(parts.date()) == parts) << second;
        ASSERT_TRUE(partsOf(COleDateTime(48213.0) + COleDateTimeSpan(second / 86400.0)) == parts) << second;
    }
    EXPECT_TRUE(partsOf(COleDateTime(2958466.0 - 1e-7)) == (Parts{9999, 12, 31, 23, 59, 59}))
        << "no year 10000";
}

TEST(Date, DifferencesAreDays) {
    const COleDateTime newYear(2024, 1, 1, 0, 0, 0), march(2024, 3, 1, 12, 0, 0),
        invalid(2024, 13, 1, 0, 0, 0);
    EXPECT_DOUBLE_EQ((march - newYear).GetDays(), 60.5);
    EXPECT_TRUE(newYear + COleDateTimeSpan(60.5) == march && march - COleDateTimeSpan(60.5) == newYear);
    EXPECT_EQ((invalid - newYear).GetDays(), 0.0);
    EXPECT_EQ((invalid + COleDateTimeSpan(1)).GetStatus(), COleDateTime::invalid);
    EXPECT_EQ((newYear + COleDateTimeSpan(1e9)).GetStatus(), COleDateTime::invalid);
    EXPECT_TRUE(newYear < march && march > newYear && newYear != march);
    EXPECT_TRUE(newYear <= march && march <= march && march >= newYear && !(march <= newYear));
    EXPECT_FALSE(invalid < march || march < invalid || invalid == march || invalid <= march);
}

TEST(Date, CurrentTimeIsLocal) {
    const char* const zone = std::getenv("TZ");
    const std::string before = zone ? zone : "";
    for (const char* name : {"XXX-13", "YYY11"}) {
        ::setenv("TZ", name, 1);
        ::tzset();
        const std::time_t now = std::time(nullptr);
        const std::tm t = *std::localtime(&now);
        const COleDateTime expected(t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec);
        const double seconds = (COleDateTime::GetCurrentTime() - expected).GetDays() * 86400.0;
        EXPECT_TRUE(seconds > -0.5 && seconds < 5.0) << name << ": " << seconds;
    }
    zone ? ::setenv("TZ", before.c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
}

}  // namespace
