// Memory for one picture: whole cache lines, filled with noise that is the same in every run.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace tavo::bench {

class Picture {
  public:
    static constexpr size_t kLine = 64;
    // What block copies and vectors of the peers may touch past the end.
    static constexpr size_t kSlack = 64;

    Picture(int32_t stride, int32_t height)
        : stride_(stride),
          bytes_(static_cast<size_t>(stride) * static_cast<size_t>(height)),
          data_(static_cast<uint8_t*>(::operator new (bytes_ + kSlack, std::align_val_t{kLine}))) {
        uint32_t state = 1;
        for (size_t i = 0; i < bytes_ + kSlack; ++i) {
            data_.get()[i] = static_cast<uint8_t>((state = state * 69069 + 1) >> 24);
        }
    }

    // With rows of whole cache lines.
    static Picture Aligned(int32_t rowBytes, int32_t height) {
        constexpr auto line = static_cast<int32_t>(kLine);
        return {(rowBytes + line - 1) / line * line, height};
    }

    uint8_t* Data() const { return data_.get(); }
    int32_t Stride() const { return stride_; }
    size_t Bytes() const { return bytes_; }

  private:
    struct Free {
        void operator()(uint8_t* data) const { ::operator delete (data, std::align_val_t{kLine}); }
    };

    int32_t stride_;
    size_t bytes_;
    std::unique_ptr<uint8_t, Free> data_;
};

}  // namespace tavo::bench
