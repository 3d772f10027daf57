// Tables as steps, and their lookup with AVX-512: four lookups of 128 bytes replace 64 of one byte.
#include "qvr/image/detail/greySteps.h"

#include <algorithm>

#include "qvr/platform/detail/avx512.h"

namespace qvr {

std::optional<GreySteps> greySteps(std::span<const std::uint8_t> table) {
    if (table.empty() || table.size() > 16384) return std::nullopt;
    const auto rising =
        std::find_if(table.begin(), table.end(), [&](auto grey) { return grey != table.front(); });
    const auto level =
        std::find_if(table.rbegin(), table.rend(), [&](auto grey) { return grey != table.back(); });
    GreySteps steps;
    const auto low = static_cast<std::size_t>(std::max<std::ptrdiff_t>(rising - table.begin() - 1, 0));
    const std::size_t high = std::max(table.size() - static_cast<std::size_t>(level - table.rbegin()), low);
    steps.low = static_cast<std::uint16_t>(low);
    steps.high = static_cast<std::uint16_t>(std::min(high, table.size() - 1));
    const std::size_t last = std::size_t{steps.high} - low;
    while (last >> steps.shift > 255) ++steps.shift;
    for (GreySteps::Cells& places : steps.rise) places.fill(255);
    for (std::size_t cell = 0; cell <= last >> steps.shift; ++cell) {
        const std::uint8_t* const grey = table.data() + low + (cell << steps.shift);
        const std::size_t length =
            std::min<std::size_t>(std::size_t{1} << steps.shift, last + 1 - (cell << steps.shift));
        steps.first[cell] = grey[0];
        std::size_t found = 0;
        for (std::size_t i = 1; i < length; ++i) {
            if (grey[i] < grey[i - 1] || found + grey[i] - grey[i - 1] > GreySteps::kMostRises)
                return std::nullopt;
            for (int rise = grey[i] - grey[i - 1]; rise > 0; --rise)
                steps.rise[found++][cell] = static_cast<std::uint8_t>(i);
        }
        steps.rises = std::max(steps.rises, found);
    }
    return steps;
}

namespace avx512 {

#if defined(__x86_64__)

#define QVR_TARGET __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi")))

namespace {

struct Bytes256 {
    __m512i part[4];

    QVR_TARGET explicit Bytes256(const GreySteps::Cells& bytes) {
        for (std::size_t i = 0; i < 4; ++i) part[i] = _mm512_load_si512(bytes.data() + 64 * i);
    }
    QVR_TARGET __m512i at(__m512i index) const {
        const __m512i lower = _mm512_permutex2var_epi8(part[0], index, part[1]);
        const __m512i upper = _mm512_permutex2var_epi8(part[2], index, part[3]);
        return _mm512_mask_blend_epi8(_mm512_movepi8_mask(index), lower, upper);
    }
};

// The lower bytes of 64 words.
QVR_TARGET inline __m512i lowBytes(__m512i first, __m512i second) {
    return _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(first)),
                              _mm512_cvtepi16_epi8(second), 1);
}

template <std::size_t Rises>
QVR_TARGET void stepsRowOf(const std::uint16_t* values, std::size_t count, const GreySteps& steps,
                           std::uint8_t* out) {
    const Bytes256 first(steps.first);
    const Bytes256 rise[4] = {Bytes256(steps.rise[0]), Bytes256(steps.rise[1]), Bytes256(steps.rise[2]),
                              Bytes256(steps.rise[3])};
    const __m512i low = _mm512_set1_epi16(static_cast<short>(steps.low));
    const __m512i high = _mm512_set1_epi16(static_cast<short>(steps.high));
    const __m512i inCell = _mm512_set1_epi8(static_cast<char>((1U << steps.shift) - 1));
    const __m128i shift = _mm_cvtsi32_si128(static_cast<int>(steps.shift));
    const auto within = [&](const std::uint16_t* from) QVR_TARGET {
        return _mm512_subs_epu16(_mm512_min_epu16(_mm512_loadu_si512(from), high), low);
    };
    for (std::size_t i = 0; i < count; i += 64) {
        const __m512i a = within(values + i);
        const __m512i b = within(values + i + 32);
        const __m512i cell = lowBytes(_mm512_srl_epi16(a, shift), _mm512_srl_epi16(b, shift));
        const __m512i place = _mm512_and_si512(lowBytes(a, b), inCell);
        __m512i grey = first.at(cell);
        for (std::size_t k = 0; k < Rises; ++k) {
            const __mmask64 risen = _mm512_cmpge_epu8_mask(place, rise[k].at(cell));
            grey = _mm512_mask_sub_epi8(grey, risen, grey, _mm512_set1_epi8(-1));
        }
        _mm512_storeu_si512(out + i, grey);
    }
}

}  // namespace

void stepsRow(const std::uint16_t* values, std::size_t count, const GreySteps& steps, std::uint8_t* out) {
    using Version = void (*)(const std::uint16_t*, std::size_t, const GreySteps&, std::uint8_t*);
    static constexpr Version kVersions[GreySteps::kMostRises + 1] = {
        stepsRowOf<0>, stepsRowOf<1>, stepsRowOf<2>, stepsRowOf<3>, stepsRowOf<4>};
    kVersions[steps.rises](values, count, steps, out);
}

#else

void stepsRow(const std::uint16_t*, std::size_t, const GreySteps&, std::uint8_t*) {}

#endif

}  // namespace avx512

}  // namespace qvr
