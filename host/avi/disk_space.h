// Free space, measured by writing.

#pragma once

#include "host/avi/byte_store.h"

namespace tavo {

// Returns how far the store can grow from `end`, its end, to the byte; at most to `wanted`. It
// truncates the store to `end` again. May throw std::bad_alloc.
uint64_t ReachableEnd(ByteStore& store, uint64_t end, uint64_t wanted);

}  // namespace tavo
