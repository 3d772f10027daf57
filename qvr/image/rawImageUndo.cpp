// Undo copies: restored like a stack, discarded like a queue. A buffer that would be freed is used again where its size
// fits, and a restored copy is moved in: an image of full size then costs no fresh memory.
#include <algorithm>
#include <utility>

#include "qvr/image/rawImage.h"
#include "qvr/image/undoStack.h"
#include "qvr/platform/detail/memory.h"

namespace qvr {

UndoEntry UndoStack::dropOldestWhenFull() noexcept {
    if (m_count < kMaxUndoCopies) return {};
    UndoEntry oldest = std::move(m_entries.front());
    std::move(m_entries.begin() + 1, m_entries.end(), m_entries.begin());
    --m_count;
    return oldest;
}

void UndoStack::push(UndoEntry&& entry) noexcept {
    m_entries[static_cast<std::size_t>(m_count++)] = std::move(entry);
}

const UndoEntry* UndoStack::newest() const {
    return m_count > 0 ? &m_entries[static_cast<std::size_t>(m_count - 1)] : nullptr;
}

UndoEntry UndoStack::pop() noexcept {
    return std::move(m_entries[static_cast<std::size_t>(--m_count)]);
}

}  // namespace qvr

int rawImage::SaveUndoData() {
    if (!m_ReadInRAM) return 0;
    qvr::UndoEntry dropped = m_UndoList.dropOldestWhenFull();

    qvr::Pixels copy;
    if (dropped.Pixels && dropped.Width == m_Width && dropped.Height == m_Height) {
        copy = std::move(dropped.Pixels);
        const auto count = static_cast<std::size_t>(m_Width) * static_cast<std::size_t>(m_Height);
        std::copy_n(m_PixelData.get(), count, copy.get());
    } else {
        dropped.Pixels.reset();  // its memory may be what the copy needs
        copy = qvr::copyPixels(m_Width, m_Height, m_PixelData.get());
    }
    if (!copy) return 0;
    m_UndoList.push({.Height = m_Height,
                     .Width = m_Width,
                     .BitsStored = m_BitsStored,
                     .HighBit = m_HighBit,
                     .PixelSpacing = m_PixelSpacing,
                     .WindowCenter = m_WindowCenter,
                     .WindowWidth = m_WindowWidth,
                     .Pixels = std::move(copy)});
    return 1;
}

int rawImage::ReadUndoData() {
    if (!m_ReadInRAM || !m_UndoList.newest()) return 0;
    qvr::UndoEntry entry = m_UndoList.pop();
    m_Width = entry.Width;
    m_Height = entry.Height;
    m_WindowCenter = entry.WindowCenter;
    m_WindowWidth = entry.WindowWidth;
    m_PixelData = std::move(entry.Pixels);
    return 1;
}
