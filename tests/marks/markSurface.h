// A surface with text of a known size, which writes down what marks ask of it; and an image that shows its marks.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "qvr/image/rawImage.h"
#include "support/pictures.h"
#include "support/recordingDC.h"

/// Every letter is half as wide as high.
class MarkSurface : public RecordingDC {
public:
    int percentPerLetter = 50;  ///< width of a letter in percent of the font height

    CSize GetTextExtent(const char* text, int) override {
        onCall();
        const int height = selectedFont().GetHeight();
        return {static_cast<int>(std::strlen(text)) * height * percentPerLetter / 100, height};
    }
    int DrawText(const char* text, int, const RECT* r, unsigned flags) override {
        onCall();
        drawn.push_back("text " + std::string(text) + ' ' + at(r->left, r->top) + ' ' +
                        at(r->right, r->bottom) + " flags " + std::to_string(flags) + " font " +
                        std::to_string(selectedFont().GetHeight()));
        return 1;
    }
    void MoveTo(int x, int y) override {
        onCall();
        m_from = at(x, y);
    }
    void LineTo(int x, int y) override {
        onCall();
        drawn.push_back("line " + m_from + ' ' + at(x, y) + " colour " +
                        std::to_string(selectedPen().GetColour()));
        m_from = at(x, y);
    }
    CFont* SelectObject(CFont* font) override {
        onCall();
        return CDC::SelectObject(font);
    }
    CPen* SelectObject(CPen* pen) override {
        onCall();
        return CDC::SelectObject(pen);
    }
    int SetBkMode(int mode) override {
        onCall();
        drawn.push_back("background " + std::to_string(mode));
        return CDC::SetBkMode(mode);
    }
    COLORREF SetTextColor(COLORREF colour) override {
        onCall();
        drawn.push_back("text colour " + std::to_string(colour));
        return CDC::SetTextColor(colour);
    }
    const CFont* font() const { return &selectedFont(); }
    const CPen* pen() const { return &selectedPen(); }

private:
    static std::string at(int x, int y) { return std::to_string(x) + ',' + std::to_string(y); }
    std::string m_from;
};

/// The protected operations of marks, opened.
class MarkedImage : public rawImage {
public:
    using rawImage::DrawAllMarks;
    using rawImage::DrawMark;
    using rawImage::DrawRectFrame;
    using rawImage::DrawRectSelectedCross;

    /// A 14-bit image of one value, shown in a rectangle by its fitted view.
    void show(int width, int height, const RECT& rectangle, std::uint16_t value = 0) {
        const std::vector<std::uint16_t> pixels(static_cast<std::size_t>(width * height), value);
        const auto record = newRecord(width, height, pixels, 16384, 8192);
        ASSERT_EQ(Create(&record), 1);
        ASSERT_EQ(BuildDisplayImage(&rectangle, nullptr, 1), 1);
    }
    /// Everything that can be told of the marks.
    std::vector<std::string> marks() const {
        std::vector<std::string> all;
        CMark m;
        for (int i = 0; GetMark(i, m); ++i) {
            const auto [x, y] = m.GetDISPLeftTop();
            const auto [column, row] = m.GetPIXLeftTop();
            all.push_back(m.GetMarkText());
            for (const int value : {x, y, column, row, m.GetImageLeftTop().x, m.GetImageLeftTop().y,
                                    m.GetDISPFontHeight(), m.IsSelected()})
                all.back() += ' ' + std::to_string(value);
        }
        return all;
    }
};
