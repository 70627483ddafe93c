// zimg, which scales planes. Its rows must start at cache lines.

#include <zimg.h>

#include <memory>
#include <stdexcept>

#include "bench/peers/peer.h"
#include "bench/picture.h"

namespace tavo::bench {
namespace {

class Job {
  public:
    Job(const Case& work, zimg_pixel_type_e type, zimg_cpu_type_e cpu)
        : src_(Picture::Aligned(work.Info().RowBytes(work.sizes.srcWidth), work.sizes.srcHeight,
                                Picture::Use::Source)),
          dst_(Picture::Aligned(work.Info().RowBytes(work.sizes.dstWidth), work.sizes.dstHeight,
                                Picture::Use::Destination)),
          graph_(Build(work, type, cpu)),
          scratch_(Picture::Aligned(ScratchBytes(), 1, Picture::Use::Scratch)) {}

    void operator()() const {
        zimg_image_buffer_const from{};
        from.version = ZIMG_API_VERSION;
        from.plane[0].data = src_.Data();
        from.plane[0].stride = src_.Stride();
        from.plane[0].mask = ZIMG_BUFFER_MAX;
        zimg_image_buffer to{};
        to.version = ZIMG_API_VERSION;
        to.plane[0].data = dst_.Data();
        to.plane[0].stride = dst_.Stride();
        to.plane[0].mask = ZIMG_BUFFER_MAX;
        if (zimg_filter_graph_process(graph_.get(), &from, &to, scratch_.Data(), nullptr, nullptr,
                                      nullptr, nullptr) != ZIMG_ERROR_SUCCESS) {
            throw std::runtime_error("zimg refuses");
        }
    }

  private:
    struct Free {
        void operator()(zimg_filter_graph* graph) const { zimg_filter_graph_free(graph); }
    };
    using OwnedGraph = std::unique_ptr<zimg_filter_graph, Free>;

    static zimg_image_format Format(int32_t width, int32_t height, zimg_pixel_type_e type) {
        zimg_image_format format;
        zimg_image_format_default(&format, ZIMG_API_VERSION);
        format.width = static_cast<unsigned>(width);
        format.height = static_cast<unsigned>(height);
        format.pixel_type = type;
        format.pixel_range = ZIMG_RANGE_FULL;
        return format;
    }

    static OwnedGraph Build(const Case& work, zimg_pixel_type_e type, zimg_cpu_type_e cpu) {
        const Sizes& sizes = work.sizes;
        const zimg_image_format from = Format(sizes.srcWidth, sizes.srcHeight, type);
        const zimg_image_format to = Format(sizes.dstWidth, sizes.dstHeight, type);
        zimg_graph_builder_params params;
        zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
        params.resample_filter =
            work.method == Method::Bilinear ? ZIMG_RESIZE_BILINEAR : ZIMG_RESIZE_POINT;
        params.cpu_type = cpu;
        OwnedGraph graph(zimg_filter_graph_build(&from, &to, &params));
        if (!graph) throw std::runtime_error("zimg builds no graph");
        return graph;
    }

    int32_t ScratchBytes() const {
        size_t bytes = 0;
        zimg_filter_graph_get_tmp_size(graph_.get(), &bytes);
        return static_cast<int32_t>(bytes);
    }

    Picture src_;
    Picture dst_;
    OwnedGraph graph_;
    Picture scratch_;
};

Way WayFor(const Case& work, const char* name, zimg_pixel_type_e type, zimg_cpu_type_e cpu) {
    return {name, [job = std::make_shared<Job>(work, type, cpu)] { (*job)(); },
            cpu == ZIMG_CPU_AUTO_64B};
}

std::vector<Way> WaysFor(const Case& work) {
    const FamilyGroup group = work.Info().group;
    const bool takesWords = group == FamilyGroup::Rgb16 && work.method != Method::Bilinear;
    if (group != FamilyGroup::Planar && !takesWords) return {};
    const zimg_pixel_type_e type = takesWords ? ZIMG_PIXEL_WORD : ZIMG_PIXEL_BYTE;
    return {WayFor(work, "up to AVX2", type, ZIMG_CPU_AUTO),
            WayFor(work, "up to AVX-512", type, ZIMG_CPU_AUTO_64B)};
}

}  // namespace

Peer ZimgPeer() {
    unsigned version[3];
    zimg_get_version_info(&version[0], &version[1], &version[2]);
    return {"zimg",
            std::to_string(version[0]) + '.' + std::to_string(version[1]) + '.' +
                std::to_string(version[2]),
            WaysFor};
}

}  // namespace tavo::bench
