// Which row operations the kernel variants run on.

#include "resample/row_ops/row_ops.h"

#include <atomic>

namespace tavo {
namespace {

std::atomic<const RowOps*> opsOfPortable{&kPortableRowOps};
std::atomic<const RowOps*> opsOfOthers{&kPortableRowOps};

}  // namespace

const RowOps& RowOpsOf(KernelVariant variant) {
    const auto& ops = variant == KernelVariant::Portable ? opsOfPortable : opsOfOthers;
    return *ops.load(std::memory_order_relaxed);
}

void SetRowOps(const RowOps& ofPortable, const RowOps& ofOthers) {
    opsOfOthers.store(&ofOthers, std::memory_order_relaxed);
    opsOfPortable.store(&ofPortable, std::memory_order_relaxed);
}

}  // namespace tavo
