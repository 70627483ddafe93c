// The frames, made by a filter that nobody disturbs.
#include "tests/filter/support/known_frames.h"

#include <iterator>

#include "tests/filter/support/filter_rig.h"

namespace tavo_test {

KnownFrames::KnownFrames(const PixelFormat& format) : format_(format), outputs_(std::size(kTo)) {
    for (const Size& size : kFrom) {
        const auto seed = static_cast<uint32_t>(size.width);
        sources_.push_back(RandomFrame(format, size.width, size.height, seed));
    }
    FilterRig rig;
    for (size_t from = 0; from < std::size(kFrom); ++from) {
        for (size_t to = 0; to < std::size(kTo); ++to) {
            rig.settings->SetOutputSize(kTo[to].width, kTo[to].height);
            EXPECT_EQ(rig.Connect(SourceType(from)), S_OK);
            EXPECT_EQ(rig.Start(), S_OK);
            for (const int method : kMethods) {
                rig.settings->SetScaleMethod(method);
                EXPECT_EQ(rig.Deliver(sources_[from]), S_OK);
                outputs_[to][rig.samples().back().bytes] = static_cast<int>(from);
            }
            EXPECT_EQ(rig.Stop(), S_OK);
            rig.DisconnectOutput();
            rig.DisconnectInput();
        }
    }
}

MediaType KnownFrames::SourceType(size_t from) const {
    return TypeOf(format_, kFrom[from].width, kFrom[from].height);
}

MediaType KnownFrames::OutputType(size_t to) const {
    return TypeOf(format_, kTo[to].width, kTo[to].height);
}

long KnownFrames::OutputBytes(size_t to) const {
    return static_cast<long>(RuleFrameBytes(format_, kTo[to].width, kTo[to].height));
}

int KnownFrames::OutputOfBytes(long bytes) const {
    for (size_t to = 0; to < std::size(kTo); ++to)
        if (OutputBytes(to) == bytes) return static_cast<int>(to);
    return -1;
}

int KnownFrames::ShownSource(size_t to, const std::vector<BYTE>& frame) const {
    const auto found = outputs_[to].find(frame);
    return found == outputs_[to].end() ? -1 : found->second;
}

}  // namespace tavo_test
