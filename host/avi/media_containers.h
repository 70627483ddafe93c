// Containers of nested boxes, for media_probe.

#pragma once

#include "host/avi/byte_store.h"
#include "host/avi/media_probe.h"

namespace tavo {

void ProbeAvi(ByteStore& store, MediaFacts& facts);
void ProbeMp4(ByteStore& store, MediaFacts& facts);
void ProbeMatroska(ByteStore& store, MediaFacts& facts);

}  // namespace tavo
