// CArchive and CObject: as much of serialization as a bitmap needs.
#pragma once

#include "qvr/export.h"
#include "qvr/platform/CFile.h"

class CObject;

/// What is known of a class at run time: its name, its schema number and how to make one.
struct QVR_API CRuntimeClass {
    const char* m_lpszClassName;
    unsigned m_wSchema;
    /// Makes a default-constructed object, owned by the caller; null when there is no memory.
    CObject* (*m_pfnCreateObject)();

    CObject* CreateObject() const { return m_pfnCreateObject ? m_pfnCreateObject() : nullptr; }
};

/// An archive over a file that the host opened. It holds nothing back itself: objects write straight to the file.
class QVR_API CArchive {
public:
    enum Mode { store = 0, load = 1 };

    /// @param file  not owned; must outlive the archive; may be null
    CArchive(CFile* file, unsigned mode) noexcept : m_file(file), m_mode(mode) {}
    ~CArchive() { Flush(); }
    CArchive(const CArchive&) = delete;
    CArchive& operator=(const CArchive&) = delete;

    int IsLoading() const noexcept { return (m_mode & load) != 0; }
    int IsStoring() const noexcept { return (m_mode & load) == 0; }
    /// Hands what is held back to the file: nothing, see above.
    void Flush() noexcept {}
    CFile* GetFile() const noexcept { return m_file; }

private:
    CFile* m_file;
    unsigned m_mode;
};

/// Base of what can be serialized.
class QVR_API CObject {
public:
    virtual const CRuntimeClass* GetRuntimeClass() const = 0;
    virtual ~CObject();
    virtual void Serialize(CArchive& archive) = 0;
    /// Diagnostic hooks; they do nothing.
    virtual void AssertValid() const;
    virtual void Dump() const;

protected:
    CObject() = default;
    CObject(const CObject&) = default;
    CObject& operator=(const CObject&) = default;
};
