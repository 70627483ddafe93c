// libyuv. It has no scaler for packed 4:2:2 and 16-bit RGB: those go through planes and 32-bit RGB.

// This one shares its guard with one that libyuv.h includes, in some releases, so it goes first.
#include <libyuv/scale_rgb.h>

#include <libyuv.h>

#include <memory>
#include <stdexcept>

#include "bench/peers/peer.h"
#include "bench/picture.h"

namespace tavo::bench {
namespace {

void Check(int status) {
    if (status != 0) throw std::runtime_error("libyuv refuses");
}

struct Pictures {
    explicit Pictures(const Case& work, int32_t bytesPerPixel = 0)
        : sizes(work.sizes),
          src(StrideOf(work, bytesPerPixel, work.sizes.srcWidth), work.sizes.srcHeight,
              bytesPerPixel ? Picture::Use::Scratch : Picture::Use::Source),
          dst(StrideOf(work, bytesPerPixel, work.sizes.dstWidth), work.sizes.dstHeight,
              bytesPerPixel ? Picture::Use::Scratch : Picture::Use::Destination) {}

    Sizes sizes;
    Picture src;
    Picture dst;

  private:
    // Of the pictures themselves, or of scratch pictures with whole bytes for each pixel.
    static int32_t StrideOf(const Case& work, int32_t bytesPerPixel, int32_t width) {
        return bytesPerPixel ? width * bytesPerPixel : work.Info().Stride(width);
    }
};

void ScaleBytes(const Pictures& p, libyuv::FilterMode filter) {
    libyuv::ScalePlane(p.src.Data(), p.src.Stride(), p.sizes.srcWidth, p.sizes.srcHeight,
                       p.dst.Data(), p.dst.Stride(), p.sizes.dstWidth, p.sizes.dstHeight, filter);
}

void ScaleRgb24(const Pictures& p, libyuv::FilterMode filter) {
    Check(libyuv::RGBScale(p.src.Data(), p.src.Stride(), p.sizes.srcWidth, p.sizes.srcHeight,
                           p.dst.Data(), p.dst.Stride(), p.sizes.dstWidth, p.sizes.dstHeight,
                           filter));
}

// Samples of 16 bits are taken whole, so this serves nearest neighbour only.
void TakeWords(const Pictures& p) {
    libyuv::ScalePlane_16(reinterpret_cast<const uint16_t*>(p.src.Data()), p.src.Stride() / 2,
                          p.sizes.srcWidth, p.sizes.srcHeight,
                          reinterpret_cast<uint16_t*>(p.dst.Data()), p.dst.Stride() / 2,
                          p.sizes.dstWidth, p.sizes.dstHeight, libyuv::kFilterNone);
}

// Through three planes each.
class Packed422 {
  public:
    Packed422(const Case& work, libyuv::FilterMode filter)
        : isYuy2_(work.family == Family::Yuy2), filter_(filter), p_(work), planes_(work, 2) {}

    void operator()() const {
        const Sizes& s = p_.sizes;
        const Planes from(planes_.src, s.srcWidth, s.srcHeight);
        const Planes to(planes_.dst, s.dstWidth, s.dstHeight);
        const auto unpack = isYuy2_ ? libyuv::YUY2ToI422 : libyuv::UYVYToI422;
        const auto pack = isYuy2_ ? libyuv::I422ToYUY2 : libyuv::I422ToUYVY;
        Check(unpack(p_.src.Data(), p_.src.Stride(), from.y, s.srcWidth, from.u, s.srcWidth / 2,
                     from.v, s.srcWidth / 2, s.srcWidth, s.srcHeight));
        Check(libyuv::I422Scale(from.y, s.srcWidth, from.u, s.srcWidth / 2, from.v, s.srcWidth / 2,
                                s.srcWidth, s.srcHeight, to.y, s.dstWidth, to.u, s.dstWidth / 2,
                                to.v, s.dstWidth / 2, s.dstWidth, s.dstHeight, filter_));
        Check(pack(to.y, s.dstWidth, to.u, s.dstWidth / 2, to.v, s.dstWidth / 2, p_.dst.Data(),
                   p_.dst.Stride(), s.dstWidth, s.dstHeight));
    }

  private:
    struct Planes {
        Planes(const Picture& picture, int32_t width, int32_t height)
            : y(picture.Data()), u(y + width * height), v(u + width / 2 * height) {}
        uint8_t* y;
        uint8_t* u;
        uint8_t* v;
    };

    bool isYuy2_;
    libyuv::FilterMode filter_;
    Pictures p_;
    Pictures planes_;
};

// Through four bytes a pixel.
class ThroughArgb {
  public:
    ThroughArgb(const Case& work, libyuv::FilterMode filter)
        : family_(work.family), filter_(filter), p_(work), argb_(work, 4) {}

    void operator()() const {
        const Sizes& s = p_.sizes;
        const Conversions convert = ConversionsOf(family_);
        Check(convert.unpack(p_.src.Data(), p_.src.Stride(), argb_.src.Data(), argb_.src.Stride(),
                             s.srcWidth, s.srcHeight));
        Check(libyuv::ARGBScale(argb_.src.Data(), argb_.src.Stride(), s.srcWidth, s.srcHeight,
                                argb_.dst.Data(), argb_.dst.Stride(), s.dstWidth, s.dstHeight,
                                filter_));
        Check(convert.pack(argb_.dst.Data(), argb_.dst.Stride(), p_.dst.Data(), p_.dst.Stride(),
                           s.dstWidth, s.dstHeight));
    }

  private:
    using Conversion = int (*)(const uint8_t*, int, uint8_t*, int, int, int);
    struct Conversions {
        Conversion unpack;
        Conversion pack;
    };
    static Conversions ConversionsOf(Family family) {
        switch (family) {
            case Family::Rgb24: return {libyuv::RGB24ToARGB, libyuv::ARGBToRGB24};
            case Family::Rgb555: return {libyuv::ARGB1555ToARGB, libyuv::ARGBToARGB1555};
            default: return {libyuv::RGB565ToARGB, libyuv::ARGBToRGB565};
        }
    }

    Family family_;
    libyuv::FilterMode filter_;
    Pictures p_;
    Pictures argb_;
};

void AddWays(std::vector<Way>& ways, const Case& work, const std::string& name,
             libyuv::FilterMode filter) {
    const FamilyGroup group = work.Info().group;
    if (group == FamilyGroup::Planar) {
        ways.push_back(
            {name, [p = std::make_shared<Pictures>(work), filter] { ScaleBytes(*p, filter); }});
    }
    if (group == FamilyGroup::Packed422) {
        ways.push_back({name + ", through planes",
                        [job = std::make_shared<Packed422>(work, filter)] { (*job)(); }});
    }
    if (group == FamilyGroup::Rgb24) {
        ways.push_back(
            {name, [p = std::make_shared<Pictures>(work), filter] { ScaleRgb24(*p, filter); }});
    }
    if (group == FamilyGroup::Rgb24 || group == FamilyGroup::Rgb16) {
        ways.push_back({name + ", through ARGB",
                        [job = std::make_shared<ThroughArgb>(work, filter)] { (*job)(); }});
    }
}

std::vector<Way> WaysFor(const Case& work) {
    std::vector<Way> ways;
    if (work.method == Method::Bilinear) {
        AddWays(ways, work, "bilinear", libyuv::kFilterBilinear);
        if (work.Mode() == AxisMode::Width) AddWays(ways, work, "linear", libyuv::kFilterLinear);
        return ways;
    }
    AddWays(ways, work, "point", libyuv::kFilterNone);
    if (work.Info().group == FamilyGroup::Rgb16) {
        ways.push_back(
            {"point, on words", [p = std::make_shared<Pictures>(work)] { TakeWords(*p); }});
    }
    return ways;
}

}  // namespace

Peer LibyuvPeer() { return {"libyuv", std::to_string(LIBYUV_VERSION), WaysFor}; }

}  // namespace tavo::bench
