// Byte by byte, destination rows in ascending order of memory.

#include "tests/resample/oracle/copy_oracle.h"

#include <cstdlib>

namespace tavo::test {
namespace {

struct RowPlan {
    size_t stride;
    size_t moved;  // bytes moved per row
    size_t rows;
};

RowPlan PlanOf(CopyMember member, const CopyShape& shape) {
    const bool plane = member == CopyMember::PlanePortable || member == CopyMember::PlaneMmx;
    const bool blocks = member == CopyMember::PlaneMmx || member == CopyMember::PackedMmx;
    const auto width = static_cast<size_t>(shape.width);
    const size_t rowBytes = plane ? width : width * static_cast<size_t>(shape.bitsPerPixel) / 8;
    return {plane ? width : (rowBytes + 3) / 4 * 4, blocks ? (rowBytes + 7) / 8 * 8 : rowBytes,
            static_cast<size_t>(std::abs(shape.height))};
}

}  // namespace

size_t CopyExtent(CopyMember member, const CopyShape& shape) {
    const RowPlan plan = PlanOf(member, shape);
    return plan.rows == 0 ? 0 : (plan.rows - 1) * plan.stride + plan.moved;
}

void OracleCopy(CopyMember member, uint8_t* dst, const uint8_t* src, const CopyShape& shape) {
    const RowPlan plan = PlanOf(member, shape);
    for (size_t stored = 0; stored < plan.rows; ++stored) {
        const size_t row = shape.height < 0 ? plan.rows - 1 - stored : stored;
        for (size_t i = 0; i < plan.moved; ++i) {
            dst[stored * plan.stride + i] = src[row * plan.stride + i];
        }
    }
}

}  // namespace tavo::test
