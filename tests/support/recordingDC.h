// A surface that writes down what it is asked to draw, and can misbehave as a host's surface may.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "qvr/platform/CRasterDC.h"

class RecordingDC : public CDC {
public:
    /// "fill l,t,r,b" (black), "stretch x,y wxh" (the whole bitmap) or "stretch x,y wxh from x,y wxh"; another colour or
    /// raster operation is appended.
    std::vector<std::string> drawn;
    /// The stretch mode and number of palette entries at each stretch.
    std::vector<int> modes;
    std::vector<int> palettes;
    /// Called inside every operation of the surface; may throw or call back into the library.
    std::function<void()> onCall = [] {};

    int stretchMode() {
        const int mode = CDC::SetStretchBltMode(COLORONCOLOR);
        CDC::SetStretchBltMode(mode);
        return mode;
    }
    /// Number of entries of the selected palette; 0 for the stock palette.
    int paletteEntries() const { return selectedPalette().GetEntryCount(); }

    void FillSolidRect(const RECT* rect, COLORREF colour) override {
        onCall();
        drawn.push_back("fill " + std::to_string(rect->left) + ',' + std::to_string(rect->top) + ',' +
                        std::to_string(rect->right) + ',' + std::to_string(rect->bottom));
        if (colour != 0) drawn.back() += " colour " + std::to_string(colour);
    }
    int StretchDIBits(int dx, int dy, int dw, int dh, int sx, int sy, int sw, int sh, const void* bits,
                      const BITMAPINFO* info, std::uint32_t rop) override {
        EXPECT_TRUE(bits && info);
        if (!bits || !info) return 0;
        drawn.push_back("stretch " + area(dx, dy, dw, dh));
        if (sx != 0 || sy != 0 || sw != info->bmiHeader.biWidth || sh != info->bmiHeader.biHeight)
            drawn.back() += " from " + area(sx, sy, sw, sh);
        if (rop != SRCCOPY) drawn.back() += " rop " + std::to_string(rop);
        modes.push_back(stretchMode());
        palettes.push_back(paletteEntries());
        onCall();
        return dh;
    }
    CPalette* SelectPalette(CPalette* palette, int background) override {
        onCall();
        return CDC::SelectPalette(palette, background);
    }
    unsigned RealizePalette() override {
        onCall();
        return CDC::RealizePalette();
    }
    int SetStretchBltMode(int mode) override {
        onCall();
        return CDC::SetStretchBltMode(mode);
    }
    std::unique_ptr<CRasterDC> CreateCompatibleRaster(int width, int height) override {
        onCall();
        return CDC::CreateCompatibleRaster(width, height);
    }

private:
    static std::string area(int x, int y, int width, int height) {
        return std::to_string(x) + ',' + std::to_string(y) + ' ' + std::to_string(width) + 'x' +
               std::to_string(height);
    }
};
