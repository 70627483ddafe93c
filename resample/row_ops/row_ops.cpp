// The choice of row operations for the variants that are named after an instruction set.

#include "resample/row_ops/row_ops.h"

#include <atomic>

namespace tavo {
namespace {

std::atomic<const RowOps*> chosenRowOps{&kPortableRowOps};
std::atomic<const RowOps*> chosenForPortable{&kPortableRowOps};

}  // namespace

const RowOps& RowOpsOf(KernelVariant variant) {
    const auto& chosen = variant == KernelVariant::Portable ? chosenForPortable : chosenRowOps;
    return *chosen.load(std::memory_order_relaxed);
}

const char* InstructionSetName(InstructionSet set) {
    switch (set) {
        case InstructionSet::Portable: break;
        case InstructionSet::Mmx: return "MMX";
        case InstructionSet::Sse: return "SSE";
        case InstructionSet::Ssse3: return "SSSE3";
        case InstructionSet::Avx2: return "AVX2";
        case InstructionSet::Avx512: return "AVX-512";
    }
    return "portable";
}

#ifdef TAVO_X86

bool CanRun(InstructionSet set) {
    __builtin_cpu_init();
    switch (set) {
        case InstructionSet::Portable: return true;
        case InstructionSet::Mmx: return __builtin_cpu_supports("mmx");
        case InstructionSet::Sse: return __builtin_cpu_supports("sse");
        case InstructionSet::Ssse3: return __builtin_cpu_supports("ssse3");
        case InstructionSet::Avx2: return __builtin_cpu_supports("avx2");
        case InstructionSet::Avx512:
            return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi");
    }
    return false;
}

void ChooseRowOps(InstructionSet set) {
    const RowOps* ops = &kPortableRowOps;
    switch (set) {
        case InstructionSet::Portable: break;
        case InstructionSet::Mmx: ops = &kMmxRowOps; break;
        case InstructionSet::Sse: ops = &kSseRowOps; break;
        case InstructionSet::Ssse3: ops = &kSsse3RowOps; break;
        case InstructionSet::Avx2: ops = &kAvx2RowOps; break;
        case InstructionSet::Avx512: ops = &kAvx512RowOps; break;
    }
    chosenRowOps.store(ops, std::memory_order_relaxed);
    const bool usesMmxRegisters = set == InstructionSet::Mmx || set == InstructionSet::Sse;
    chosenForPortable.store(usesMmxRegisters ? &kPortableRowOps : ops, std::memory_order_relaxed);
}

#else

bool CanRun(InstructionSet set) { return set == InstructionSet::Portable; }

void ChooseRowOps(InstructionSet) {}

#endif

}  // namespace tavo
