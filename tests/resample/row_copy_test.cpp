// The copies of rows in every instruction set, with string moves and without: all bytes, and none
// besides.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "resample/copy_kernels.h"
#include "resample/row_ops/instruction_sets.h"
#include "tests/resample/support/test_data.h"
#include "tests/support/guarded_buffer.h"

namespace tavo::test {
namespace {

// Around a block, the registers, and where string moves begin; then a row of 4K, and a picture.
std::vector<int32_t> Lengths() {
    std::vector<int32_t> lengths = {11520, 100'001};
    for (const auto& [first, last] : {std::pair{1, 200}, {2500, 2620}}) {
        for (int32_t length = first; length <= last; ++length) lengths.push_back(length);
    }
    return lengths;
}

struct RowCopies {
    std::string name;
    const RowOps* ops;
};

std::vector<RowCopies> AllRowCopies() {
    std::vector<RowCopies> all;
    for (const InstructionSetInfo& info : InstructionSets()) {
        if (!info.canRun()) continue;
        all.push_back({info.name, &info.rowOps});
        if (info.withStringMoves != nullptr) {
            all.push_back({std::string(info.name) + " with string moves", info.withStringMoves});
        }
    }
    return all;
}

template <typename Copy>
void ExpectCopies(int32_t length, BufferGuard guard, Copy copy) {
    static GuardedBuffer source, target;
    const auto size = static_cast<size_t>(length);
    const std::vector<uint8_t> bytes = MakeBytes(Pattern::Random, length, 1, size);
    std::memcpy(source.Place(size, guard, 0), bytes.data(), size);
    uint8_t* const to = target.Place(size, guard, 0xa7);
    copy(to, source.data());
    ASSERT_EQ(std::memcmp(to, bytes.data(), size), 0) << length;
    ASSERT_TRUE(target.Intact()) << length;
}

// Of all lengths in whole units.
template <typename Copy>
void ExpectAllCopies(int32_t unit, Copy copy) {
    for (const RowCopies& copies : AllRowCopies()) {
        SCOPED_TRACE(copies.name);
        SetCurrentTrial(copies.name.c_str());
        for (int32_t length : Lengths()) {
            length -= length % unit;
            if (length == 0) continue;
            for (const BufferGuard guard : {BufferGuard::kPageAfter, BufferGuard::kPageBefore}) {
                ExpectCopies(length, guard, [&](uint8_t* to, const uint8_t* from) {
                    copy(*copies.ops, to, from, length);
                    copies.ops->Finish();
                });
                if (testing::Test::HasFatalFailure()) return;
            }
        }
    }
}

TEST(RowCopies, MoveEveryByteOfARow) {
    ExpectAllCopies(1, [](const RowOps& ops, uint8_t* to, const uint8_t* from, int32_t length) {
        ops.CopyRow(to, from, length);
    });
}

TEST(RowCopies, MoveEveryBlock) {
    ExpectAllCopies(8, [](const RowOps& ops, uint8_t* to, const uint8_t* from, int32_t length) {
        ops.CopyBlocks(to, from, length / 8);
    });
}

TEST(RowCopies, MoveBytesInTheWayThatIsChosen) {
    ExpectCopies(1, BufferGuard::kPageAfter, [](uint8_t* to, const uint8_t* from) {
        CopyBytes(nullptr, nullptr, 0);
        CopyBytes(to, from, 1);
    });
    for (const InstructionSetInfo& info : InstructionSets()) {
        if (!info.canRun()) continue;
        SCOPED_TRACE(info.name);
        ChooseRowOps(info.set);
        for (const int32_t length : Lengths()) {
            ExpectCopies(length, BufferGuard::kPageAfter, [&](uint8_t* to, const uint8_t* from) {
                CopyBytes(to, from, static_cast<size_t>(length));
            });
            if (HasFatalFailure()) return;
        }
    }
}

}  // namespace
}  // namespace tavo::test
