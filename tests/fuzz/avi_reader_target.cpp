// The bytes are an AVI file. What opens must be readable to its last frame, and writing its frames
// again must give a file with as many.

#include "host/avi/avi_reader.h"

#include "host/avi/avi_writer.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/host/avi/memory_store.h"

using tavo::AviReader;
using tavo::AviResult;
using tavo::AviWriter;
using tavo::IoResult;

namespace tavo_test {

void FuzzAviReader(FuzzBytes bytes) {
    const auto content = std::as_bytes(bytes);
    MemoryStore store({content.begin(), content.end()});
    AviReader reader;
    if (reader.Open(store) != AviResult::Ok) return;
    Require(reader.FrameCount() > 0 && reader.FrameBytes() <= bytes.size());

    MemoryStore copy;
    AviWriter writer(copy, reader.Video(), reader.Rate(), {4096, 64});
    Require(writer.Begin() == IoResult::Ok);
    std::vector<std::byte> frame(reader.FrameBytes());
    for (uint32_t n = 0; n < reader.FrameCount(); ++n) {
        Require(reader.ReadFrame(n, frame) == IoResult::Ok);
        if (writer.WriteFrame(frame) != IoResult::Ok) break;
    }
    Require(writer.Finish() == IoResult::Ok);
    AviReader again;
    Require(again.Open(copy) == AviResult::Ok);
    Require(again.FrameCount() == writer.FrameCount() && again.Video() == reader.Video());
}

}  // namespace tavo_test
