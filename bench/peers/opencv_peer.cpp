// OpenCV's resize. It knows no packed 4:2:2, and blends 16-bit RGB through three bytes a pixel.

#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/peers/peer.h"
#include "bench/picture.h"

namespace tavo::bench {
namespace {

class Job {
  public:
    Job(const Case& work, int type)
        : interpolation_(work.method == Method::Bilinear ? cv::INTER_LINEAR : cv::INTER_NEAREST),
          sizes_(work.sizes),
          type_(type),
          src_(work.Info().Stride(sizes_.srcWidth), sizes_.srcHeight, Picture::Use::Source),
          dst_(work.Info().Stride(sizes_.dstWidth), sizes_.dstHeight, Picture::Use::Destination) {}

    void Resize() const {
        const cv::Mat from = Source();
        cv::Mat to = Destination();
        if (from.size() == to.size()) {
            from.copyTo(to);
        } else {
            cv::resize(from, to, to.size(), 0, 0, interpolation_);
        }
    }

    void ResizeThrough(int unpack, int pack) {
        cv::Mat to = Destination();
        cv::cvtColor(Source(), unpacked_, unpack);
        cv::resize(unpacked_, resized_, to.size(), 0, 0, interpolation_);
        cv::cvtColor(resized_, to, pack);
    }

  private:
    cv::Mat Source() const {
        return {sizes_.srcHeight, sizes_.srcWidth, type_, src_.Data(),
                static_cast<size_t>(src_.Stride())};
    }
    cv::Mat Destination() const {
        return {sizes_.dstHeight, sizes_.dstWidth, type_, dst_.Data(),
                static_cast<size_t>(dst_.Stride())};
    }

    int interpolation_;
    Sizes sizes_;
    int type_;
    Picture src_;
    Picture dst_;
    cv::Mat unpacked_;
    cv::Mat resized_;
};

Way Direct(const Case& work, const char* name, int type) {
    return {name, [job = std::make_shared<Job>(work, type)] { job->Resize(); }};
}

Way Through(const Case& work, const char* name, int unpack, int pack) {
    return {name, [job = std::make_shared<Job>(work, CV_8UC2), unpack, pack] {
                job->ResizeThrough(unpack, pack);
            }};
}

std::vector<Way> WaysFor(const Case& work) {
    cv::setNumThreads(1);
    switch (work.Info().group) {
        case FamilyGroup::Planar: return {Direct(work, "resize", CV_8UC1)};
        case FamilyGroup::Rgb24: return {Direct(work, "resize", CV_8UC3)};
        case FamilyGroup::Packed422: return {};
        case FamilyGroup::Rgb16: break;
    }
    if (work.method != Method::Bilinear) return {Direct(work, "resize on words", CV_16UC1)};
    if (work.family == Family::Rgb565) {
        return {Through(work, "resize through BGR", cv::COLOR_BGR5652BGR, cv::COLOR_BGR2BGR565),
                Through(work, "resize through BGRA", cv::COLOR_BGR5652BGRA, cv::COLOR_BGRA2BGR565)};
    }
    return {Through(work, "resize through BGR", cv::COLOR_BGR5552BGR, cv::COLOR_BGR2BGR555),
            Through(work, "resize through BGRA", cv::COLOR_BGR5552BGRA, cv::COLOR_BGRA2BGR555)};
}

}  // namespace

Peer OpencvPeer() { return {"OpenCV", CV_VERSION, WaysFor}; }

}  // namespace tavo::bench
