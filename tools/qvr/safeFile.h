// Writing a file so that there is a whole new one or none: a new file beside it, then a rename.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace qvr::tool {

/// Refuses a target that may not be written, before any work is done for it: one that exists and is not to be
/// replaced, the input itself, a folder or a device, a folder that is missing. @throws Failure
/// @param input  a file that must not be replaced; may be empty; "-" is standard input
void checkTarget(const std::string& target, const std::string& input, bool force);
/// Refuses two targets that are one file, also through links. @throws Failure
void checkApart(const std::string& target, const std::string& other);

/// Writes all bytes; a failure leaves the target as it was and no other file behind. "-" is standard output.
/// @param finishing  also after Ctrl-C: what is written ends something that must not stay half done
/// @throws Failure
void writeSafely(const std::string& target, std::span<const std::uint8_t> bytes, bool force,
                 bool finishing = false);
/// The same for two files, none of them "-": both are whole before the first one gets its name.
void writeBothSafely(const std::string& first, std::span<const std::uint8_t> firstBytes,
                     const std::string& second, std::span<const std::uint8_t> secondBytes, bool force);

/// Makes the names in a folder safe on disk.
void syncFolder(const std::string& folder);
/// "no space left (needs 8.1 MB, 2.0 MB free)"
std::string noSpaceText(double needed, double space);
/// Bytes that may still be written into a folder; 0 when that cannot be told.
double freeSpace(const std::string& folder);
/// "8.1 MB"
std::string readableSize(double bytes);
/// True for a name that only an unfinished write leaves behind: this program's, or one of the library's.
bool isTemporaryName(const std::string& name);

}  // namespace qvr::tool
