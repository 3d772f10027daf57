// Block sums in portable loops, and the choice between them and the loops written for one processor.
#include "qvr/image/detail/blockSums.h"

#include "qvr/image/detail/blockSumsAvx512.h"
#include "qvr/platform/detail/clones.h"
#include "qvr/platform/detail/processor.h"

namespace qvr {

BlockColumns blockColumns(std::span<const std::int32_t> first, std::int32_t length) {
    BlockColumns columns{{first.begin(), first.end()}, length, length == 1, {}};
    bool rising = true;
    for (std::size_t i = 1; i < first.size(); ++i) {
        columns.adjacent = columns.adjacent && first[i] == first[i - 1] + 1;
        rising = rising && first[i] > first[i - 1];
    }
    if (!rising || first.empty()) return columns;
    columns.masks.resize(static_cast<std::size_t>(first.back()) / 32 + 1);
    for (const std::int32_t column : first)
        columns.masks[static_cast<std::size_t>(column) / 32] |= 1U << (column % 32);
    return columns;
}

std::int64_t BlockColumns::width() const {
    return first.empty() ? 0 : std::int64_t{first.back()} + length;
}

namespace {

// The rule.
void plainSums(const BlockRows& rows, const BlockColumns& columns, std::uint32_t* out) {
    for (std::size_t i = 0; i < columns.first.size(); ++i) {
        std::uint32_t sum = 0;
        for (std::int64_t row = 0; row < rows.count; ++row)
            for (std::int64_t k = 0; k < columns.length; ++k)
                sum += rows.values[row * rows.stride + columns.first[i] + k];
        out[i] = sum;
    }
}

// First the rows of the blocks are added up column by column. Values above 14 bits enter the sums, so 16 bits would not
// do.
QVR_CLONES void addRows(const std::uint16_t* __restrict rows, std::int64_t stride, std::int64_t rowCount,
                        std::int64_t width, std::uint32_t* __restrict sums) {
    const std::uint16_t* __restrict second = rows + (rowCount > 1 ? stride : 0);
    const std::uint16_t* __restrict third = rows + (rowCount > 2 ? 2 * stride : 0);
    if (rowCount == 1) {
        for (std::int64_t column = 0; column < width; ++column) sums[column] = rows[column];
    } else if (rowCount == 2) {
        for (std::int64_t column = 0; column < width; ++column)
            sums[column] = std::uint32_t{rows[column]} + second[column];
    } else {
        for (std::int64_t column = 0; column < width; ++column)
            sums[column] = std::uint32_t{rows[column]} + second[column] + third[column];
    }
    for (std::int64_t row = 3; row < rowCount; ++row) {
        const std::uint16_t* __restrict next = rows + row * stride;
        for (std::int64_t column = 0; column < width; ++column) sums[column] += next[column];
    }
}

// The rows of the next blocks are fetched while these are worked on: of several rows at once no processor foresees the
// next.
void prefetch(const BlockRows& rows, std::int64_t width) {
    if (rows.ahead == 0) return;
    const std::uint16_t* const next = rows.values + rows.ahead * rows.stride;
    for (std::int64_t row = 0; row < rows.count; ++row)
        for (std::int64_t column = 0; column < width; column += 32)
            __builtin_prefetch(next + row * rows.stride + column, 0, 2);
}

// Then the columns of every block. A length that the compiler knows unrolls the inner loop: a fifth of the time of the
// rule for blocks of two or three columns.
template <int Length, class Sum>
inline __attribute__((always_inline)) void sumsOf(const Sum* __restrict row,
                                                  const std::int32_t* __restrict first, std::size_t count,
                                                  Sum* __restrict out) {
    for (std::size_t i = 0; i < count; ++i) {
        Sum sum = 0;
        for (int k = 0; k < Length; ++k) sum = static_cast<Sum>(sum + row[first[i] + k]);
        out[i] = sum;
    }
}

template <class Sum>
inline __attribute__((always_inline)) void unrolledSums(const Sum* __restrict row,
                                                        const std::int32_t* __restrict first,
                                                        std::size_t count, std::int32_t length,
                                                        Sum* __restrict out) {
    switch (length) {
        case 1:
            return sumsOf<1>(row, first, count, out);
        case 2:
            return sumsOf<2>(row, first, count, out);
        case 3:
            return sumsOf<3>(row, first, count, out);
        case 4:
            return sumsOf<4>(row, first, count, out);
        default:
            for (std::size_t i = 0; i < count; ++i) {
                Sum sum = 0;
                for (std::int32_t k = 0; k < length; ++k) sum = static_cast<Sum>(sum + row[first[i] + k]);
                out[i] = sum;
            }
    }
}

QVR_CLONES void addColumns(const std::uint32_t* row, const std::int32_t* first, std::size_t count,
                           std::int32_t length, std::uint32_t* out) {
    unrolledSums(row, first, count, length, out);
}
QVR_CLONES void addColumns(const std::uint16_t* row, const std::int32_t* first, std::size_t count,
                           std::int32_t length, std::uint16_t* out) {
    unrolledSums(row, first, count, length, out);
}

bool compresses(const BlockColumns& columns, CodePath path) {
    return hasAvx512Permutes() && path == CodePath::fastest && !columns.masks.empty() &&
           columns.length <= avx512::kLongestBlock;
}

}  // namespace

void sumBlocks(const BlockRows& rows, const BlockColumns& columns, std::uint32_t* scratch, std::uint32_t* out,
               CodePath path) {
    if (path == CodePath::plain) return plainSums(rows, columns, out);
    if (compresses(columns, path)) return avx512::sumBlocks(rows, columns, out);
    const std::int64_t width = columns.width();
    addRows(rows.values, rows.stride, rows.count, width, scratch);
    prefetch(rows, width);
    addColumns(scratch, columns.first.data(), columns.first.size(), columns.length, out);
}

void pickValues(const BlockRows& rows, const BlockColumns& columns, std::uint16_t* out, CodePath path) {
    if (compresses(columns, path)) return avx512::pickValues(rows, columns, out);
    for (std::size_t i = 0; i < columns.first.size(); ++i) out[i] = rows.values[columns.first[i]];
}

void sumColumns(const std::uint16_t* row, const BlockColumns& columns, std::uint16_t* out, CodePath path) {
    if (compresses(columns, path)) return avx512::sumColumns(row, columns, out);
    addColumns(row, columns.first.data(), columns.first.size(), columns.length, out);
}

}  // namespace qvr
