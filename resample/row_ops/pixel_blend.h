// Pixels of each kind, and how one is blended.

#pragma once

#include <cstdint>
#include <cstring>

#include "resample/formulas.h"

namespace tavo {
namespace {

// A pixel of bytes, blended one by one.
template <int32_t kBytes>
struct BytePixel {
    static constexpr int32_t kSize = kBytes;

    template <Rounding kRounding>
    static void Blend(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight) {
        for (int32_t i = 0; i < kBytes; ++i) {
            dst[i] = static_cast<uint8_t>(BlendSamples<kRounding>(a[i], b[i], weight));
        }
    }
};
using PlanePixel = BytePixel<1>;
using Rgb24Pixel = BytePixel<3>;

// A 16-bit pixel of three fields, with blue in the lowest bits.
template <int32_t kGreenBits>
struct FieldPixel {
    static constexpr int32_t kSize = 2;
    static constexpr int32_t kBlueMask = 0x1f;
    static constexpr int32_t kGreenMask = (1 << kGreenBits) - 1;
    static constexpr int32_t kRedMask = 0x1f;
    static constexpr int32_t kGreenShift = 5;
    static constexpr int32_t kRedShift = 5 + kGreenBits;

    static int32_t Load(const uint8_t* pixel) {
        uint16_t word;
        std::memcpy(&word, pixel, sizeof(word));
        return word;
    }

    template <Rounding kRounding>
    static void Blend(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight) {
        const int32_t from = Load(a);
        const int32_t to = Load(b);
        const auto field = [=](int32_t shift, int32_t mask) {
            return BlendSamples<kRounding>(from >> shift & mask, to >> shift & mask, weight)
                   << shift;
        };
        const auto word = static_cast<uint16_t>(
            field(0, kBlueMask) | field(kGreenShift, kGreenMask) | field(kRedShift, kRedMask));
        std::memcpy(dst, &word, sizeof(word));
    }
};
using Rgb555Pixel = FieldPixel<5>;
using Rgb565Pixel = FieldPixel<6>;

template <typename Pixel>
concept HasFields = requires {
    Pixel::kGreenMask;
};

}  // namespace
}  // namespace tavo
