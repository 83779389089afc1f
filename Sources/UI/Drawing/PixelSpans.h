// The inner loops of drawing: what happens to a stretch of pixels in a row.
#pragma once

#include "CPalette.h"

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qel::spans {

// Pixels are words with blue in the lowest byte, then green, red and 0. Each function has a loop over plain
// integers; where SSE2 is there, it takes four pixels at a time first and yields the same bits.

// The colour itself.
inline std::uint32_t solidPixel(const CPaletteColor& color)
{
    return color.blue[255] | (std::uint32_t{color.green[255]} << 8) | (std::uint32_t{color.red[255]} << 16);
}

// --- one pixel

// c + (s - c) * weight / 2^15 for each channel, the product rounded down; weight 0 to 32768.
inline std::uint32_t blendPixelQ15(std::uint32_t target, std::uint32_t source, std::int32_t weight)
{
    std::uint32_t result = 0;
    for (unsigned shift = 0; shift < 24; shift += 8) {
        const auto c = static_cast<std::int32_t>((target >> shift) & 0xFF);
        const auto s = static_cast<std::int32_t>((source >> shift) & 0xFF);
        result |= static_cast<std::uint32_t>((c * 32768 + (s - c) * weight) >> 15) << shift;
    }
    return result;
}

// a + (b - a) * weight / 2^16 for each channel, the product rounded down; weight 0 to 65536.
inline std::uint32_t blendPixelQ16(std::uint32_t target, std::uint32_t source, std::int32_t weight)
{
    std::uint32_t result = 0;
    for (unsigned shift = 0; shift < 24; shift += 8) {
        const auto a = static_cast<std::int32_t>((target >> shift) & 0xFF);
        const auto b = static_cast<std::int32_t>((source >> shift) & 0xFF);
        result |= static_cast<std::uint32_t>(a + (((b - a) * weight) >> 16)) << shift;
    }
    return result;
}

// c + (s - c) * weight / 255 for each channel, the quotient rounded towards 0; weight 0 to 255.
inline std::uint32_t blendPixel255(std::uint32_t target, std::uint32_t source, std::int32_t weight)
{
    std::uint32_t result = 0;
    for (unsigned shift = 0; shift < 24; shift += 8) {
        const auto c = static_cast<std::int32_t>((target >> shift) & 0xFF);
        const auto s = static_cast<std::int32_t>((source >> shift) & 0xFF);
        result |= static_cast<std::uint32_t>(c + (s - c) * weight / 255) << shift;
    }
    return result;
}

// The weight of an alpha under an opacity, both folded into 2^15.
inline std::int32_t alphaWeight(std::uint8_t alpha, std::int32_t opacity)
{
    return alpha * opacity / 255;
}

// --- where the pixels and the alphas of a span come from

struct OneColor
{
    std::uint32_t color;

    std::uint32_t at(std::int32_t) const { return color; }
#if defined(__SSE2__)
    __m128i fourAt(std::int32_t) const
    {
        return _mm_set1_epi32(static_cast<int>(color));
    }
#endif
};

// A byte for each pixel.
struct AlphaBytes
{
    const std::uint8_t* bytes;

    std::uint8_t at(std::int32_t i) const { return bytes[i]; }
#if defined(__SSE2__)
    // Each in a word of its own.
    __m128i fourAt(std::int32_t i) const
    {
        std::int32_t word = 0;
        std::memcpy(&word, bytes + i, sizeof word);
        const __m128i zero = _mm_setzero_si128();
        return _mm_unpacklo_epi16(_mm_unpacklo_epi8(_mm_cvtsi32_si128(word), zero), zero);
    }
#endif
};

#if defined(__SSE2__)

inline __m128i loadFour(const std::uint32_t* pixels)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels));
}

inline void storeFour(std::uint32_t* pixels, __m128i four)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels), four);
}

// Two pixels as 16-bit channels. The product with twice the difference has its high word taken, which is the
// shift by 15. A weight of 32768 is negative as a signed word; its product comes out as minus the difference,
// which adding twice the difference mends.
inline __m128i blendTwoQ15(__m128i target, __m128i source, __m128i weights)
{
    const __m128i difference = _mm_sub_epi16(source, target);
    const __m128i twice = _mm_add_epi16(difference, difference);
    const __m128i mend = _mm_and_si128(twice, _mm_srai_epi16(weights, 15));
    return _mm_add_epi16(target, _mm_add_epi16(_mm_mulhi_epi16(twice, weights), mend));
}

// Four pixels with a weight each, in the low words of `weights`.
inline __m128i blendFourQ15(__m128i target, __m128i source, __m128i weights)
{
    const __m128i zero = _mm_setzero_si128();
    __m128i low = _mm_unpacklo_epi32(weights, weights);
    __m128i high = _mm_unpackhi_epi32(weights, weights);
    low = _mm_shufflehi_epi16(_mm_shufflelo_epi16(low, 0), 0);
    high = _mm_shufflehi_epi16(_mm_shufflelo_epi16(high, 0), 0);
    return _mm_packus_epi16(
        blendTwoQ15(_mm_unpacklo_epi8(target, zero), _mm_unpacklo_epi8(source, zero), low),
        blendTwoQ15(_mm_unpackhi_epi8(target, zero), _mm_unpackhi_epi8(source, zero), high));
}

// alphaWeight() of four alphas. Floats hold the products (below 2^24) and tell quotients that differ by 1/255
// apart, since those are below 2^15: so cutting the quotient gives that of whole numbers.
inline __m128i fourAlphaWeights(__m128i alphas, __m128 opacity)
{
    const __m128 products = _mm_mul_ps(_mm_cvtepi32_ps(alphas), opacity);
    return _mm_cvttps_epi32(_mm_div_ps(products, _mm_set1_ps(255.0F)));
}

#endif

// --- spans

inline void fill(std::uint32_t* target, std::int32_t count, std::uint32_t color)
{
    std::int32_t i = 0;
#if defined(__SSE2__)
    const __m128i four = _mm_set1_epi32(static_cast<int>(color));
    for (; i + 4 <= count; i += 4) {
        storeFour(target + i, four);
    }
#endif
    for (; i < count; ++i) {
        target[i] = color;
    }
}

// Source over target, with an alpha for each pixel; opacity 0 to 32768.
template <class Source, class Alphas>
void blendAlphas(std::uint32_t* target, std::int32_t count, Source source, Alphas alphas,
                 std::int32_t opacity)
{
    std::int32_t i = 0;
#if defined(__SSE2__)
    const __m128 wideOpacity = _mm_set1_ps(static_cast<float>(opacity));
    for (; i + 4 <= count; i += 4) {
        const __m128i weights = fourAlphaWeights(alphas.fourAt(i), wideOpacity);
        storeFour(target + i, blendFourQ15(loadFour(target + i), source.fourAt(i), weights));
    }
#endif
    for (; i < count; ++i) {
        target[i] = blendPixelQ15(target[i], source.at(i), alphaWeight(alphas.at(i), opacity));
    }
}

// Source over target with one weight, 0 to 32768.
template <class Source>
void blendEven(std::uint32_t* target, std::int32_t count, Source source, std::int32_t weight)
{
    std::int32_t i = 0;
#if defined(__SSE2__)
    const __m128i weights = _mm_set1_epi32(weight);
    for (; i + 4 <= count; i += 4) {
        storeFour(target + i, blendFourQ15(loadFour(target + i), source.fourAt(i), weights));
    }
#endif
    for (; i < count; ++i) {
        target[i] = blendPixelQ15(target[i], source.at(i), weight);
    }
}

// Target towards source; weight above 0 and below 65536.
inline void crossFade(std::uint32_t* target, std::int32_t count, const std::uint32_t* source,
                      std::int32_t weight)
{
    std::int32_t i = 0;
#if defined(__SSE2__)
    // From 32768 on the weight is 65536 too little as a signed word, and the product by the difference.
    const __m128i zero = _mm_setzero_si128();
    const __m128i weights = _mm_set1_epi16(static_cast<short>(weight));
    const __m128i mend = _mm_srai_epi16(weights, 15);
    const auto fadeTwo = [&](__m128i a, __m128i b) {
        const __m128i difference = _mm_sub_epi16(b, a);
        const __m128i product = _mm_mulhi_epi16(difference, weights);
        return _mm_add_epi16(a, _mm_add_epi16(product, _mm_and_si128(difference, mend)));
    };
    for (; i + 4 <= count; i += 4) {
        const __m128i a = loadFour(target + i);
        const __m128i b = loadFour(source + i);
        storeFour(target + i,
                  _mm_packus_epi16(fadeTwo(_mm_unpacklo_epi8(a, zero), _mm_unpacklo_epi8(b, zero)),
                                   fadeTwo(_mm_unpackhi_epi8(a, zero), _mm_unpackhi_epi8(b, zero))));
    }
#endif
    for (; i < count; ++i) {
        target[i] = blendPixelQ16(target[i], source[i], weight);
    }
}

// Target towards one colour; weight 0 to 255.
inline void tint(std::uint32_t* target, std::int32_t count, std::uint32_t color, std::int32_t weight)
{
    std::int32_t i = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    const __m128i one = _mm_set1_epi16(1);
    const __m128i weights = _mm_set1_epi16(static_cast<short>(weight));
    const __m128i colors = _mm_set1_epi32(static_cast<int>(color));
    // n / 255 for n up to 255 * 255.
    const auto scaled = [&](__m128i difference) {
        const __m128i n = _mm_mullo_epi16(difference, weights);
        return _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(n, one), _mm_srli_epi16(n, 8)), 8);
    };
    for (; i + 4 <= count; i += 4) {
        const __m128i c = loadFour(target + i);
        const __m128i above = _mm_subs_epu8(colors, c);
        const __m128i below = _mm_subs_epu8(c, colors);
        const __m128i difference = _mm_or_si128(above, below);
        const __m128i step = _mm_packus_epi16(scaled(_mm_unpacklo_epi8(difference, zero)),
                                              scaled(_mm_unpackhi_epi8(difference, zero)));
        const __m128i isRising = _mm_cmpeq_epi8(below, zero);
        storeFour(target + i, _mm_sub_epi8(_mm_add_epi8(c, _mm_and_si128(isRising, step)),
                                           _mm_andnot_si128(isRising, step)));
    }
#endif
    for (; i < count; ++i) {
        target[i] = blendPixel255(target[i], color, weight);
    }
}

inline void invert(std::uint32_t* target, std::int32_t count)
{
    for (std::int32_t i = 0; i < count; ++i) {
        target[i] ^= 0xFFFFFFU;
    }
}

} // namespace qel::spans
