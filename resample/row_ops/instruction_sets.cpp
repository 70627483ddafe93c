#include "resample/row_ops/instruction_sets.h"

#ifdef TAVO_X86
#include <cpuid.h>
#endif

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

// Not where an address sanitizer runs, which does not see what a string move reads and writes.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kMayMoveStrings = false;
#elif defined(__has_feature)
constexpr bool kMayMoveStrings = !__has_feature(address_sanitizer);
#else
constexpr bool kMayMoveStrings = true;
#endif

// Whether the processor says that it moves strings by whole cache lines.
bool HasFastStringMoves() {
    constexpr unsigned kFeatureLeaf = 7, kFastStringMoves = 1 << 9;
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    return kMayMoveStrings && __get_cpuid_count(kFeatureLeaf, 0, &eax, &ebx, &ecx, &edx) != 0 &&
           (ebx & kFastStringMoves) != 0;
}
#else
bool HasFastStringMoves() { return false; }
#endif

// clang-format off
constexpr InstructionSetInfo kSets[] = {
//   set                        name        key         level  MMX registers  operations       with string moves              can run
    {InstructionSet::Portable, "portable", "portable", 0,     false,         kPortableRowOps, nullptr,                       RunsAnywhere},
#ifdef TAVO_X86
    {InstructionSet::Mmx,      "MMX",      "mmx",      1,     true,          kMmxRowOps,      nullptr,                       HasMmx},
    {InstructionSet::Sse,      "SSE",      "sse",      2,     true,          kSseRowOps,      nullptr,                       HasSse},
    {InstructionSet::Ssse3,    "SSSE3",    "ssse3",    2,     false,         kSsse3RowOps,    &kSsse3RowOpsWithStringMoves,  HasSsse3},
    {InstructionSet::Avx2,     "AVX2",     "avx2",     2,     false,         kAvx2RowOps,     &kAvx2RowOpsWithStringMoves,   HasAvx2},
    {InstructionSet::Avx512,   "AVX-512",  "avx512",   2,     false,         kAvx512RowOps,   &kAvx512RowOpsWithStringMoves, HasAvx512},
#endif
#ifdef TAVO_ARM64
    {InstructionSet::Neon,     "NEON",     "neon",     0,     false,         kNeonRowOps,     nullptr,                       RunsAnywhere},
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
    const bool movesStrings = info->withStringMoves != nullptr && HasFastStringMoves();
    const RowOps& rowOps = movesStrings ? *info->withStringMoves : info->rowOps;
    SetRowOps(info->inMmxRegisters ? kPortableRowOps : rowOps, rowOps);
}

}  // namespace tavo
