// Reduced pictures of a display bitmap. The factors are single-precision values on purpose: 600 / 2500 rounds down, and
// a preview is one column narrower for it.
#include "qvr/model/detail/thumbnail.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "qvr/image/detail/blockSums.h"
#include "qvr/platform/detail/clones.h"
#include "qvr/platform/detail/numbers.h"

namespace qvr {

namespace {

constexpr float kThumbScale = 0.2f;
constexpr float kThumbStep = 5.0f;
constexpr std::int64_t kThumbBlock = 4;
constexpr std::int64_t kLargestWithoutPreview = 600000;  // pixels of the display
constexpr float kPreviewSide = 600.0f;

// Where the blocks of a reduced picture start, in one direction.
std::vector<std::int32_t> blockStarts(int count, float step) {
    std::vector<std::int32_t> starts(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        starts[static_cast<std::size_t>(i)] = toInt(static_cast<double>(i) * step);
    return starts;
}

// The rule: every pixel (x, y) becomes the mean of the block of block * block bytes at (trunc(x * step),
// trunc(y * step)), rows taken with their padding. `source` holds every block.
void reducePlainly(const BitmapRows& source, float step, std::int64_t block, const BitmapRows& target) {
    const auto samples = static_cast<std::uint64_t>(block * block);
    for (int y = 0; y < target.height; ++y) {
        const std::int64_t firstRow = toInt(static_cast<double>(y) * step);
        for (int x = 0; x < target.width; ++x) {
            const std::int64_t firstColumn = toInt(static_cast<double>(x) * step);
            std::uint64_t sum = 0;
            for (std::int64_t i = 0; i < block; ++i) {
                const std::uint8_t* row = source.row(static_cast<int>(firstRow + i)) + firstColumn;
                for (std::int64_t j = 0; j < block; ++j) sum += row[j];
            }
            target.row(y)[x] = static_cast<std::uint8_t>(sum / samples);
        }
    }
}

// Rows added up column by column, in 16 bits: enough for blocks of up to 16 rows.
QVR_CLONES void addRows(const std::uint8_t* __restrict rows, std::size_t stride, std::int64_t rowCount,
                        std::int64_t width, std::uint16_t* __restrict sums) {
    for (std::int64_t column = 0; column < width; ++column) sums[column] = rows[column];
    for (std::int64_t row = 1; row < rowCount; ++row) {
        const std::uint8_t* __restrict next = rows + static_cast<std::size_t>(row) * stride;
        for (std::int64_t column = 0; column < width; ++column)
            sums[column] = static_cast<std::uint16_t>(sums[column] + next[column]);
    }
}

// Truncated in single precision: with a half added, the quotient lies at least 0.5 / samples from any whole number, and
// the sum is below 2^16.
QVR_CLONES void takeMeans(const std::uint16_t* __restrict sums, int count, float inverse,
                          std::uint8_t* __restrict out) {
    for (int i = 0; i < count; ++i) {
        const float sum = static_cast<float>(std::int32_t{sums[i]}) + 0.5f;
        out[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>(sum * inverse));
    }
}

// The same in vectors: rows first, then the columns of each block. A fifth of the time for a preview.
void reduceInRows(const BitmapRows& source, float step, std::int64_t block, const BitmapRows& target,
                  CodePath path) {
    const std::vector<std::int32_t> firstRows = blockStarts(target.height, step);
    const BlockColumns columns =
        blockColumns(blockStarts(target.width, step), static_cast<std::int32_t>(block));
    std::vector<std::uint16_t> row(static_cast<std::size_t>(columns.width()) + kBlockPadding);
    std::vector<std::uint16_t> sums(columns.first.size() + kBlockPadding);
    const float inverse = 1.0f / static_cast<float>(block * block);
    for (int y = 0; y < target.height; ++y) {
        addRows(source.row(firstRows[static_cast<std::size_t>(y)]), source.stride, block, columns.width(),
                row.data());
        sumColumns(row.data(), columns, sums.data(), path);
        takeMeans(sums.data(), target.width, inverse, target.row(y));
    }
}

std::unique_ptr<CDib> reduced(const BitmapRows& source, int width, int height, float step, std::int64_t block,
                              CDC* surface) {
    auto bitmap = makeGreyBitmap(width, height, nullptr);
    const BitmapRows target = rowsOf(bitmap.get());
    if (!target) return nullptr;
    reducePicture(source, step, block, target);
    realizePalette(*bitmap, surface);  // last: a surface may call back and release what `source` leads to
    return bitmap;
}

}  // namespace

void reducePicture(const BitmapRows& source, float step, std::int64_t block, const BitmapRows& target,
                   CodePath path) {
    constexpr std::int64_t kLargestBlock = 16;  // 16 * 16 * 255 fits into 16 bits
    if (path == CodePath::plain || block > kLargestBlock)
        reducePlainly(source, step, block, target);
    else
        reduceInRows(source, step, block, target, path);
}

std::unique_ptr<CDib> makeThumbnail(const CDib* display, CDC* surface) {
    const BitmapRows source = rowsOf(display);
    if (!source) return nullptr;
    const int width = toInt(static_cast<double>(source.stride) * kThumbScale);
    const int height = toInt(static_cast<double>(source.height) * kThumbScale);
    return reduced(source, width, height, kThumbStep, kThumbBlock, surface);
}

std::unique_ptr<CDib> makePreview(const CDib* display, CDC* surface) {
    const BitmapRows source = rowsOf(display);
    if (!source || std::int64_t{source.width} * source.height <= kLargestWithoutPreview) return nullptr;

    const auto width = static_cast<double>(source.stride);
    const auto height = static_cast<double>(source.height);
    const auto scale = static_cast<float>(kPreviewSide / std::max(width, height));
    const bool wide = width >= height;
    const int previewWidth = wide ? toInt(kPreviewSide) : toInt(width * scale);
    const int previewHeight = wide ? toInt(height * scale) : toInt(kPreviewSide);
    const auto step = static_cast<float>(1.0 / scale);
    return reduced(source, previewWidth, previewHeight, step, std::max(toInt(step), 1), surface);
}

}  // namespace qvr
