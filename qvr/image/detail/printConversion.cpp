// Print bitmaps.
#include "qvr/image/detail/printConversion.h"

#include "qvr/image/detail/greyRow.h"

namespace qvr {

void convertRegion(const std::uint16_t* source, std::int64_t stride, std::span<const std::uint8_t> table,
                   const BitmapRows& bitmap, const GreyRamp* ramp, CodePath path) {
    const auto width = static_cast<std::size_t>(bitmap.width);
    for (int y = 0; y < bitmap.height; ++y)
        greyRow(source + y * stride, width, {table, ramp}, bitmap.row(y), path);
}

}  // namespace qvr
