// Questions to a filter whose stream never rests.
#include <iterator>

#include "tests/filter/support/busy_stream.h"
#include "tests/support/source_seeking.h"

namespace tavo_test {
namespace {

bool IsOneOf(const BITMAPINFOHEADER* bitmap, const Size* sizes, size_t count) {
    for (size_t i = 0; bitmap && i < count; ++i)
        if (bitmap->biWidth == sizes[i].width && bitmap->biHeight == sizes[i].height) return true;
    return false;
}

}  // namespace

void BusyStream::AskOne(std::mt19937& random) {
    setting_ = "a question";
    double value = -1;
    int number = 0;
    switch (random() % 9) {
        case 0:
            rig_.settings->GetModuleTime(&value);
            EXPECT_GE(value, 0.0);
            rig_.settings->GetSystemFps(&value);
            EXPECT_GE(value, 0.0);
            rig_.settings->GetGenerateFps(&value);
            EXPECT_GE(value, 0.0);
            break;
        case 1: {
            const MediaType in = rig_.ConnectionTypeOf(rig_.input.Get());
            const MediaType out = rig_.ConnectionTypeOf(rig_.output.Get());
            EXPECT_TRUE(IsOneOf(in.Bitmap(), KnownFrames::kFrom, std::size(KnownFrames::kFrom)));
            EXPECT_TRUE(IsOneOf(out.Bitmap(), KnownFrames::kTo, std::size(KnownFrames::kTo)));
            break;
        }
        case 2: EXPECT_LE(rig_.OfferedTypes().size(), 1u); break;
        case 3: EXPECT_EQ(rig_.input->QueryAccept(known_.SourceType(1).Get()), S_OK); break;
        case 4: EXPECT_EQ(rig_.output->QueryAccept(known_.OutputType(1).Get()), S_OK); break;
        case 5: {
            CAUUID pages = {};
            const auto specify = rig_.filter.As<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages);
            EXPECT_EQ(specify->GetPages(&pages), S_OK);
            CoTaskMemFree(pages.pElems);
            rig_.settings->GetScaleMethod(&number);
            rig_.settings->GetFrameRate(&value);
            EXPECT_TRUE(value == 0.0 || value == 25.0 || value == 30.0 || value == 100.0) << value;
            break;
        }
        case 6: EXPECT_EQ(quality_->Notify(rig_.sink.Get(), {Famine, 500, 0, 0}), S_OK); break;
        case 7: {
            LONGLONG duration = 0;
            EXPECT_EQ(seeking_->GetDuration(&duration), S_OK);
            EXPECT_EQ(duration, kSourceDuration);
            break;
        }
        case 8: {
            FILTER_STATE state = State_Stopped;
            EXPECT_EQ(rig_.filter->GetState(0, &state), S_OK);
            FILTER_INFO info = {};
            EXPECT_EQ(rig_.filter->QueryFilterInfo(&info), S_OK);
            EXPECT_EQ(info.pGraph, nullptr);
            break;
        }
    }
}

}  // namespace tavo_test
