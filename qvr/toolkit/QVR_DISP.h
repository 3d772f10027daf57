// QVR_DISP_…: stateless functions over 16-bit pixel buffers.
//
// Pixel buffer  width * height values, row after row without padding; row 0 is the BOTTOM row of the picture, so row
//               numbers grow upward.
// Rectangle     in buffer columns and rows, bottom < top: `bottom` is the first row inside, `top` the first row above
//               it outside, `left` the first column inside, `right` the first column to the right outside.
// Threads       no shared state: calls on different buffers may run at the same time.
#pragma once

#include <cstdint>

#include "qvr/export.h"
#include "qvr/platform/types.h"

/// Finds the two pixel values between which a display window should lie.
///
/// 14 bits: from the histogram of the values 1 … 16382, as ComputeHistogramWindow finds them; 10, 12 and 16 bits: the
/// full range of the depth, without a look at size, buffer or fractions.
/// @param low,high       out: lower and upper bound
/// @param width,height   size of the buffer in pixels
/// @param pixels         width * height values; only read
/// @param bitsStored     10, 12, 14 or 16
/// @param lowFraction,highFraction  parts of the counted pixels below the percentile bounds; not checked. The library
///                       itself passes 0.05f and 0.95f
/// @return 1; 0 for another depth and, at 14 bits, for a null buffer or a bad size, with both bounds untouched
QVR_API int QVR_DISP_AutoWL(int& low, int& high, int width, int height, const std::uint16_t* pixels,
                            int bitsStored, float lowFraction, float highFraction);

/// As QVR_DISP_AutoWL, over a region of the buffer: columns first.x … second.x - 1, rows second.y … first.y - 1.
/// @param width,height   size of the whole buffer; a height of 0 or less is taken as not given
/// @param first          left column and top row bound of the region
/// @param second         right column bound and bottom row of the region. With second.y above first.y no row is taken
///                       and the bounds are 0, 0 at 14 bits
/// @return 1; 0 for a region of less than 51 columns or rows, one that leaves the buffer or runs from right to left,
///         and as QVR_DISP_AutoWL, with both bounds untouched
QVR_API int QVR_DISP_AutoWLByROI(int& low, int& high, int width, int height, const std::uint16_t* pixels,
                                 int bitsStored, CPoint first, CPoint second, float lowFraction,
                                 float highFraction);

/// Turns a pixel buffer by a quarter turn, in place.
/// @param width,height        size before the turn, in pixels
/// @param pixels              width * height values, bottom row first; afterwards rows of `height` values
/// @param newWidth,newHeight  out: the size after the turn
/// @param direction           0 clockwise as displayed, anything else counter-clockwise
/// @return 1; 0 for null, a bad size or when no scratch buffer could be had, with pixels and outputs left as they were
QVR_API int QVR_DISP_Rotate(int width, int height, std::uint16_t* pixels, int& newWidth, int& newHeight,
                            int direction);

/// Mirrors a pixel buffer, in place.
/// @param mode  0 upside down (rows change places), anything else left to right (columns change places)
/// @return 1; 0 for null or a bad size
QVR_API int QVR_DISP_Mirror(int width, int height, std::uint16_t* pixels, int mode);

/// Copies a rectangle of a buffer into another one.
/// @param width         of the source, in pixels
/// @param height        of the source; 0 or less is taken as not given, and the rectangle's top is then not checked
/// @param rectangle     in source columns and rows; `right` is not read; bottom at or above top copies nothing
/// @param outputWidth   values copied per row, and the output's row length
/// @param outputHeight  rows of the output; 0 or less is taken as not given, and the number of rows not checked
/// @param output        room for outputWidth * (top - bottom) values; may be the source
/// @return 1; 0, with nothing copied, for null, a negative width and a rectangle that leaves source or output
QVR_API int QVR_DISP_Cut(int width, int height, const std::uint16_t* pixels, const RECT* rectangle,
                         int outputWidth, int outputHeight, std::uint16_t* output);

/// Keeps one rectangle of a buffer, moves it to the middle, and fills the rest.
/// @param pixels     width * height values, changed in place
/// @param rectangle  at least 11 x 11; its rows are taken upward from `bottom`, its columns from `left`
/// @param mode       0 fills with 65535, anything else with 0
/// @return 1; 0, with nothing changed, for null, a bad size, a smaller rectangle or one that leaves the buffer
QVR_API int QVR_DISP_Mask(int width, int height, std::uint16_t* pixels, const RECT* rectangle, int mode);

/// Cuts a rectangle out (QVR_DISP_Cut) and fills everything of the cut outside a second rectangle, which stays in place.
/// @param height        of the source; 0 or less is taken as not given
/// @param cut           in source columns and rows
/// @param keep          in source columns and rows, at least 11 x 11; with bottom above top nothing is kept
/// @param output        outputWidth * outputHeight values
/// @param mode          0 fills with 65535, anything else with 0
/// @return 1; 0, with nothing changed, as QVR_DISP_Cut; 0, with the plain cut in the output, for a smaller rectangle to
///         keep and for one that leaves the cut
QVR_API int QVR_DISP_Cut_Mask(int width, int height, const std::uint16_t* pixels, const RECT* cut,
                              const RECT* keep, int outputWidth, int outputHeight, std::uint16_t* output,
                              int mode);

/// Turns a buffer into its negative: every value v becomes maximum - v, modulo 65536.
/// @param width,height  in pixels; a side of 0 or less leaves the buffer alone and still gives the centre
/// @param bitsStored    10, 12, 14 or 16; the maximum is 2^bitsStored - 1
/// @param center        of the present window
/// @param newCenter     out: the centre that shows the negative as the buffer was shown, maximum - center
/// @return 1; 0, with nothing changed, for another depth, for null pixels and for too large a size
QVR_API int QVR_DISP_Invert(int width, int height, std::uint16_t* pixels, int bitsStored, int center,
                            int& newCenter);
