// COleDateTime: a calendar date and time of day as days since 1899-12-30, with a status.
//
// The value is linear: 1.25 is 1899-12-31 06:00, -0.25 is 1899-12-29 18:00. It carries no time zone; the library
// uses local time throughout.
#pragma once

#include "qvr/export.h"

/// A difference of two dates, in days.
class QVR_API COleDateTimeSpan {
public:
    COleDateTimeSpan() = default;
    explicit COleDateTimeSpan(double days) : m_days(days) {}

    double GetDays() const noexcept { return m_days; }

private:
    double m_days = 0.0;
};

class QVR_API COleDateTime {
public:
    enum DateTimeStatus { valid = 0, invalid = 1, null = 2 };

    /// Value 0, valid.
    COleDateTime() = default;
    /// @param days  days since 1899-12-30; not finite or outside the years 100 … 9999 gives status invalid
    explicit COleDateTime(double days);
    /// A date of the Gregorian calendar, years 100 … 9999; anything that does not exist gives status invalid and
    /// the value 0.
    COleDateTime(int year, int month, int day, int hour, int minute, int second);

    /// The current local date and time, to the second.
    static COleDateTime GetCurrentTime();

    DateTimeStatus GetStatus() const noexcept { return m_status; }
    /// @param status  as it will be answered; the value stays
    void SetStatus(DateTimeStatus status) noexcept { m_status = status; }
    /// @return days since 1899-12-30
    double GetValue() const noexcept { return m_value; }

    /// The parts of the date, rounded to the second; -1 unless the status is valid.
    int GetYear() const;
    int GetMonth() const;   ///< 1 … 12
    int GetDay() const;     ///< 1 … 31
    int GetHour() const;    ///< 0 … 23
    int GetMinute() const;  ///< 0 … 59
    int GetSecond() const;  ///< 0 … 59

    /// A result is invalid when an operand is not valid or the sum leaves the years 100 … 9999.
    friend QVR_API COleDateTime operator+(const COleDateTime& date, const COleDateTimeSpan& span);
    friend QVR_API COleDateTime operator-(const COleDateTime& date, const COleDateTimeSpan& span);
    /// @return a - b; 0 days when either is not valid
    friend QVR_API COleDateTimeSpan operator-(const COleDateTime& a, const COleDateTime& b);
    /// Equal: same status and, where valid, same value. Less: both valid and earlier.
    friend QVR_API bool operator==(const COleDateTime& a, const COleDateTime& b);
    friend QVR_API bool operator<(const COleDateTime& a, const COleDateTime& b);
    friend bool operator>(const COleDateTime& a, const COleDateTime& b) { return b < a; }
    friend bool operator<=(const COleDateTime& a, const COleDateTime& b) { return a < b || a == b; }
    friend bool operator>=(const COleDateTime& a, const COleDateTime& b) { return b <= a; }

private:
    double m_value = 0.0;
    DateTimeStatus m_status = valid;
};
