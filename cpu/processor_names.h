// Display names of processors that have none themselves, and the cleaning of names.

#pragma once

#include <climits>
#include <span>

#include "cpu/processor_info.h"

namespace tavo {

// Includes both ends.
struct NumberRange {
    int first = INT_MIN;
    int last = INT_MAX;

    constexpr bool Contains(int number) const { return number >= first && number <= last; }
};

// What decides a name besides family and model.
enum class NameDetail { None, CacheSize, BrandIndex, Stepping };

struct NameRow {
    NumberRange family;
    NumberRange model;
    NameDetail detail;
    NumberRange range;  // of the detail
    const char* name;
};

// A known vendor other than Intel. A processor that no row names has its brand string.
struct VendorNames {
    const char* vendor;
    const char* oldPrefix;  // of names of families up to 4
    std::span<const NameRow> rows;
};

// Older families are "<prefix><family>86 Processor".
constexpr int kFirstNamedFamily = 5;

// The values for NameDetail.
struct NameDetails {
    int cacheSize = 0;
    int brandIndex = 0;
    int stepping = 0;
};

extern const std::span<const NameRow> kIntelNames;

// Null for Intel and for unknown vendors.
const VendorNames* FindVendor(const char* vendor);

// The name in the first row that fits, or null.
const char* FindName(std::span<const NameRow> rows, int family, int model,
                     const NameDetails& details);

// The size for a cache descriptor of leaf 2, mostly in KB. 0: no cache; 1: something else.
int CacheSize(uint8_t descriptor);

// Removes leading blanks and a frequency at the end: "  Fast CPU 2.40GHz" becomes "Fast CPU".
void CleanName(char (&name)[kNameSize]);

}  // namespace tavo
