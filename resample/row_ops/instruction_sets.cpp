#include "resample/row_ops/instruction_sets.h"

namespace tavo {

namespace {

bool RunsAnywhere() { return true; }

#ifdef TAVO_X86
// The name must be a literal.
#define TAVO_HAS(name) (__builtin_cpu_init(), __builtin_cpu_supports(name) != 0)
bool HasMmx() { return TAVO_HAS("mmx"); }
bool HasSse() { return TAVO_HAS("sse"); }
bool HasSsse3() { return TAVO_HAS("ssse3"); }
bool HasAvx2() { return TAVO_HAS("avx2"); }
bool HasAvx512() { return TAVO_HAS("avx512bw") && TAVO_HAS("avx512vbmi"); }
#undef TAVO_HAS
#endif

// clang-format off
constexpr InstructionSetInfo kSets[] = {
//   set                        name        key         level  MMX registers  operations       can run
    {InstructionSet::Portable, "portable", "portable", 0,     false,         kPortableRowOps, RunsAnywhere},
#ifdef TAVO_X86
    {InstructionSet::Mmx,      "MMX",      "mmx",      1,     true,          kMmxRowOps,      HasMmx},
    {InstructionSet::Sse,      "SSE",      "sse",      2,     true,          kSseRowOps,      HasSse},
    {InstructionSet::Ssse3,    "SSSE3",    "ssse3",    2,     false,         kSsse3RowOps,    HasSsse3},
    {InstructionSet::Avx2,     "AVX2",     "avx2",     2,     false,         kAvx2RowOps,     HasAvx2},
    {InstructionSet::Avx512,   "AVX-512",  "avx512",   2,     false,         kAvx512RowOps,   HasAvx512},
#endif
#ifdef TAVO_ARM64
    {InstructionSet::Neon,     "NEON",     "neon",     0,     false,         kNeonRowOps,     RunsAnywhere},
#endif
};
// clang-format on

}  // namespace

std::span<const InstructionSetInfo> InstructionSets() { return kSets; }

const InstructionSetInfo* FindInstructionSet(InstructionSet set) {
    for (const InstructionSetInfo& info : kSets) {
        if (info.set == set) return &info;
    }
    return nullptr;
}

const char* InstructionSetName(InstructionSet set) {
    const InstructionSetInfo* info = FindInstructionSet(set);
    return info ? info->name : "none";
}

bool CanRun(InstructionSet set) {
    const InstructionSetInfo* info = FindInstructionSet(set);
    return info && info->canRun();
}

void ChooseRowOps(InstructionSet set) {
    const InstructionSetInfo* info = FindInstructionSet(set);
    if (!info) info = &kSets[0];
    SetRowOps(info->inMmxRegisters ? kPortableRowOps : info->rowOps, info->rowOps);
}

}  // namespace tavo
