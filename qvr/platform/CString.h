// CString: an owned byte string; text in it is UTF-8.
#pragma once

#include <compare>
#include <cstddef>
#include <string>
#include <utility>

#include "qvr/export.h"

class QVR_API CString {
public:
    CString() noexcept = default;
    /// Copies up to the ending 0; null is the empty string.
    CString(const char* text) : m_text(text ? text : "") {}  // NOLINT: converts on purpose
    CString(const CString&) = default;
    CString(CString&& other) noexcept : m_text(std::exchange(other.m_text, {})) {}
    CString& operator=(const CString&) = default;
    CString& operator=(CString&& other) noexcept {
        m_text = std::exchange(other.m_text, {});
        return *this;
    }
    /// `text` may point into this string.
    CString& operator=(const char* text) {
        std::string copy(text ? text : "");
        m_text.swap(copy);
        return *this;
    }
    ~CString() = default;

    /// Valid until the string changes or is destroyed.
    operator const char*() const noexcept { return m_text.c_str(); }  // NOLINT: converts on purpose
    const char* GetString() const noexcept { return m_text.c_str(); }
    /// @return length in bytes
    int GetLength() const noexcept { return static_cast<int>(m_text.size()); }
    bool IsEmpty() const noexcept { return m_text.empty(); }
    void Empty() noexcept { m_text.clear(); }

    /// Replaces the text by a printf-formatted one; the arguments may point into this string. A format that cannot
    /// be carried out, null, and the end of memory give the empty string. Never pass a host's text as the format.
    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));

    /// Trimming takes space, tab, carriage return, line feed, vertical tab and form feed. @return this string
    CString& Trim();
    CString& TrimLeft();
    CString& TrimRight();

    CString& operator+=(const CString& text) {
        m_text += text.m_text;
        return *this;
    }
    CString& operator+=(const char* text) {
        if (text) m_text += std::string(text);
        return *this;
    }
    CString& operator+=(char character) {
        m_text += character;
        return *this;
    }

    friend CString operator+(const CString& a, const CString& b) { return CString(a) += b; }
    friend CString operator+(const CString& a, const char* b) { return CString(a) += b; }
    friend CString operator+(const CString& a, char b) { return CString(a) += b; }
    friend CString operator+(const char* a, const CString& b) { return CString(a) += b; }
    friend CString operator+(char a, const CString& b) { return (CString() += a) += b; }

    // Byte by byte; null compares as the empty string. All orders are given: a missing one would compare addresses.
    friend bool operator==(const CString& a, const CString& b) noexcept { return a.m_text == b.m_text; }
    friend bool operator==(const CString& a, const char* b) noexcept { return a.m_text == (b ? b : ""); }
    friend std::strong_ordering operator<=>(const CString& a, const CString& b) noexcept {
        return a.m_text.compare(b.m_text) <=> 0;
    }
    friend std::strong_ordering operator<=>(const CString& a, const char* b) noexcept {
        return a.m_text.compare(b ? b : "") <=> 0;
    }

private:
    std::string m_text;
};
