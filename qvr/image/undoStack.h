// Undo copies of an image: restored like a stack, discarded like a queue; at most three, whole images, never on disk.
#pragma once

#include <array>
#include <cstdint>

#include "qvr/platform/pixelBuffer.h"

namespace qvr {

inline constexpr int kMaxUndoCopies = 3;

/// One undo copy: the image's geometry and window at the time of saving, and its pixels.
struct UndoEntry {
    int Height = 0;
    int Width = 0;
    int BitsStored = 0;
    int HighBit = 0;
    int PixelSpacing = 0;
    int WindowCenter = 0;
    int WindowWidth = 0;
    qvr::Pixels Pixels;  ///< Width * Height values
};

class UndoStack {
public:
    int count() const { return m_count; }
    /// Makes room: drops the oldest entry of a full stack and hands its buffer to the caller, otherwise null.
    UndoEntry dropOldestWhenFull() noexcept;
    /// Appends an entry; the stack must not be full.
    void push(UndoEntry&& entry) noexcept;
    /// The newest entry, or null.
    const UndoEntry* newest() const;
    /// Takes the newest entry out; the stack must not be empty.
    UndoEntry pop() noexcept;

private:
    std::array<UndoEntry, kMaxUndoCopies> m_entries;
    int m_count = 0;
};

}  // namespace qvr
