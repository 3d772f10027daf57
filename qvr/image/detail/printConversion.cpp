// Print bitmaps.
#include "qvr/image/detail/printConversion.h"

#include "qvr/image/detail/greyRow.h"

namespace qvr {

void convertRegion(const std::uint16_t* source, std::int64_t stride, std::span<const std::uint8_t> table,
                   const BitmapRows& bitmap, const GreyRamp* ramp, CodePath path) {
    greyRows(source, stride, {table, ramp}, bitmap, path);
}

}  // namespace qvr
