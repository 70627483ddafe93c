// libFuzzer target: any bytes as an AVI file. What opens must be readable to its last frame, and
// writing its frames again must give a file with as many.

#include <cstdlib>

#include "host/avi/avi_reader.h"
#include "host/avi/avi_writer.h"
#include "tests/host/avi/memory_store.h"

namespace {

void Require(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto* bytes = reinterpret_cast<const std::byte*>(data);
    tavo_test::MemoryStore store(std::vector<std::byte>(bytes, bytes + size));
    tavo::AviReader reader;
    if (reader.Open(store) != tavo::AviResult::Ok) return 0;
    Require(reader.FrameCount() > 0 && reader.FrameBytes() <= size);

    tavo_test::MemoryStore copy;
    tavo::AviWriter writer(copy, reader.Video(), reader.Rate(), {4096, 64});
    Require(writer.Begin() == tavo::IoResult::Ok);
    std::vector<std::byte> frame(reader.FrameBytes());
    for (uint32_t n = 0; n < reader.FrameCount(); ++n) {
        Require(reader.ReadFrame(n, frame) == tavo::IoResult::Ok);
        if (writer.WriteFrame(frame) != tavo::IoResult::Ok) break;
    }
    Require(writer.Finish() == tavo::IoResult::Ok);
    tavo::AviReader again;
    Require(again.Open(copy) == tavo::AviResult::Ok);
    Require(again.FrameCount() == writer.FrameCount() && again.Video() == reader.Video());
    return 0;
}
