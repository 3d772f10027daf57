// What a SOP Instance UID must not contain, since the cache names files after it.
#include "sourceImage.h"

namespace qvr::tool {

std::string unusableUidReason(const std::string& uid) {
    for (const char c : uid) {
        if (c == '/' || c == '\\') return std::string("contains \"") + c + '"';
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) return "contains a control character";
    }
    return {};
}

}  // namespace qvr::tool
