// Reading what was drawn on a surface, and asking for the next one.
#include "tests/filter/support/surface_rig.h"

#include <algorithm>
#include <cstdlib>

#include "tests/picture/support/pitched_rows.h"

namespace tavo_test {
namespace {

constexpr BYTE kUntouched = 0xEE;

}  // namespace

SurfaceRig::SurfaceRig(const PixelFormat& format, SinkConfig config)
    : FilterRig(config), format_(format), onReceive_(config.onReceive) {
    SinkConfig& set = sink->pin().config;
    set.onReceive = [this](IMediaSample* sample) { return Draw(sample); };
    set.onConnection = [this](const AM_MEDIA_TYPE& type) {
        painted_ = nullptr;
        Read(type);
        AskForSurface();
    };
    set.keepBytes = false;
}

HRESULT SurfaceRig::Begin(Size from, Size to) {
    sink->pin().config.typeChangeWhileConnected = reconnects;
    settings->SetScaleMethod(VantrelMethodNearest);
    settings->SetOutputSize(to.width, to.height);
    const HRESULT connected = Connect(TypeOf(format_, from.width, from.height));
    return FAILED(connected) ? connected : Start();
}

HRESULT SurfaceRig::Stop() {
    painted_ = nullptr;
    return FilterRig::Stop();
}

MediaType SurfaceRig::TypeFor(Size picture, Surface surface) const {
    const int sign = surface.turned && format_.keepsHeightSign ? -1 : 1;
    VideoSpec spec = SpecOf(format_, picture.width + surface.more, sign * picture.height);
    spec.source = spec.target = RECT{0, 0, picture.width, picture.height};
    // A surface may be larger than its picture says.
    spec.sizeImage = FrameBytes(spec.subtype, spec.width, picture.height) + 100;
    return MakeVideoType(spec);
}

void SurfaceRig::Read(const AM_MEDIA_TYPE& type) {
    const MediaType copy(type);
    const BITMAPINFOHEADER& bitmap = *copy.Bitmap();
    const RECT& target = reinterpret_cast<const VIDEOINFOHEADER*>(type.pbFormat)->rcTarget;
    pitch_ = static_cast<int>(bitmap.biWidth);
    const bool isPart = target.right > 0 && target.right < bitmap.biWidth;
    size_ = {isPart ? static_cast<int>(target.right) : pitch_, std::abs(bitmap.biHeight)};
    turned_ = bitmap.biHeight < 0 && format_.keepsHeightSign;
}

void SurfaceRig::AskForSurface() {
    if (surfaces.empty()) return;
    const Surface& next = surfaces[turn_++ % surfaces.size()];
    const MediaType type = TypeFor(size_, next);
    if (turn_ <= surfaces.size()) {
        EXPECT_EQ(output->QueryAccept(type.Get()), S_OK);
    }
    sink->pin().ownAllocator()->AttachTypeOnce(*type);
}

HRESULT SurfaceRig::Draw(IMediaSample* sample) {
    if (onReceive_) {
        const HRESULT hr = onReceive_(sample);
        if (hr != S_OK) return hr;
    }
    DrawnPicture drawn = {};
    AM_MEDIA_TYPE* type = nullptr;
    if (sample->GetMediaType(&type) == S_OK && type) {
        drawn.type = MediaType(*type);
        DeleteType(type);
        Read(*drawn.type->Get());
    }
    drawn.size = size_;
    REFERENCE_TIME stop = 0;
    sample->GetTime(&drawn.start, &stop);

    BYTE* data = nullptr;
    sample->GetPointer(&data);
    const long size = sample->GetSize();
    const auto from = RowsAtPitch(format_, size_.width, size_.height, pitch_);
    const auto to = RowsAtPitch(format_, size_.width, size_.height, size_.width);
    const PitchedRows& last = from.back();
    if (last.At(last.count - 1) + last.bytes > size) {
        ADD_FAILURE() << "the picture does not fit its buffer";
        return E_FAIL;
    }
    drawn.bytes.resize(static_cast<size_t>(RuleFrameBytes(format_, size_.width, size_.height)));
    CopyRows(drawn.bytes.data(), to, data, from, turned_);

    drawn.isClean = true;
    if (painted_ == data && pitch_ > size_.width) {
        for (const PitchedRows& plane : from) {
            for (int y = 0; y < plane.count; ++y) {
                std::fill_n(data + plane.At(y), plane.bytes, kUntouched);
            }
        }
        drawn.isClean = std::all_of(data, data + size, [](BYTE b) { return b == kUntouched; });
    }
    std::fill_n(data, size, kUntouched);
    painted_ = data;
    pictures.push_back(std::move(drawn));
    AskForSurface();
    return S_OK;
}

}  // namespace tavo_test
