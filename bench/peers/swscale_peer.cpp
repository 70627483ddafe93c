// libswscale, from each format into the same one. Its rows are given whole cache lines, which it
// likes best.

extern "C" {
#include <libavutil/log.h>
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <stdexcept>

#include "bench/peers/peer.h"
#include "bench/picture.h"

namespace tavo::bench {
namespace {

AVPixelFormat FormatOf(Family family) {
    switch (family) {
        case Family::Planar: return AV_PIX_FMT_GRAY8;
        case Family::Yuy2: return AV_PIX_FMT_YUYV422;
        case Family::Uyvy: return AV_PIX_FMT_UYVY422;
        case Family::Rgb24: return AV_PIX_FMT_BGR24;
        case Family::Rgb555: return AV_PIX_FMT_RGB555LE;
        case Family::Rgb565: return AV_PIX_FMT_RGB565LE;
    }
    return AV_PIX_FMT_NONE;
}

class Job {
  public:
    Job(const Case& work, int flags)
        : sizes_(work.sizes),
          src_(Picture::Aligned(work.Info().RowBytes(sizes_.srcWidth), sizes_.srcHeight,
                                Picture::Use::Source)),
          dst_(Picture::Aligned(work.Info().RowBytes(sizes_.dstWidth), sizes_.dstHeight,
                                Picture::Use::Destination)) {
        const AVPixelFormat format = FormatOf(work.family);
        context_.reset(sws_getContext(sizes_.srcWidth, sizes_.srcHeight, format, sizes_.dstWidth,
                                      sizes_.dstHeight, format, flags, nullptr, nullptr, nullptr));
        if (!context_) throw std::runtime_error("swscale gives no context");
    }

    void operator()() const {
        const uint8_t* const src[4] = {src_.Data()};
        uint8_t* const dst[4] = {dst_.Data()};
        const int srcStride[4] = {src_.Stride()};
        const int dstStride[4] = {dst_.Stride()};
        const int rows =
            sws_scale(context_.get(), src, srcStride, 0, sizes_.srcHeight, dst, dstStride);
        if (rows != sizes_.dstHeight) throw std::runtime_error("swscale refuses");
    }

  private:
    struct Free {
        void operator()(SwsContext* context) const { sws_freeContext(context); }
    };

    Sizes sizes_;
    Picture src_;
    Picture dst_;
    std::unique_ptr<SwsContext, Free> context_;
};

Way WayFor(const Case& work, const char* name, int flags) {
    return {name, [job = std::make_shared<Job>(work, flags)] { (*job)(); }};
}

std::vector<Way> WaysFor(const Case& work) {
    av_log_set_level(AV_LOG_ERROR);
    if (work.method != Method::Bilinear) return {WayFor(work, "point", SWS_POINT)};
    return {WayFor(work, "bilinear", SWS_BILINEAR),
            WayFor(work, "fast bilinear", SWS_FAST_BILINEAR)};
}

}  // namespace

Peer SwscalePeer() {
    const unsigned version = swscale_version();
    return {"swscale",
            std::to_string(version >> 16) + '.' + std::to_string(version >> 8 & 255) + '.' +
                std::to_string(version & 255),
            WaysFor};
}

}  // namespace tavo::bench
