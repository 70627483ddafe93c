// Which input types are accepted: every subtype, format block and setting in combination, and the
// shapes of a picture.
#include <climits>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"

using namespace tavo_test;

namespace {

class AcceptanceTest : public FilterTest {
  protected:
    // The result of offering the type to the input pin; a connection that came about is undone.
    static HRESULT Offer(FilterRig& rig, const MediaType& type) {
        const HRESULT result = rig.input->ReceiveConnection(&rig.source->pin(), type.Get());
        if (SUCCEEDED(result)) {
            EXPECT_EQ(rig.input->Disconnect(), S_OK);
        }
        EXPECT_EQ(rig.input->QueryAccept(type.Get()), SUCCEEDED(result) ? S_OK : S_FALSE);
        return result;
    }
};

// How the format block of a type is made.
enum class Block { kVideoInfo, kVideoInfo2, kNone, kCut, kCut2, kAbsent };
constexpr Block kBlocks[] = {Block::kVideoInfo, Block::kVideoInfo2, Block::kNone,
                             Block::kCut,       Block::kCut2,       Block::kAbsent};

MediaType TypeWith(const PixelFormat& format, Block block) {
    VideoSpec spec = SpecOf(format, 64, 48);
    switch (block) {
        case Block::kVideoInfo: break;
        case Block::kVideoInfo2: spec.formattype = FORMAT_VideoInfo2; break;
        case Block::kNone:
            spec.formattype = FORMAT_None;
            spec.absentFormat = true;
            break;
        case Block::kCut: spec.formatBytes = sizeof(VIDEOINFOHEADER) - 1; break;
        case Block::kCut2:
            spec.formattype = FORMAT_VideoInfo2;
            spec.formatBytes = sizeof(VIDEOINFOHEADER2) - 1;
            break;
        case Block::kAbsent:
            spec.absentFormat = true;
            spec.formatBytes = sizeof(VIDEOINFOHEADER);
            break;
    }
    return MakeVideoType(spec);
}

bool TypeSettingAccepts(int setting, const PixelFormat& format, Block block) {
    if (block == Block::kCut || block == Block::kCut2 || block == Block::kAbsent) return false;
    switch (setting) {
        case 0:
            return block == Block::kVideoInfo ||
                   (block == Block::kVideoInfo2 && format.layout != Layout::kRgb);
        case 1: return block == Block::kVideoInfo;
        case 2: return block == Block::kVideoInfo2;
        default: return true;
    }
}

TEST_F(AcceptanceTest, EverySubtypeByEveryFormatAndTypeSettingAndFormatBlock) {
    std::vector<PixelFormat> formats = AllFormats();
    // A stranger, which is RGB for the rule about format blocks only if it is one of the three.
    formats.push_back({"RGB32", Layout::kPacked, 32, 0, -1, 0, false});
    int accepted = 0;
    int refused = 0;
    FilterRig rig;
    for (const PixelFormat& format : formats) {
        const bool isKnown = SubtypeOf(format) != MEDIASUBTYPE_RGB32;
        for (const Block block : kBlocks) {
            const MediaType type = TypeWith(format, block);
            for (int formatSetting = -1; formatSetting <= 12; ++formatSetting) {
                rig.settings->SetOutputFormat(formatSetting);
                const bool isRestricted = formatSetting >= 1 && formatSetting <= 10;
                const bool formatAccepts = isRestricted         ? format.setting == formatSetting
                                           : formatSetting == 0 ? isKnown
                                                                : true;
                for (const int typeSetting : {0, 1, 2, 3, -1}) {
                    rig.settings->SetVideoType(typeSetting);
                    rig.settings->SetOutputSize(0, 0);
                    const bool accepts =
                        formatAccepts && TypeSettingAccepts(typeSetting, format, block);
                    ++(accepts ? accepted : refused);
                    ASSERT_EQ(Offer(rig, type), accepts ? S_OK : VFW_E_TYPE_NOT_ACCEPTED)
                        << format.name << ", block " << static_cast<int>(block) << ", format "
                        << formatSetting << ", type " << typeSetting;
                }
            }
        }
    }
    EXPECT_EQ(accepted + refused, 12 * 6 * 14 * 5);
    EXPECT_GT(accepted, 500);
}

TEST_F(AcceptanceTest, TypeMpeg2RefusesAVideoInfoHeader) {
    FilterRig rig;
    rig.settings->SetVideoType(VantrelTypeMpeg2);
    EXPECT_EQ(Offer(rig, TypeOf(Format("YV12"), 64, 48)), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(Offer(rig, TypeOf(Format("YV12"), 64, 48, FORMAT_VideoInfo2)), S_OK);
}

TEST_F(AcceptanceTest, TypeAutoRefusesRgb24InAVideoInfoHeader2) {
    FilterRig rig;
    EXPECT_EQ(Offer(rig, TypeOf(Format("RGB24"), 64, 48, FORMAT_VideoInfo2)),
              VFW_E_TYPE_NOT_ACCEPTED);
    rig.settings->SetVideoType(VantrelTypeMpeg2);
    EXPECT_EQ(Offer(rig, TypeOf(Format("RGB24"), 64, 48, FORMAT_VideoInfo2)), S_OK);
}

TEST_F(AcceptanceTest, Format11AcceptsEveryVideoSubtype) {
    FilterRig rig;
    rig.settings->SetOutputFormat(11);
    for (const GUID& subtype : {MEDIASUBTYPE_RGB32, MEDIASUBTYPE_RGB8, FourCC("MJPG"), GUID_NULL}) {
        EXPECT_EQ(Offer(rig, MakeVideoType({.subtype = subtype})), S_OK);
    }
    EXPECT_EQ(Offer(rig, MakeVideoType({.majortype = MEDIATYPE_Audio})), VFW_E_TYPE_NOT_ACCEPTED);
}

TEST_F(AcceptanceTest, OnlyVideoIsAccepted) {
    FilterRig rig;
    for (const GUID& major :
         {MEDIATYPE_Audio, MEDIATYPE_Stream, MEDIATYPE_Interleaved, GUID_NULL}) {
        VideoSpec spec = SpecOf(Format("YV12"), 64, 48);
        spec.majortype = major;
        EXPECT_EQ(Offer(rig, MakeVideoType(spec)), VFW_E_TYPE_NOT_ACCEPTED);
    }
}

struct Shape {
    const char* format;
    int width;
    int height;
    bool accepted;
};

TEST_F(AcceptanceTest, SizesThatNoFrameCanHaveAreRefused) {
    const Shape shapes[] = {
        {"RGB24", 0, 48, false},        {"RGB24", 64, 0, false},
        {"RGB24", -64, 48, false},      {"RGB24", INT_MIN, 48, false},
        {"RGB24", 64, INT_MIN, false},  {"RGB24", INT_MAX, INT_MAX, false},
        {"RGB24", INT_MAX, 1, false},   {"RGB24", 1, INT_MAX, false},
        {"RGB24", 40000, 20000, false}, {"RGB24", 65536, 65536, false},
        {"YUY2", 32768, -32768, false}, {"YUY2", 65537, 65537, false},
        {"YV12", 65536, 65536, false},  {"YVU9", 65536, 32768, false},
        {"RGB24", 1, 1, true},          {"RGB24", 1, -1, true},
        {"RGB24", 20000, 20000, true},  {"YUY2", 2, 1, true},
        {"YUY2", 3, 3, true},
    };
    FilterRig rig;
    for (const Shape& shape : shapes) {
        VideoSpec spec = SpecOf(Format(shape.format), 64, 48);
        spec.width = shape.width;
        spec.height = shape.height;
        rig.settings->SetOutputSize(0, 0);
        EXPECT_EQ(Offer(rig, MakeVideoType(spec)), shape.accepted ? S_OK : VFW_E_TYPE_NOT_ACCEPTED)
            << shape.format << " " << shape.width << "x" << shape.height;
    }
}

TEST_F(AcceptanceTest, PlanarPicturesWithoutChromaSamplesAreAccepted) {
    const Shape shapes[] = {
        {"YV12", 1, 2, true},   {"YV12", 2, 1, true},   {"YV12", 2, -1, true},
        {"I420", 1, 100, true}, {"IYUV", 100, 1, true}, {"YVU9", 3, 4, true},
        {"YVU9", 4, 3, true},   {"YVU9", 1, 1, true},   {"YVU9", 0, 4, false},
    };
    FilterRig rig;
    for (const Shape& shape : shapes) {
        rig.settings->SetOutputSize(0, 0);
        EXPECT_EQ(Offer(rig, TypeOf(Format(shape.format), shape.width, shape.height)),
                  shape.accepted ? S_OK : VFW_E_TYPE_NOT_ACCEPTED)
            << shape.format << " " << shape.width << "x" << shape.height;
    }
}

TEST_F(AcceptanceTest, ADepthBelowThatOfTheSubtypeCountsAsItsOwn) {
    for (const PixelFormat& format : AllFormats()) {
        for (const int bits : {0, 1, format.bits - 1, format.bits, format.bits + 1, 32}) {
            VideoSpec spec = SpecOf(format, 64, 48);
            spec.bitCount = static_cast<WORD>(bits);
            FilterRig rig;
            ASSERT_EQ(rig.ConnectInput(MakeVideoType(spec)), S_OK)
                << format.name << " with " << bits << " bits";
            const std::vector<MediaType> offered = rig.OfferedTypes();
            ASSERT_EQ(offered.size(), 1u);
            EXPECT_EQ(offered[0].Bitmap()->biBitCount, bits < format.bits ? format.bits : bits);
            EXPECT_EQ(rig.ConnectOutput(), S_OK);
        }
    }
}

TEST_F(AcceptanceTest, TheRuleHoldsForSizesUnderEveryUnlistedFormatCode) {
    FilterRig rig;
    rig.settings->SetOutputFormat(11);
    rig.settings->SetVideoType(3);
    EXPECT_EQ(Offer(rig, TypeOf(Format("YV12"), 64, 0)), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(Offer(rig, TypeOf(Format("RGB24"), -64, 48)), VFW_E_TYPE_NOT_ACCEPTED);
}

TEST_F(AcceptanceTest, ExtraBytesBehindTheHeaderDoNoHarm) {
    FilterRig rig;
    VideoSpec spec = SpecOf(Format("YV12"), 64, 48);
    spec.formatBytes = 5000;
    EXPECT_EQ(Offer(rig, MakeVideoType(spec)), S_OK);
}

TEST_F(AcceptanceTest, NullArgumentsAreRefused) {
    FilterRig rig;
    EXPECT_EQ(rig.input->QueryAccept(nullptr), E_POINTER);
    EXPECT_EQ(rig.output->QueryAccept(nullptr), E_POINTER);
    EXPECT_EQ(rig.input->ReceiveConnection(&rig.source->pin(), nullptr), E_POINTER);
    EXPECT_EQ(rig.input->ConnectionMediaType(nullptr), E_POINTER);
    EXPECT_EQ(rig.output->ConnectionMediaType(nullptr), E_POINTER);
    EXPECT_EQ(rig.output->EnumMediaTypes(nullptr), E_POINTER);
}

TEST_F(AcceptanceTest, WithTheOutputConnectedTheSubtypeIsBoundAndTheSizeIsFree) {
    FilterRig rig;
    ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), 64, 48)), S_OK);
    rig.DisconnectInput();
    EXPECT_EQ(Offer(rig, TypeOf(Format("YUY2"), 64, 48)), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(Offer(rig, TypeOf(Format("IYUV"), 64, 48)), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(Offer(rig, TypeOf(Format("YV12"), 320, 240)), S_OK);
}

}  // namespace
