#include "privateFolder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "errors.h"

namespace qvr::tool {

PrivateFolder::PrivateFolder() {
    std::error_code error;
    const auto place = std::filesystem::temp_directory_path(error);
    m_path = (error ? std::filesystem::path("/tmp") : place).string() + "/qvr-XXXXXX";
    if (!mkdtemp(m_path.data()))
        throw Failure(Exit::notWritten, m_path, "not made", std::strerror(errno),
                      "Let TMPDIR name a folder that may be written.");
}

PrivateFolder::~PrivateFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

}  // namespace qvr::tool
