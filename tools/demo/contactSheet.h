// contactSheet: all pictures on one, small, with captions.
#pragma once

#include <deque>
#include <filesystem>
#include <string>
#include <utility>

#include "tools/demo/screen.h"

namespace qvr {

class ContactSheet {
public:
    /// @param columns  pictures side by side
    /// @param cell     room for each picture
    ContactSheet(int columns, CSize cell) : m_columns(columns), m_cell(cell) {}

    /// Adds a picture, from left to right and downward, shrunk by a whole number until it fits.
    void add(const Screen& picture, const std::string& caption);
    /// Throws DemoFailure.
    void save(const std::filesystem::path& path) const;

private:
    struct Cell {
        Cell(CSize size, std::string text) : picture(size.cx, size.cy), caption(std::move(text)) {}
        Screen picture;
        std::string caption;
    };
    int m_columns;
    CSize m_cell;
    std::deque<Cell> m_cells;  // a screen cannot be moved
};

}  // namespace qvr
