// FOURCCMap: the GUID that stands for a four-character code.

#pragma once

#include "dshow/platform.h"

// {code-0000-0010-8000-00AA00389B71}, or a copy of a given GUID. No data of its own.
class FOURCCMap : public GUID {
  public:
    FOURCCMap(DWORD code)
        : GUID{code, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}} {}
    FOURCCMap(const GUID* pGuid) : GUID(*pGuid) {}
};
