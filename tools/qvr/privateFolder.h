// A folder for files that the library needs while a verb works; it goes with its object.
#pragma once

#include <string>

namespace qvr::tool {

class PrivateFolder {
public:
    /// In TMPDIR or /tmp, readable by its owner alone. @throws Failure
    PrivateFolder();
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    const std::string& path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + '/' + name; }

private:
    std::string m_path;
};

}  // namespace qvr::tool
