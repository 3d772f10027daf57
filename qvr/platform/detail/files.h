// File operations of the library that no host needs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qvr {

/// @return length of a regular file in bytes; nothing when there is no regular file of that name
[[nodiscard]] std::optional<std::uint64_t> fileLength(const char* path) noexcept;
/// True when a regular file of exactly that name exists (no wildcards).
[[nodiscard]] bool fileExists(const char* path) noexcept;
/// True when both names lead to one file (the same device and inode), and when that cannot be found out: whoever asks is
/// about to delete or overwrite one of them. False when either is null or missing.
[[nodiscard]] bool isSameFile(const char* a, const char* b) noexcept;
/// Creates a folder unless it exists. @return true when there is a folder of that name afterwards
bool ensureFolder(const char* path) noexcept;
/// Joins a folder and a name with the platform's separator.
[[nodiscard]] std::string joinPath(const std::string& folder, const std::string& name);
/// True for a name that is one path component: not empty, no separator of any platform, no control byte.
[[nodiscard]] bool isPlainName(const char* name) noexcept;

/// Makes an empty file beside `target` (beside the file it leads to, when it is a symbolic link), which will replace it.
/// It is a new one: what stands there already, from a killed process or as a link to something else, is left alone.
/// @return its name
/// @throws CFileException when it cannot be made
[[nodiscard]] std::string makeNeighbour(const std::string& target);
/// Puts the finished file `temporary` in the place of `target` in one step; a symbolic link keeps leading to it.
/// @return true; false when that is not possible, with both files as they were; false, with the target replaced, when its
///         new name cannot be made safe on disk: what it was copied from must then stay
[[nodiscard]] bool replaceFile(const char* temporary, const char* target) noexcept;

}  // namespace qvr
