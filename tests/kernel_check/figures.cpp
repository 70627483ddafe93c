#include "tests/kernel_check/figures.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

#include "tests/kernel_oracle/axis_entries.h"
#include "tests/resample/support/engine_map.h"
#include "tests/resample/support/test_data.h"
#include "tests/support/guarded_buffer.h"
#include "tests/support/x87_state.h"

namespace tavo::test {
namespace {

constexpr uint8_t kSourcePadding = 0x3c;

std::vector<Backend> InstructionSets() {
    std::vector<Backend> sets;
    for (const Backend& backend : RunnableBackends()) {
        if (!backend.isLevel) sets.push_back(backend);
    }
    return sets;
}

}  // namespace

std::string TestNameOf(const testing::TestParamInfo<Backend>& info) {
    std::string name;
    for (char c : info.param.name) {
        if (std::isalnum(static_cast<unsigned char>(c))) name += c;
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(With, Figures, testing::ValuesIn(InstructionSets()), TestNameOf);

Bytes Picture::Row(int row) const {
    return {bytes.begin() + row * Stride(), bytes.begin() + (row + 1) * Stride()};
}

Bytes Picture::RowPixels(int row) const {
    Bytes pixels = Row(row);
    pixels.resize(static_cast<size_t>(width * BytesPerPixel(format)));
    return pixels;
}

int Picture::Word(int row, int column) const {
    const size_t at = static_cast<size_t>(row * Stride() + 2 * column);
    return bytes[at] + 256 * bytes[at + 1];
}

Bytes Picture::Pixel(int row, int column) const {
    const int size = BytesPerPixel(format);
    const auto from = bytes.begin() + row * Stride() + column * size;
    return {from, from + size};
}

Picture MakePicture(Format format, int width, const std::vector<Bytes>& rows) {
    Picture picture{format, width, static_cast<int>(rows.size()), {}};
    for (Bytes row : rows) {
        row.resize(static_cast<size_t>(picture.Stride()), kSourcePadding);
        picture.bytes.insert(picture.bytes.end(), row.begin(), row.end());
    }
    return picture;
}

Picture MakeWords(Format format, const std::vector<int>& row) {
    Bytes bytes;
    for (int word : row) {
        bytes.push_back(static_cast<uint8_t>(word));
        bytes.push_back(static_cast<uint8_t>(word >> 8));
    }
    return MakePicture(format, static_cast<int>(row.size()), {bytes});
}

Picture RandomPicture(Format format, int width, int height, uint64_t seed) {
    Picture picture{format, width, height, {}};
    picture.bytes = MakeBytes(Pattern::Random, picture.Stride(), height, seed);
    return picture;
}

Picture Scale(ScaleKernel kernel, const Picture& source, Size size) {
    return ScaleWith(kernel, source, size, MakeAxisEntries(source.width, size.width),
                     MakeAxisEntries(source.height, size.height));
}

Picture ScaleWith(ScaleKernel kernel, const Picture& source, Size size, const AxisEntries& x,
                  const AxisEntries& y) {
    static GuardedBuffer buffer;
    uint8_t* src = buffer.Place(source.bytes.size(), BufferGuard::kPageAfter, 0);
    std::memcpy(src, source.bytes.data(), source.bytes.size());
    const EngineMap xMap(x);
    const EngineMap yMap(y);
    Picture out{source.format, size.width, std::abs(size.height), {}};
    out.bytes.assign(static_cast<size_t>(out.Stride() * out.height + kBytesBehind), kLeftAlone);
    const int32_t rows = kernel(out.bytes.data(), src, size.width, size.height, source.width,
                                source.height, xMap.Record(), yMap.Record());
    EXPECT_EQ(X87TagWord(), kEmptyTagWord);
    EXPECT_EQ(rows, out.height);
    return out;
}

Picture ScaleRowWith(ScaleKernel kernel, const Picture& source, const AxisEntries& x) {
    return ScaleWith(kernel, source, {static_cast<int>(x.indices.size()), source.height}, x,
                     MakeAxisEntries(source.height, source.height));
}

void ExpectRowsInReverse(const NamedKernel& kernel, const Picture& source, int dstWidth) {
    const Picture down = Scale(kernel.kernel, source, {dstWidth, source.height});
    const Picture up = Scale(kernel.kernel, source, {dstWidth, -source.height});
    for (int y = 0; y < source.height; ++y) {
        EXPECT_EQ(up.Row(source.height - 1 - y), down.Row(y)) << kernel.name << ' ' << y;
    }
}

void ExpectNotAsMapped(ScaleKernel fixed, ScaleKernel mapped, const Picture& source, int dstWidth) {
    const Size size = {dstWidth, source.height};
    EXPECT_NE(Scale(fixed, source, size).bytes, Scale(mapped, source, size).bytes);
}

}  // namespace tavo::test
