// The bytes are a media file of any kind. What is said of it must be fit to print, and the same
// when it is asked again.

#include "host/avi/media_probe.h"

#include "tests/fuzz/fuzz_input.h"
#include "tests/host/avi/memory_store.h"

using tavo::MediaFacts;

namespace tavo_test {

void FuzzMediaProbe(FuzzBytes bytes) {
    const auto content = std::as_bytes(bytes);
    MemoryStore store({content.begin(), content.end()});
    const MediaFacts facts = ProbeMedia(store);
    Require(facts.rotation >= 0 && facts.rotation < 360 && facts.rotation % 90 == 0);
    Require(facts.codec.size() <= 40);
    const MediaFacts again = ProbeMedia(store);
    Require(again.kind == facts.kind && again.codec == facts.codec);
}

}  // namespace tavo_test
