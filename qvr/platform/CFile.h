// Files: an unbuffered file, and the few operations on names that the library needs.
//
// Paths are UTF-8. Opening never waits: a pipe, socket or terminal cannot hang the caller, and no file descriptor
// is handed on to child processes.
#pragma once

#include <cstddef>

#include "qvr/export.h"
#include "qvr/platform/CException.h"

/// Thrown by CFile's own operations.
class QVR_API CFileException : public CException {
public:
    /// @param error  errno of the failed operation, 0 when unknown
    explicit CFileException(int error) noexcept : m_error(error) {}
    ~CFileException() override;
    const char* what() const noexcept override;
    int GetError() const noexcept { return m_error; }

private:
    int m_error;
};

class QVR_API CFile {
public:
    enum OpenFlags : unsigned { modeRead = 0, modeWrite = 1, modeReadWrite = 2, modeCreate = 0x1000 };

    CFile() = default;
    /// Closes the file; a late error is lost, so a writer calls Close itself.
    virtual ~CFile();
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    /// Opens a file; an open one is closed first.
    /// @param mode  one of modeRead, modeWrite, modeReadWrite, joined with modeCreate to create or truncate
    /// @return 1; 0 when the path is null, names a folder or cannot be opened, and when closing the open one raises an
    ///         error (see Close); no file is open then
    virtual int Open(const char* path, unsigned mode);
    /// Reads until `count` bytes have come or the file ends, however often the system hands out fewer.
    /// @return bytes read
    /// @throws CFileException
    virtual std::size_t Read(void* buffer, std::size_t count);
    /// Writes all of `count` bytes.
    /// @throws CFileException; part of the bytes may then be written
    virtual void Write(const void* buffer, std::size_t count);
    /// Closes the file. One that was written to is synchronised first, so that an error which the system reports late
    /// (disk full, I/O) is not lost. Without an open file nothing happens.
    /// @throws CFileException; the file is closed all the same
    virtual void Close();

    /// 1 while a file is open
    int IsOpen() const noexcept { return m_descriptor >= 0; }

private:
    int m_descriptor = -1;
    bool m_written = false;
};

class QVR_API CFileFind {
public:
    /// @param pattern  a path whose last component may hold the wildcards * and ?
    /// @return 1 when at least one entry matches, 0 otherwise
    int FindFile(const char* pattern);
};

/// Creates one folder. @return 1; 0 when it exists, its parent is missing or it cannot be made
QVR_API int CreateDirectoryA(const char* path);
/// Deletes a file, never a folder. @return 1; 0 when there is none or it cannot be deleted
QVR_API int DeleteFileA(const char* path);
/// Copies a regular file. The target is replaced in one step once the copy is whole on disk: until then, and after a
/// failure, it holds what it held before.
/// @param failIfExists  non-zero: an existing target is a failure
/// @return 1; 0 when the source cannot be read, the target cannot be written, or both are the same file
QVR_API int CopyFileA(const char* source, const char* target, int failIfExists);
