// GUIDs, for builds without Windows.
#pragma once

#include <cstdint>

struct GUID {
    uint32_t Data1;
    uint16_t Data2, Data3;
    uint8_t Data4[8];
    bool operator==(const GUID&) const = default;
};
static_assert(sizeof(GUID) == 16);

inline bool IsEqualGUID(const GUID& a, const GUID& b) { return a == b; }
