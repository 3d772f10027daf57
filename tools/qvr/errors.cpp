// How a failure is put into words.
#include "errors.h"

namespace qvr::tool {

namespace {

constexpr std::size_t kLongLine = 100;  // longer sentences put the advice on a line of its own

void append(std::string& sentence, std::string_view part) {
    if (part.empty()) return;
    if (!sentence.empty()) sentence += ": ";
    sentence += printable(part);
}

}  // namespace

Failure::Failure(Exit code, std::string_view subject, std::string_view what, std::string_view why,
                 std::string_view advice)
    : m_code(code) {
    append(m_sentence, subject);
    append(m_sentence, what);
    append(m_sentence, why);
    m_sentence += '.';
    m_adviceAt = m_sentence.size();
    if (!advice.empty()) m_sentence += ' ' + printable(advice);
}

Failure Failure::about(std::string_view subject) const {
    Failure named = *this;
    const std::string front = printable(subject) + ": ";
    named.m_sentence.insert(0, front);
    named.m_adviceAt += front.size();
    return named;
}

std::string Failure::printed() const {
    std::string text = "qvr: " + m_sentence;
    if (text.size() > kLongLine && m_adviceAt < m_sentence.size())
        text.replace(m_adviceAt + sizeof("qvr: ") - 1, 1, "\n     ");
    return text;
}

std::string printable(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) c = '?';
    }
    return out;
}

}  // namespace qvr::tool
