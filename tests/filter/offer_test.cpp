// The one output type that is offered for an input type and a size, field by field.
#include <climits>
#include <cstring>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/support/graph.h"

using namespace tavo_test;

namespace {

class OfferTest : public FilterTest {
  protected:
    // What is offered for an input, by a filter of its own.
    static MediaType Offer(const MediaType& input, int width = 0, int height = 0) {
        FilterRig rig;
        rig.settings->SetOutputSize(width, height);
        EXPECT_EQ(rig.ConnectInput(input), S_OK);
        const std::vector<MediaType> offered = rig.OfferedTypes();
        EXPECT_EQ(offered.size(), 1u);
        return offered.empty() ? MediaType() : offered[0];
    }
};

struct SizeCase {
    int width;
    int height;
};

// The block of the input with everything changed that a new size changes.
template <typename Header>
void ExpectHeader(const Header& before, const Header& after, const PixelFormat& format, int width,
                  int height) {
    Header expected = before;
    expected.rcSource = expected.rcTarget = RECT{0, 0, width, height};
    if (format.layout == Layout::kPacked) width += width % 2;
    BITMAPINFOHEADER& bitmap = expected.bmiHeader;
    bitmap.biWidth = width;
    bitmap.biHeight = height;
    bitmap.biSizeImage = static_cast<DWORD>(RuleStride(format, width) * std::abs(height));
    bitmap.biCompression = format.compression;
    EXPECT_EQ(std::memcmp(&expected.rcSource, &after.rcSource, sizeof(RECT)), 0);
    EXPECT_EQ(std::memcmp(&expected.rcTarget, &after.rcTarget, sizeof(RECT)), 0);
    EXPECT_EQ(after.bmiHeader.biWidth, bitmap.biWidth);
    EXPECT_EQ(after.bmiHeader.biHeight, bitmap.biHeight);
    EXPECT_EQ(after.bmiHeader.biSizeImage, bitmap.biSizeImage);
    EXPECT_EQ(after.bmiHeader.biBitCount, bitmap.biBitCount);
    EXPECT_EQ(after.bmiHeader.biCompression, bitmap.biCompression);
    EXPECT_EQ(std::memcmp(&expected, &after, sizeof(Header)), 0) << "some other field changed";
}

TEST_F(OfferTest, EveryFormatAndSizeInEveryFieldOfTheType) {
    constexpr SizeCase kSizes[] = {{0, 0},       {32, 24},  {175, 100}, {5, 7},
                                   {1920, 1080}, {64, -48}, {100, 0},   {0, 99}};
    for (const PixelFormat& format : AllFormats()) {
        for (const GUID& block : {FORMAT_VideoInfo, FORMAT_VideoInfo2}) {
            if (format.layout == Layout::kRgb && block == FORMAT_VideoInfo2) continue;
            for (const SizeCase& size : kSizes) {
                SCOPED_TRACE(testing::Message()
                             << format.name << " to " << size.width << "x" << size.height);
                VideoSpec spec = SpecOf(format, 64, 48, block);
                spec.source = RECT{1, 2, 3, 4};
                spec.aspectX = 16;
                spec.aspectY = 9;
                spec.interlaceFlags = 1;
                spec.timePerFrame = 417083;
                const MediaType input = MakeVideoType(spec);
                const MediaType offered = Offer(input, size.width, size.height);
                EXPECT_EQ(offered->majortype, MEDIATYPE_Video);
                EXPECT_EQ(offered->subtype, SubtypeOf(format));
                EXPECT_EQ(offered->formattype, block);
                EXPECT_EQ(offered->bTemporalCompression, FALSE);
                ASSERT_TRUE(offered.Bitmap());
                EXPECT_EQ(offered->lSampleSize, offered.Bitmap()->biSizeImage);
                const int width = size.width ? size.width : 64;
                const int height = size.height ? size.height : 48;
                if (block == FORMAT_VideoInfo)
                    ExpectHeader(*input.Video(), *offered.Video(), format, width, height);
                else
                    ExpectHeader(*input.Video2(), *offered.Video2(), format, width, height);
            }
        }
    }
}

TEST_F(OfferTest, Yv12Of352x288IsOfferedWith152064Bytes) {
    const MediaType offered = Offer(TypeOf(Format("YV12"), 352, 288));
    EXPECT_EQ(offered->subtype, FourCC("YV12"));
    EXPECT_EQ(offered.Bitmap()->biWidth, 352);
    EXPECT_EQ(offered.Bitmap()->biHeight, 288);
    EXPECT_EQ(offered.Bitmap()->biSizeImage, 152064u);
    EXPECT_EQ(offered->lSampleSize, 152064u);
}

TEST_F(OfferTest, Yuy2Of175x100IsOffered176WideWithStride352) {
    const MediaType offered = Offer(TypeOf(Format("YUY2"), 175, 100), 175, 100);
    EXPECT_EQ(offered.Bitmap()->biWidth, 176);
    EXPECT_EQ(offered.Bitmap()->biSizeImage, 35200u);
    const RECT asked = {0, 0, 175, 100};
    EXPECT_EQ(std::memcmp(&offered.Video()->rcTarget, &asked, sizeof asked), 0)
        << "the rectangles have the width before rounding";
}

TEST_F(OfferTest, ThePackedFrameSizeIsThatOfTheWidthBeforeRounding) {
    for (const char* name : {"YUY2", "YUYV", "YVYU", "UYVY"}) {
        VideoSpec spec = SpecOf(Format(name), 175, 100);
        spec.bitCount = WORD{32};
        const MediaType offered = Offer(MakeVideoType(spec), 175, 100);
        EXPECT_EQ(offered.Bitmap()->biWidth, 176);
        EXPECT_EQ(offered.Bitmap()->biSizeImage, 700u * 100) << name;
        EXPECT_EQ(offered->lSampleSize, 700u * 100) << name;
    }
}

TEST_F(OfferTest, AnUnknownSubtypeOfNoStatedSizeConnectsAndItsFramesFail) {
    VideoSpec spec = SpecOf(Format("YUY2"), 64, 48);
    spec.subtype = FourCC("ABCD");
    for (const DWORD sizeImage : {0u, 6144u}) {
        spec.sizeImage = sizeImage;
        FilterRig rig({}, {.choice = AllocatorChoice::kOwnOnly, .wish = {1, 6144, 1, 0}});
        rig.settings->SetOutputFormat(11);
        ASSERT_EQ(rig.Connect(MakeVideoType(spec)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        EXPECT_EQ(rig.Deliver(std::vector<BYTE>(6144)), E_FAIL);
        EXPECT_TRUE(rig.samples().empty());
    }
}

TEST_F(OfferTest, ATopDownRgb24InputKeepsItsNegativeHeightWithSizeZero) {
    EXPECT_EQ(Offer(TypeOf(Format("RGB24"), 64, -48)).Bitmap()->biHeight, -48);
    EXPECT_EQ(Offer(TypeOf(Format("RGB24"), 64, -48)).Bitmap()->biSizeImage, 64u * 3 * 48);
}

TEST_F(OfferTest, ATopDownRgb24InputIsOfferedTheHeightThatWasSet) {
    EXPECT_EQ(Offer(TypeOf(Format("RGB24"), 64, -48), 32, 24).Bitmap()->biHeight, 24);
    EXPECT_EQ(Offer(TypeOf(Format("RGB24"), 64, -48), 32, -24).Bitmap()->biHeight, -24);
}

TEST_F(OfferTest, OfferingStoresTheNegotiatedSize) {
    FilterRig rig;
    rig.settings->SetOutputSize(175, -100);
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("UYVY"), 64, 48)), S_OK);
    EXPECT_EQ(rig.OutputSize(), std::pair(175, -100));
    EXPECT_EQ(rig.OfferedTypes().at(0).Bitmap()->biHeight, -100);
    EXPECT_EQ(rig.OutputSize(), std::pair(176, 100));
}

TEST_F(OfferTest, Rgb565CarriesItsMasksBehindTheHeader) {
    for (const DWORD compression : {DWORD{BI_RGB}, DWORD{BI_BITFIELDS}}) {
        for (const ULONG extra : {0u, 4u, 12u, 60u}) {
            VideoSpec spec = SpecOf(Format("RGB565"), 64, 48);
            spec.compression = compression;
            if (compression == BI_RGB) spec.formatBytes = sizeof(VIDEOINFOHEADER) + extra;
            const MediaType offered = Offer(MakeVideoType(spec));
            EXPECT_EQ(offered.Bitmap()->biCompression, DWORD{BI_BITFIELDS});
            ASSERT_GE(offered->cbFormat, sizeof(VIDEOINFOHEADER) + 12);
            const auto* masks = reinterpret_cast<const DWORD*>(offered.Video() + 1);
            EXPECT_EQ(masks[0], 0xf800u) << extra << " bytes behind the header of the input";
            EXPECT_EQ(masks[1], 0x07e0u);
            EXPECT_EQ(masks[2], 0x001fu);
        }
    }
}

TEST_F(OfferTest, AnInputWithoutAVideoHeaderIsOfferedNothing) {
    FilterRig rig;
    rig.settings->SetVideoType(3);
    const MediaType bare = MakePartialType(MEDIATYPE_Video, FourCC("YV12"), FORMAT_None);
    ASSERT_EQ(rig.input->ReceiveConnection(&rig.source->pin(), bare.Get()), S_OK);
    EXPECT_TRUE(rig.OfferedTypes().empty());
    EXPECT_EQ(rig.settings->ApplySettings(), int{E_INVALIDARG});
    EXPECT_TRUE(FAILED(rig.ConnectOutput()));
    EXPECT_EQ(rig.ConnectOutput(&bare), E_INVALIDARG)
        << "a type without a picture cannot be an output";
    EXPECT_EQ(rig.input->Disconnect(), S_OK);
}

TEST_F(OfferTest, SizesThatCannotBeBuiltAreOfferedNothing) {
    for (const auto& [width, height] :
         std::initializer_list<std::pair<int, int>>{{-1, 48},
                                                    {INT_MIN, 48},
                                                    {64, INT_MIN},
                                                    {INT_MAX, INT_MAX},
                                                    {INT_MAX, 48},
                                                    {50000, 50000},
                                                    {INT_MAX, 1},
                                                    {INT_MIN, INT_MIN}}) {
        for (const char* name : {"YV12", "YUY2", "RGB24", "RGB565", "YVU9"}) {
            FilterRig rig;
            rig.settings->SetOutputSize(width, height);
            ASSERT_EQ(rig.ConnectInput(TypeOf(Format(name), 64, 48)), S_OK);
            EXPECT_TRUE(rig.OfferedTypes().empty()) << name << " " << width << "x" << height;
            EXPECT_TRUE(FAILED(rig.ConnectOutput()));
        }
    }
}

TEST_F(OfferTest, TheTypeEndsWithTheFirstPosition) {
    FilterRig rig;
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("YV12"), 64, 48)), S_OK);
    ComPtr<IEnumMediaTypes> list;
    ASSERT_EQ(rig.output->EnumMediaTypes(list.Put()), S_OK);
    AM_MEDIA_TYPE* types[2] = {};
    ULONG fetched = 0;
    EXPECT_EQ(list->Next(2, types, &fetched), S_FALSE);
    EXPECT_EQ(fetched, 1u);
    DeleteType(types[0]);
}

TEST_F(OfferTest, NothingIsOfferedWhileTheInputIsUnconnected) {
    FilterRig rig;
    EXPECT_TRUE(rig.OfferedTypes().empty());
    const MediaType full = TypeOf(Format("YV12"), 64, 48);
    EXPECT_EQ(rig.output->QueryAccept(full.Get()), S_FALSE);
    EXPECT_EQ(rig.ConnectOutput(), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_EQ(rig.ConnectOutput(&full), E_UNEXPECTED);
    // Once more after a connection has come and gone.
    ASSERT_EQ(rig.ConnectInput(full), S_OK);
    EXPECT_EQ(rig.OfferedTypes().size(), 1u);
    rig.DisconnectInput();
    EXPECT_TRUE(rig.OfferedTypes().empty());
    EXPECT_EQ(rig.output->QueryAccept(full.Get()), S_FALSE);
}

}  // namespace
