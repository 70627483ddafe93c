// Display names of processors that carry none themselves, and how a name is cleaned.

#pragma once

#include <climits>
#include <span>

#include "cpu/processor_info.h"

namespace tavo {

// Both ends belong to it.
struct NumberRange {
    int first = INT_MIN;
    int last = INT_MAX;

    constexpr bool Contains(int number) const { return number >= first && number <= last; }
};

// What beside family and model decides a name.
enum class NameDetail { None, CacheSize, BrandIndex, Stepping };

struct NameRow {
    NumberRange family;
    NumberRange model;
    NameDetail detail;
    NumberRange range;  // of the detail
    const char* name;
};

// The vendors that are known, other than Intel. Where no row names a processor it names itself, by
// its brand string.
struct VendorNames {
    const char* vendor;
    const char* oldPrefix;  // of names for the families up to 4
    std::span<const NameRow> rows;
};

// From here on families have names; below they are "<prefix><family>86 Processor".
constexpr int kFirstNamedFamily = 5;

// The numbers that NameDetail asks for.
struct NameDetails {
    int cacheSize = 0;
    int brandIndex = 0;
    int stepping = 0;
};

extern const std::span<const NameRow> kIntelNames;

// Null for Intel and for a vendor that is not known.
const VendorNames* FindVendor(const char* vendor);

// The name in the first row that fits, or null.
const char* FindName(std::span<const NameRow> rows, int family, int model,
                     const NameDetails& details);

// What a cache descriptor of leaf 2 stands for: 0 no cache, 1 something else, otherwise mostly KB.
int CacheSize(uint8_t descriptor);

// Removes leading blanks, then a frequency at the end: "  Fast CPU 2.40GHz" becomes "Fast CPU".
void CleanName(char (&name)[kNameSize]);

}  // namespace tavo
