// CString: formatting and trimming.
#include "qvr/platform/CString.h"

#include <cstdarg>
#include <cstdio>

#include "qvr/platform/detail/guard.h"

namespace {

constexpr const char* kWhiteSpace = " \t\r\n\v\f";

}  // namespace

void CString::Format(const char* format, ...) {
    std::string formatted;
    if (format) {
        std::va_list arguments;
        va_start(arguments, format);
        std::va_list again;
        va_copy(again, arguments);
        const int length = std::vsnprintf(nullptr, 0, format, arguments);
        va_end(arguments);
        if (length > 0) {
            qvr::guarded([&] {
                formatted.resize(static_cast<std::size_t>(length) + 1);
                std::vsnprintf(formatted.data(), formatted.size(), format, again);
                formatted.resize(static_cast<std::size_t>(length));
            });
        }
        va_end(again);
    }
    m_text.swap(formatted);
}

CString& CString::TrimLeft() {
    m_text.erase(0, m_text.find_first_not_of(kWhiteSpace));
    return *this;
}

CString& CString::TrimRight() {
    m_text.erase(m_text.find_last_not_of(kWhiteSpace) + 1);
    return *this;
}

CString& CString::Trim() {
    return TrimRight().TrimLeft();
}
