// Grey levels of a row. The rule is one table entry per value; a linear window is quicker computed than looked up.
#include "qvr/image/detail/greyRow.h"

#include <algorithm>
#include <cstring>

#include "qvr/platform/detail/clones.h"
#include "qvr/platform/detail/processor.h"

namespace qvr {

namespace {

// The rule.
void plainRow(const std::uint16_t* values, std::size_t count, std::span<const std::uint8_t> table,
              std::uint8_t* out) {
    const std::size_t last = table.size() - 1;
    for (std::size_t i = 0; i < count; ++i) out[i] = table[std::min<std::size_t>(values[i], last)];
}

// The rule, of a mean.
void plainSums(const std::uint32_t* sums, std::size_t count, std::uint32_t pixels,
               std::span<const std::uint8_t> table, std::uint8_t* out) {
    const std::size_t last = table.size() - 1;
    for (std::size_t i = 0; i < count; ++i) out[i] = table[std::min<std::size_t>(sums[i] / pixels, last)];
}

// Eight values a turn, and one test for all of them whether any lies beyond the table: half the time of a minimum
// for each.
void tableRow(const std::uint16_t* values, std::size_t count, std::span<const std::uint8_t> table,
              std::uint8_t* out) {
    const std::uint8_t* const grey = table.data();
    const std::uint64_t beyond = ~(table.size() - 1) & 0xFFFFU;  // the table's size is a power of two
    const std::uint64_t beyondAny = beyond * 0x0001000100010001U;
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        std::uint64_t a;
        std::uint64_t b;
        std::memcpy(&a, values + i, sizeof a);
        std::memcpy(&b, values + i + 4, sizeof b);
        if (((a | b) & beyondAny) != 0) {
            plainRow(values + i, 8, table, out + i);
            continue;
        }
        for (std::size_t k = 0; k < 4; ++k) {
            out[i + k] = grey[a >> (16 * k) & 0xFFFFU];
            out[i + 4 + k] = grey[b >> (16 * k) & 0xFFFFU];
        }
    }
    plainRow(values + i, count - i, table, out + i);
}

// A third of the time of the table, one to one; with it, memory sets the pace.
void steppedRow(const std::uint16_t* values, std::size_t count, const GreyMap& map, std::uint8_t* out) {
    const std::size_t whole = count / 64 * 64;
    avx512::stepsRow(values, whole, *map.steps, out);
    plainRow(values + whole, count - whole, map.table, out + whole);
}

// (step * d) >> shift is the high half of the 16-bit product of step and d << (16 - shift), which every processor
// multiplies many at a time: a quarter of the time of the table. Both factors must fit into 16 bits, see fitsWords().
QVR_CLONES void rampRow(const std::uint16_t* __restrict values, std::size_t count, std::uint16_t last,
                        std::uint16_t low, std::uint16_t high, std::uint16_t step, std::uint16_t moves,
                        std::uint8_t* __restrict out) {
    // Written so that nothing depends on a comparison but the last line: a compiler would move the product behind the
    // comparison and widen both.
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint16_t value = values[i] < last ? values[i] : last;
        const std::uint16_t atLeast = value > low ? value : low;
        const auto above = static_cast<std::uint16_t>(atLeast - low);
        const auto moved = static_cast<std::uint16_t>(above * moves);
        const auto grey = static_cast<std::uint16_t>((std::uint32_t{step} * moved) >> 16);
        out[i] = static_cast<std::uint8_t>(value > high ? 255 : grey);
    }
}

// The mean of a block of up to 64 pixels is truncated in single precision: with a half added, the quotient lies at least
// 0.5 / pixels from any whole number, and as the sum is below 2^22 the error of one multiplication is less than that.
constexpr std::uint32_t kLargestSingle = 64;

QVR_CLONES void smallMeans(const std::uint32_t* __restrict sums, std::size_t count, float inverse,
                           std::int32_t last, std::int32_t* __restrict means) {
    for (std::size_t i = 0; i < count; ++i) {
        const float sum = static_cast<float>(static_cast<std::int32_t>(sums[i])) + 0.5f;
        const auto mean = static_cast<std::int32_t>(sum * inverse);
        means[i] = mean < last ? mean : last;
    }
}

// Both operands are whole numbers below 2^53, so the truncated quotient is the integer one.
QVR_CLONES void largeMeans(const std::uint32_t* __restrict sums, std::size_t count, double pixels,
                           std::int32_t last, std::int32_t* __restrict means) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto mean = static_cast<std::int32_t>(sums[i] / pixels);
        means[i] = mean < last ? mean : last;
    }
}

QVR_CLONES void rampMeans(const std::int32_t* __restrict means, std::size_t count, std::int32_t low,
                          std::int32_t high, std::int32_t step, int shift, std::uint8_t* __restrict out) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t above = means[i] > low ? means[i] - low : 0;
        const std::int32_t within = means[i] > high ? 0 : above;
        const std::int32_t grey = (step * within) >> shift;
        out[i] = static_cast<std::uint8_t>(means[i] > high ? 255 : grey);
    }
}

void tableMeans(const std::int32_t* means, std::size_t count, const std::uint8_t* grey, std::uint8_t* out) {
    for (std::size_t i = 0; i < count; ++i) out[i] = grey[means[i]];
}

QVR_CLONES void narrow(const std::int32_t* __restrict means, std::size_t count,
                       std::uint16_t* __restrict out) {
    for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<std::uint16_t>(means[i]);
}

}  // namespace

void greyRow(const std::uint16_t* values, std::size_t count, const GreyMap& map, std::uint8_t* out,
             CodePath path) {
    const std::size_t size = map.table.size();
    if (path == CodePath::plain || size > 65536 || (size & (size - 1)) != 0)
        plainRow(values, count, map.table, out);
    else if (map.ramp && map.ramp->fitsWords())
        rampRow(values, count, static_cast<std::uint16_t>(size - 1),
                static_cast<std::uint16_t>(map.ramp->low),
                static_cast<std::uint16_t>(std::min(map.ramp->high, 65535)),
                static_cast<std::uint16_t>(map.ramp->step),
                static_cast<std::uint16_t>(1U << (16 - map.ramp->shift)), out);
    else if (map.steps)
        steppedRow(values, count, map, out);
    else
        tableRow(values, count, map.table, out);
}

// Making steps of a table takes as long as looking up some ten thousand values in it.
SteppedMap::SteppedMap(const GreyMap& map, std::int64_t pixels, CodePath path) : m_map(map) {
    constexpr std::int64_t kWorthIt = 1 << 17;
    if (map.ramp || path != CodePath::fastest || pixels < kWorthIt || !hasAvx512Permutes()) return;
    m_steps = greySteps(map.table);
    m_map.steps = m_steps ? &*m_steps : nullptr;
}

void greyRows(const std::uint16_t* values, std::int64_t stride, const GreyMap& map, const BitmapRows& bitmap,
              CodePath path) {
    const SteppedMap stepped(map, std::int64_t{bitmap.width} * bitmap.height, path);
    for (int y = 0; y < bitmap.height; ++y)
        greyRow(values + y * stride, static_cast<std::size_t>(bitmap.width), stepped.map(), bitmap.row(y),
                path);
}

void greyOfSums(const std::uint32_t* sums, std::size_t count, std::uint32_t pixels, const GreyMap& map,
                std::uint8_t* out, CodePath path) {
    if (path == CodePath::plain) return plainSums(sums, count, pixels, map.table, out);
    const auto last = static_cast<std::int32_t>(map.table.size() - 1);
    constexpr std::size_t kPart = 1024;  // means that stay in the cache
    std::int32_t means[kPart];
    for (std::size_t begin = 0; begin < count; begin += kPart) {
        const std::size_t part = std::min(kPart, count - begin);
        if (pixels <= kLargestSingle)
            smallMeans(sums + begin, part, 1.0f / static_cast<float>(pixels), last, means);
        else
            largeMeans(sums + begin, part, pixels, last, means);
        if (map.ramp)
            rampMeans(means, part, map.ramp->low, map.ramp->high, map.ramp->step, map.ramp->shift,
                      out + begin);
        else if (map.steps) {
            std::uint16_t words[kPart];
            narrow(means, part, words);
            steppedRow(words, part, map, out + begin);
        } else
            tableMeans(means, part, map.table.data(), out + begin);
    }
}

}  // namespace qvr
