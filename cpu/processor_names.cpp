// The tables of names. The first row that fits decides.

#include "cpu/processor_names.h"

#include <cstddef>
#include <cstring>

namespace tavo {
namespace {

constexpr NumberRange Only(int number) { return {number, number}; }
constexpr NumberRange From(int first) { return {first, INT_MAX}; }
constexpr NumberRange Below(int end) { return {INT_MIN, end - 1}; }
constexpr NumberRange kAny;

// clang-format off
// Deliberate: other models of family 6 keep the name that was there before.
constexpr NameRow kIntelRows[] = {
//   family    model    further test
    {Only(5),  kAny,    NameDetail::None,       kAny,       "Intel Pentium"},
    {Only(6),  Only(5), NameDetail::CacheSize,  Only(0),    "Intel Celeron"},
    {Only(6),  Only(5), NameDetail::CacheSize,  {1, 999},   "Intel Pentium II"},
    {Only(6),  Only(5), NameDetail::CacheSize,  From(1000), "Intel Pentium II Xeon"},
    {Only(6),  Only(6), NameDetail::None,       kAny,       "Intel Celeron"},
    {Only(6),  Only(7), NameDetail::CacheSize,  Below(1000),"Intel Pentium III"},
    {Only(6),  Only(7), NameDetail::CacheSize,  From(1000), "Intel Pentium III Xeon"},
    {Only(6),  Only(8), NameDetail::BrandIndex, Only(1),    "Intel Celeron"},
    {Only(6),  Only(8), NameDetail::BrandIndex, Only(2),    "Intel Pentium III"},
    {Only(6),  Only(8), NameDetail::BrandIndex, Only(3),    "Intel Pentium III Xeon"},
    {Only(6),  Only(8), NameDetail::BrandIndex, Only(8),    "Intel Pentium 4"},
    {Only(6),  Only(8), NameDetail::None,       kAny,       "Intel Processor"},
    {Only(15), kAny,    NameDetail::BrandIndex, From(8),    "Intel Pentium 4"},
    {Only(15), kAny,    NameDetail::None,       kAny,       "Intel Processor"},
    {From(7),  kAny,    NameDetail::None,       kAny,       "Intel Processor"},
};

constexpr NameRow kAmdRows[] = {
    {Only(5),  {0, 3},  NameDetail::None,       kAny,       "AMD K5"},
    {Only(5),  {6, 7},  NameDetail::None,       kAny,       "AMD K6"},
    {Only(5),  Only(8), NameDetail::None,       kAny,       "AMD K6-2"},
    {Only(5),  Only(9), NameDetail::None,       kAny,       "AMD K6-III"},
    {Only(5),  kAny,    NameDetail::None,       kAny,       "AMD Processor"},
};

constexpr NameRow kCentaurRows[] = {
    {Only(5),  kAny,    NameDetail::None,       kAny,       "IDT WinChip Processor"},
    {Only(6),  {0, 5},  NameDetail::None,       kAny,       "IDT WinChip Processor"},
    {Only(6),  Only(6), NameDetail::None,       kAny,       "VIA C3 Samuel"},
    {Only(6),  Only(7), NameDetail::Stepping,   Below(8),   "VIA C3 Samuel 2"},
    {Only(6),  Only(7), NameDetail::Stepping,   From(8),    "VIA C3 Ezra"},
};

// Later families have their brand string.
constexpr NameRow kCyrixRows[] = {
    {Only(5),  kAny,    NameDetail::None,       kAny,       "Cyrix MI"},
    {Only(6),  kAny,    NameDetail::None,       kAny,       "Cyrix MII"},
};

constexpr NameRow kTransmetaRows[] = {
    {Only(5),  kAny,    NameDetail::None,       kAny,       "Transmeta Crusoe"},
};

constexpr VendorNames kVendors[] = {
    {"AuthenticAMD", "AMD 80",       kAmdRows},
    {"CentaurHauls", "WinChip 80",   kCentaurRows},
    {"CyrixInstead", "Cyrix 80",     kCyrixRows},
    {"GenuineTMx86", "Transmeta 80", kTransmetaRows},
};

struct CacheRow {
    uint8_t descriptor;
    int size;
};
constexpr CacheRow kCaches[] = {
    { 64,    0},
    { 68, 1000},
    { 69, 2000},
    {121,  128},
    {122,  256},
    {123,  512},
    {124, 1000},
    {130,  256},
    {132, 1000},
    {133, 2000},
};
// clang-format on
constexpr int kOtherCache = 1;

int DetailNumber(NameDetail detail, const NameDetails& details) {
    switch (detail) {
        case NameDetail::CacheSize: return details.cacheSize;
        case NameDetail::BrandIndex: return details.brandIndex;
        case NameDetail::Stepping: return details.stepping;
        case NameDetail::None: break;
    }
    return 0;
}

bool IsDigitOrStop(char c) { return (c >= '0' && c <= '9') || c == '.'; }

void RemoveLeadingBlanks(char (&name)[kNameSize]) {
    const size_t blanks = strspn(name, " ");
    memmove(name, name + blanks, strlen(name + blanks) + 1);
}

// Deliberate: the positions of the two units are combined by a bitwise OR. A name holds at most one
// of them; with both, the result may lie behind the end of the name, and nothing is cut.
void RemoveFrequency(char (&name)[kNameSize]) {
    const char* mega = strstr(name, "MHz");
    const char* giga = strstr(name, "GHz");
    if (!mega && !giga) return;
    size_t end =
        static_cast<size_t>(mega ? mega - name : 0) | static_cast<size_t>(giga ? giga - name : 0);
    if (end > strlen(name)) return;
    while (end > 0 && IsDigitOrStop(name[end - 1])) --end;
    while (end > 0 && name[end - 1] == ' ') --end;
    name[end] = '\0';
}

}  // namespace

const std::span<const NameRow> kIntelNames = kIntelRows;

const VendorNames* FindVendor(const char* vendor) {
    for (const VendorNames& row : kVendors) {
        if (strcmp(row.vendor, vendor) == 0) return &row;
    }
    return nullptr;
}

const char* FindName(std::span<const NameRow> rows, int family, int model,
                     const NameDetails& details) {
    for (const NameRow& row : rows) {
        if (row.family.Contains(family) && row.model.Contains(model) &&
            row.range.Contains(DetailNumber(row.detail, details))) {
            return row.name;
        }
    }
    return nullptr;
}

int CacheSize(uint8_t descriptor) {
    for (const CacheRow& row : kCaches) {
        if (row.descriptor == descriptor) return row.size;
    }
    return kOtherCache;
}

void CleanName(char (&name)[kNameSize]) {
    RemoveLeadingBlanks(name);
    RemoveFrequency(name);
}

}  // namespace tavo
