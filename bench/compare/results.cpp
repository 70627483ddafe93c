// Ratios and means.

#include "bench/compare/results.h"

#include <cmath>

namespace tavo::bench {
namespace {

template <typename Choose>
const PeerTime* Fastest(const std::vector<PeerTime>& times, Choose choose) {
    const PeerTime* best = nullptr;
    for (const PeerTime& time : times) {
        if (choose(time) && (!best || time.nanoseconds < best->nanoseconds)) best = &time;
    }
    return best;
}

}  // namespace

const PeerTime* CaseResult::BestOf(size_t peer) const {
    return Fastest(peers, [peer](const PeerTime& time) { return time.peer == peer; });
}

const PeerTime* CaseResult::Best(Build build) const {
    const bool isHeld = build >= Avx2Build64;
    return Fastest(peers, [isHeld](const PeerTime& time) { return !isHeld || !time.takesAvx512; });
}

double CaseResult::Ratio(Build build) const {
    const PeerTime* const best = Best(build);
    return best && ours[build] > 0 ? best->nanoseconds / ours[build] : 0;
}

double CaseResult::MemoryRatio() const {
    const PeerTime* const best = Best();
    return best && memory > 0 ? best->nanoseconds / memory : 0;
}

double CaseResult::TimeToMemory(Build build) const { return memory > 0 ? ours[build] / memory : 0; }

double Results::GeometricMean(const std::vector<double>& values) {
    double sum = 0;
    int count = 0;
    for (const double value : values) {
        if (value <= 0) continue;
        sum += std::log(value);
        ++count;
    }
    return count ? std::exp(sum / count) : 0;
}

std::string TextOf(const Sizes& sizes) {
    return std::to_string(sizes.srcWidth) + 'x' + std::to_string(sizes.srcHeight) + " > " +
           std::to_string(sizes.dstWidth) + 'x' + std::to_string(sizes.dstHeight);
}

std::string TextOf(const Case& work) {
    std::string text = work.Info().name;
    text += ' ';
    text += NameOf(work.method);
    if (work.method != Method::Copy) text += std::string(" ") + NameOf(work.Mode());
    return text + ' ' + TextOf(work.sizes);
}

}  // namespace tavo::bench
