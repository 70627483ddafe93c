// The filters of the platform that read and decode video by themselves.

#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace tavo {

// Names as they are registered, those that are tried first in front. A filter without a name is
// listed by its class identifier.
struct DecoderList {
    HRESULT result = S_OK;                // why a list may be incomplete
    std::vector<std::wstring> splitters;  // they read files
    std::vector<std::wstring> decoders;   // video in, video out
};

// COM is initialised on the calling thread. May throw std::bad_alloc.
DecoderList FindDecoders();

}  // namespace tavo
