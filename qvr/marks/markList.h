// The marks of an image, oldest first: at most three. Added, sized, moved, found, selected and deleted here.
//
// What needs the image is given the view as a value; what needs fonts is given the surface. A surface is foreign code
// that may call back, so a mark is looked up again after every use of it.
#pragma once

#include <vector>

#include "qvr/marks/CMark.h"
#include "qvr/platform/CDC.h"

namespace qvr {

struct MarkView;

inline constexpr int kMaxMarks = 3;
inline constexpr int kSmallFont = 30;  ///< font heights on the surface
inline constexpr int kMediumFont = 40;
inline constexpr int kLargeFont = 50;

class MarkList {
public:
    int count() const { return static_cast<int>(m_marks.size()); }
    bool has(int index) const { return index >= 0 && index < count(); }
    /// The mark at an index that exists.
    const CMark& at(int index) const { return m_marks[static_cast<std::size_t>(index)]; }

    /// Appends a mark along the image's top edge. @return false, with the list as it was, when it is full, the text does
    /// not fit at the largest font, or no font is usable
    bool add(const char* text, const MarkView& view, const RECT& rectangle, CDC& surface);
    /// The next larger font, the box kept inside the right and bottom edges.
    void inflate(int index, const MarkView& view, const RECT& rectangle, CDC& surface);
    /// The next smaller font.
    void deflate(int index);
    /// Moves the box, kept inside the editing frame; one that is larger ends flush right and bottom.
    void moveTo(int index, CPoint point, const MarkView& view, const RECT& rectangle, CDC& surface);
    /// Index of the oldest mark whose box holds the point, or -1.
    int find(CPoint point, CDC& surface) const;

    /// Selects one mark and deselects the others; an index that does not exist deselects all.
    void select(int index);
    void deselect(int index);
    /// The lowest selected index, or -1.
    int selected() const;

    void erase(int index);
    void clear() { m_marks.clear(); }

private:
    CMark& mark(int index) { return m_marks[static_cast<std::size_t>(index)]; }
    void place(int index, int fontHeight, std::int64_t x, std::int64_t y, const MarkView& view,
               const RECT& rectangle);

    std::vector<CMark> m_marks;
};

}  // namespace qvr
