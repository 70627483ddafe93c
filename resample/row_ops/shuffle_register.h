// What a register type must offer to have the row operations of shuffle_ops.h. A new instruction
// set writes a struct of these; what it lacks is a compile error that names it.

#pragma once

#include <cstdint>

namespace tavo {
namespace {

// A register is kParts parts of sixteen bytes. Lanes are 8 or 16 bits, as the names say, and wrap
// around unless a name says otherwise. "Part by part" means that the first part of the result is
// made of the first parts of the arguments, and so on.
template <typename V>
concept ShuffleRegister = requires(typename V::Reg a, typename V::Reg b, uint8_t* to,
                                   const uint8_t* from, const int32_t* low, const int32_t* high) {
    requires V::kParts == 1 || V::kParts == 2 || V::kParts == 4;
    // Whether a shuffle reaches across all parts, so that they share a window (shuffle_plan.h).
    requires V::kSharesWindow || V::kParts <= 2;
    // Whether planes are blended so fast that it pays to ask for their rows ahead.
    requires V::kFetchesPlanes || !V::kFetchesPlanes;

    // Memory at any address.
    a = V::Load(from);
    V::Store(to, a);

    // Sixteen bytes from from + low[part] for each part. A shared window is one register from
    // from + low[0].
    a = V::LoadWindows(from, low);

    // Byte i of the result is byte b[i] of the part, or of the register where windows are shared.
    a = V::Shuffle(a, b);
    a = V::ShuffleParts(a, b);  // of the part everywhere

    // The same of two windows: for each part, eight bytes from from + low[part] and then eight from
    // from + high[part]; where they are shared, two registers from from + low[0] on.
    a = V::ShuffleTwoWindows(from, low, high, b);

    // Of two registers, part by part: byte i of the result is byte b[i] of both parts, one after
    // the other. Not needed where windows are shared.
    requires V::kSharesWindow || requires { a = V::ShuffleTwo(a, a, b); };

    // The same in all lanes.
    a = V::Set8(uint8_t{});
    a = V::Set16(int16_t{});

    a = V::And(a, b);
    a = V::Or(a, b);
    a = V::Xor(a, b);
    a = V::Add16(a, b);
    a = V::Sub16(a, b);
    a = V::SubSaturated8(a, b);          // unsigned; not below 0
    a = V::SubSaturated16(a, b);         // signed
    a = V::AverageUp8(a, b);             // unsigned: (a + b + 1) / 2
    a = V::MulHigh16(a, b);              // signed: the upper half of a * b
    a = V::MulAddBytes(a, b);            // a0 * b0 + a1 * b1; a unsigned, b signed, fits 16 bits
    a = V::ShiftRight8(a);               // 16 bits, by 8, signed
    a = V::template ShiftRight16<5>(a);  // unsigned
    a = V::template ShiftLeft16<5>(a);

    // Part by part: a0 b0 a1 b1 ... of the lower or the upper eight bytes of a part.
    a = V::InterleaveLow8(a, b);
    a = V::InterleaveHigh8(a, b);
    // The same of halves of parts: the lower or the upper ones of a and b.
    a = V::InterleaveLow64(a, b);
    a = V::InterleaveHigh64(a, b);
    // The reverse: 16-bit lanes to signed bytes, in each part those of a first.
    a = V::PackSigned(a, b);

    // These join the two registers of a step: the upper bytes of 16-bit lanes, the lower halves of
    // all parts, the upper halves. They may work part by part: PositionOf orders a plan's tiles so
    // that the result is in the order of the destination.
    a = V::HighBytes(a, b);
    a = V::LowHalves(a, b);
    a = V::HighHalves(a, b);

    // 16-bit lanes to unsigned bytes: all of a, then all of b.
    a = V::PackUnsignedInOrder(a, b);
    // a0 b0 a1 b1 ... of whole registers.
    V::StoreInterleaved8(to, a, b);
};

}  // namespace
}  // namespace tavo
