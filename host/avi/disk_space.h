// How much a disk still takes.

#pragma once

#include "host/avi/byte_store.h"

namespace tavo {

// How far the store can grow from its end on, to the byte; `wanted` at most. Found out by writing:
// the store is as long as before afterwards. May throw std::bad_alloc.
uint64_t ReachableEnd(ByteStore& store, uint64_t end, uint64_t wanted);

}  // namespace tavo
