// Writes blocks, and halves them when one does not fit.

#include "host/avi/disk_space.h"

#include <algorithm>
#include <vector>

namespace tavo {

uint64_t ReachableEnd(ByteStore& store, uint64_t end, uint64_t wanted) {
    const uint64_t before = end;
    const std::vector<std::byte> block(size_t{64} << 10);
    size_t size = block.size();
    while (size > 0 && end < wanted) {
        size = static_cast<size_t>(std::min<uint64_t>(size, wanted - end));
        if (store.WriteAt(end, std::span(block).first(size)) == IoResult::Ok) {
            end += size;
        } else {
            store.Truncate(end);
            size /= 2;
        }
    }
    store.Truncate(before);
    return end;
}

}  // namespace tavo
