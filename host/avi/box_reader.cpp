// Reads numbers in either byte order.

#include "host/avi/box_reader.h"

#include <array>
#include <span>

namespace tavo {

std::optional<uint64_t> BoxReader::Number(uint64_t at, unsigned bytes, bool bigEndian) {
    std::array<std::byte, 8> data{};
    if (at > size_ || size_ - at < bytes ||
        store_.ReadAt(at, std::span(data).first(bytes)) != IoResult::Ok) {
        return std::nullopt;
    }
    uint64_t value = 0;
    for (unsigned i = 0; i < bytes; ++i) {
        const auto byte = std::to_integer<uint64_t>(data[i]);
        value |= byte << 8 * (bigEndian ? bytes - 1 - i : i);
    }
    return value;
}

std::string BoxReader::Text(uint64_t at, uint64_t length) {
    std::string text;
    for (uint64_t i = 0; i < std::min<uint64_t>(length, 40); ++i) {
        const auto c = Number(at + i, 1, true);
        if (!c || *c == 0) break;
        text += static_cast<char>(*c);
    }
    return text;
}

std::string CodeText(uint32_t code) {
    std::string text;
    for (int shift = 0; shift < 32; shift += 8) text += static_cast<char>(code >> shift & 0xFF);
    return text;
}

}  // namespace tavo
