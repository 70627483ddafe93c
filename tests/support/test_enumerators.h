// Enumerators over a fixed list of pins or media types, for the filters of the tests.
#pragma once

#include <windows.h>

#include <strmif.h>

#include <vector>

#include "tests/support/com_ptr.h"
#include "tests/support/media_types.h"

namespace tavo_test {

// One reference is the caller's.
IEnumPins* MakePinEnumerator(std::vector<ComPtr<IPin>> pins);
IEnumMediaTypes* MakeTypeEnumerator(std::vector<MediaType> types);

}  // namespace tavo_test
