// Block means in one pass over the source: first the rows of a block are added up column by column, then the columns
// of each block. Blocks of one bitmap row lie side by side, so each source value is read once.
#include "qvr/image/detail/blockConversion.h"

#include <algorithm>
#include <limits>

#include "qvr/image/detail/blockSums.h"
#include "qvr/image/detail/greyRow.h"
#include "qvr/platform/detail/numbers.h"

namespace qvr {

BlockSpans blockSpans(int blocks, int size, int offset, float ratio) {
    const float pitch =
        1.0f / ratio;  // single precision on purpose: its rounding decides where the blocks start
    BlockSpans spans;
    spans.length = std::max<std::int64_t>(toInt(pitch), 1);
    spans.first.resize(static_cast<std::size_t>(blocks));
    spans.end.resize(static_cast<std::size_t>(blocks));
    spans.wholeBegin = blocks;
    for (int i = 0; i < blocks; ++i) {
        const std::int64_t start = std::int64_t{toInt(static_cast<double>(i) * pitch)} + offset;
        const std::int64_t first = std::clamp<std::int64_t>(start, 0, size);
        const std::int64_t end = std::clamp<std::int64_t>(start + spans.length, first, size);
        spans.first[static_cast<std::size_t>(i)] = static_cast<std::int32_t>(first);
        spans.end[static_cast<std::size_t>(i)] = static_cast<std::int32_t>(end);
        if (end - first != spans.length) continue;
        spans.wholeBegin = std::min(spans.wholeBegin, i);
        spans.wholeEnd = i + 1;
    }
    spans.wholeEnd = std::max(spans.wholeEnd, spans.wholeBegin);
    return spans;
}

namespace {

// The rule, block by block with sums in 64 bits. Used where a block is cut by the image's edge or too large for 32 bits.
void convertPlainly(const std::uint16_t* rows, std::int64_t width, std::int64_t rowCount,
                    const BlockSpans& columns, int begin, int end, const DisplayTable& table,
                    std::uint8_t* out) {
    for (int x = begin; x < end; ++x) {
        const std::int64_t first = columns.first[static_cast<std::size_t>(x)];
        const std::int64_t last = columns.end[static_cast<std::size_t>(x)];
        std::uint64_t sum = 0;
        for (std::int64_t row = 0; row < rowCount; ++row)
            for (std::int64_t column = first; column < last; ++column) sum += rows[row * width + column];
        const auto count = static_cast<std::uint64_t>((last - first) * rowCount);
        out[x] =
            count == 0 ? std::uint8_t{0} : table[std::min<std::uint64_t>(sum / count, kLargestValue14Bits)];
    }
}

// The fast way for the columns begin … end - 1, whose blocks are whole.
class WholeBlocks {
public:
    WholeBlocks(const BlockSpans& columns, const GreyMap& map, CodePath path)
        : m_begin(columns.wholeBegin),
          m_count(static_cast<std::size_t>(columns.wholeEnd - columns.wholeBegin)),
          m_length(columns.length),
          m_map(map),
          m_path(path) {
        if (m_count == 0) return;
        const std::int32_t* const first = columns.first.data() + m_begin;
        m_base = first[0];
        std::vector<std::int32_t> relative(first, first + m_count);
        for (std::int32_t& column : relative) column -= m_base;
        m_columns = blockColumns(relative, static_cast<std::int32_t>(m_length));
        m_scratch.resize(static_cast<std::size_t>(m_columns.width()));
        m_sums.resize(m_count + kBlockPadding);
        m_values.resize(m_length == 1 ? m_count + kBlockPadding : 0);
    }

    bool possible(std::int64_t rowCount) const {
        return m_count > 0 && rowCount > 0 && m_length * rowCount <= kLargestBlock;
    }

    /// @param rows  from column 0 of the image
    void convert(BlockRows rows, std::uint8_t* out) {
        rows.values += m_base;
        out += m_begin;
        if (rows.count == 1 && m_length == 1) {
            if (!m_columns.adjacent) pickValues(rows, m_columns, m_values.data(), m_path);
            return greyRow(m_columns.adjacent ? rows.values : m_values.data(), m_count, m_map, out, m_path);
        }
        sumBlocks(rows, m_columns, m_scratch.data(), m_sums.data(), m_path);
        greyOfSums(m_sums.data(), m_count, static_cast<std::uint32_t>(m_length * rows.count), m_map, out,
                   m_path);
    }

private:
    static constexpr std::int64_t kLargestBlock = 65536;  // pixels whose sum fits into 32 bits

    int m_begin;
    std::size_t m_count;
    std::int64_t m_length;
    std::int32_t m_base = 0;  // first column of all
    GreyMap m_map;
    CodePath m_path;
    BlockColumns m_columns;
    std::vector<std::uint32_t> m_scratch;
    std::vector<std::uint32_t> m_sums;
    std::vector<std::uint16_t> m_values;
};

// Whether the blocks are single pixels side by side, all of them inside the image.
bool oneToOne(const BlockSpans& spans) {
    const auto count = static_cast<std::ptrdiff_t>(spans.first.size());
    return spans.length == 1 && spans.wholeBegin == 0 && spans.wholeEnd == count && count > 0 &&
           spans.first.back() - spans.first.front() == count - 1;
}

}  // namespace

void convertBlocks(const std::uint16_t* pixels, int width, const BlockSpans& columns, const BlockSpans& rows,
                   const DisplayTable& table, const BitmapRows& bitmap, const GreyRamp* ramp, CodePath path) {
    if (path != CodePath::plain && oneToOne(columns) && oneToOne(rows))
        return greyRows(pixels + rows.first[0] * std::int64_t{width} + columns.first[0], width, {table, ramp},
                        bitmap, path);
    const SteppedMap stepped({table, ramp}, std::int64_t{bitmap.width} * bitmap.height, path);
    WholeBlocks whole(columns, stepped.map(), path);
    for (int y = 0; y < bitmap.height; ++y) {
        const auto row = static_cast<std::size_t>(y);
        const std::int64_t firstRow = rows.first[row];
        const std::int64_t rowCount = rows.end[row] - firstRow;
        const std::uint16_t* const source = pixels + firstRow * width;
        std::uint8_t* const out = bitmap.row(y);
        if (path == CodePath::plain || !whole.possible(rowCount)) {
            convertPlainly(source, width, rowCount, columns, 0, bitmap.width, table, out);
            continue;
        }
        const bool last = y + 1 == bitmap.height || rows.end[row + 1] - rows.first[row + 1] != rowCount;
        const std::int64_t ahead = last ? 0 : rows.first[row + 1] - firstRow;
        convertPlainly(source, width, rowCount, columns, 0, columns.wholeBegin, table, out);
        whole.convert({source, width, rowCount, ahead}, out);
        convertPlainly(source, width, rowCount, columns, columns.wholeEnd, bitmap.width, table, out);
    }
}

}  // namespace qvr
