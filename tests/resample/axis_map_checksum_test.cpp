// One checksum over the axis maps of all pairs of lengths from 1 to 1024, the same in every build
// and under every setting of the x87 unit. The constants come from integer arithmetic.

#include <gtest/gtest.h>

#include <cmath>

#include "resample/axis_map.h"
#include "tests/kernel_oracle/axis_entries.h"
#include "tests/support/x87_state.h"

namespace tavo::test {
namespace {

constexpr int32_t kLongest = 1024;

// FNV-1a in steps of 64 bits: one for the span of a map, one for each entry.
class Checksum {
  public:
    void Add(uint64_t word) { hash_ = (hash_ ^ word) * 0x100000001b3u; }
    void AddEntry(int32_t index, uint8_t weight) {
        Add(static_cast<uint64_t>(static_cast<uint32_t>(index)) << 8 | weight);
    }
    uint64_t Value() const { return hash_; }

  private:
    uint64_t hash_ = 0xcbf29ce484222325u;
};

// Every pair of lengths, or a sample of them where time matters.
struct Pairs {
    int32_t srcStep;
    int32_t dstStep;
    uint64_t checksum;
};
constexpr Pairs kAllPairs = {1, 1, 0x08964e4609e1365du};
constexpr Pairs kSomePairs = {37, 29, 0x7bf5a7e0f82282f2u};

void AddEngineMap(Checksum& sum, int32_t srcLen, int32_t dstLen) {
    AxisMap* map = BuildAxisMap(srcLen, dstLen, 0);
    ASSERT_NE(map, nullptr);
    sum.Add(static_cast<uint64_t>(map->srcSpan));
    for (int32_t i = 0; i < map->count; ++i) sum.AddEntry(map->indices[i], map->weights[i]);
    FreeAxisMap(map);
}

void AddOracleMap(Checksum& sum, int32_t srcLen, int32_t dstLen) {
    const AxisEntries map = MakeAxisEntries(srcLen, dstLen);
    sum.Add(static_cast<uint64_t>(map.srcSpan));
    for (size_t i = 0; i < map.indices.size(); ++i)
        sum.AddEntry(map.indices[i], static_cast<uint8_t>(map.weights[i]));
}

// The map computed in registers as wide as they happen to be.
void AddUnguardedMap(Checksum& sum, int32_t srcLen, int32_t dstLen) {
    const double ratio = static_cast<double>(srcLen) / dstLen;
    const double offset = srcLen >= dstLen ? 0.25 : 0.0;
    sum.Add(static_cast<uint64_t>(dstLen * ratio));
    for (int32_t i = 0; i < dstLen; ++i) {
        const double x = i * ratio;
        const auto index = static_cast<int32_t>(x);
        const double weight = (x - index + offset) * 256;
        sum.AddEntry(index, static_cast<uint8_t>(weight >= 255 ? 255 : weight));
    }
}

using AddMap = void (*)(Checksum&, int32_t, int32_t);

uint64_t ChecksumOf(const Pairs& pairs, AddMap add) {
    Checksum sum;
    for (int32_t srcLen = 1; srcLen <= kLongest; srcLen += pairs.srcStep) {
        for (int32_t dstLen = 1; dstLen <= kLongest; dstLen += pairs.dstStep) {
            add(sum, srcLen, dstLen);
        }
    }
    return sum.Value();
}

TEST(AxisMapChecksum, IsThatOfIntegerArithmetic) {
    EXPECT_EQ(ChecksumOf(kSomePairs, AddOracleMap), kSomePairs.checksum);
}

TEST(AxisMapChecksum, SomePairsUnderEveryX87Setting) {
    EXPECT_EQ(ChecksumOf(kSomePairs, AddEngineMap), kSomePairs.checksum);
    for (const X87Setting& setting : kX87Settings) {
        uint64_t sum;
        {
            const X87ControlWordScope scope(setting.word);
            sum = ChecksumOf(kSomePairs, AddEngineMap);
        }
        EXPECT_EQ(sum, kSomePairs.checksum) << setting.name;
    }
}

TEST(AxisMapChecksumOfAllPairs, IsTheSameInEveryBuild) {
    EXPECT_EQ(ChecksumOf(kAllPairs, AddEngineMap), kAllPairs.checksum);
}

// The longest of all: in 32 bits they run where the product does.
#if defined(__i386__) && defined(_WIN32)
TEST(AxisMapChecksumOfAllPairs, IsTheSameInExtendedPrecision) {
    const X87ControlWordScope scope(0x037f);
    EXPECT_EQ(ChecksumOf(kAllPairs, AddEngineMap), kAllPairs.checksum);
}

TEST(AxisMapChecksumOfAllPairs, IsTheSameInSinglePrecision) {
    const X87ControlWordScope scope(0x007f);
    EXPECT_EQ(ChecksumOf(kAllPairs, AddEngineMap), kAllPairs.checksum);
}

#endif

#if defined(__i386__)
TEST(AxisMapChecksum, NoticesArithmeticThatRoundsOtherwise) {
    for (uint16_t word : {0x037f, 0x007f}) {
        const X87ControlWordScope scope(word);
        EXPECT_NE(ChecksumOf(kSomePairs, AddUnguardedMap), kSomePairs.checksum);
    }
}
#else
TEST(AxisMapChecksum, IsThatOfPlainDoubles) {
    EXPECT_EQ(ChecksumOf(kSomePairs, AddUnguardedMap), kSomePairs.checksum);
}

// Integers give the same in every build; once is enough.
TEST(AxisMapChecksumOfAllPairs, IsThatOfIntegerArithmetic) {
    EXPECT_EQ(ChecksumOf(kAllPairs, AddOracleMap), kAllPairs.checksum);
}
#endif

}  // namespace
}  // namespace tavo::test
