// Which cases there are. One-axis rows see every pair of short lengths; two-axis rows see every
// pair of either axis, with the other axis at random.

#include "tests/kernel_check/cases.h"

#include "resample/kernel_table.h"

namespace tavo::test {
namespace {

constexpr int kShortest = 1;
constexpr int kLongestShort = 40;
constexpr int kLengths[] = {41, 64, 127, 352, 353, 640, 719, 720, 721, 1279, 1280, 1920};

struct Pair {
    int source;
    int destination;
};
constexpr Pair kStrongRatios[] = {{4096, 8},  {8, 600},   {1, 77},      {77, 1},      {600, 1},
                                  {2, 1000},  {3000, 7},  {1023, 1022}, {1022, 1023}, {5000, 4999},
                                  {12000, 5}, {5, 12000}, {333, 3330},  {4100, 2050}};

class Planner {
  public:
    Planner(const ScaleRow& row, const Effort& effort)
        : row_(row),
          effort_(effort),
          random_(effort.seed * 1000 + static_cast<uint64_t>(row.row)) {}

    std::vector<CasePlan> Plan() {
        switch (row_.axis) {
            case Axis::H720: Fixed(3, 2); break;
            case Axis::H640: Fixed(4, 3); break;
            case Axis::Horizontal: Widths(); break;
            case Axis::Vertical: Heights(); break;
            case Axis::Both: BothAxes(); break;
            case Axis::Copy: break;
        }
        return plans_;
    }

  private:
    bool IsPacked() const { return row_.format == Format::Yuy2 || row_.format == Format::Uyvy; }

    int Between(int low, int high) { return random_.Between(low, high); }

    // Calls add(source, destination) for every pair of short lengths.
    template <typename AddPair>
    void ShortPairs(AddPair add) {
        for (int source = kShortest; source <= kLongestShort; ++source) {
            for (int dst = kShortest; dst <= kLongestShort; ++dst) add(source, dst);
        }
    }

    // A quick walk takes one of 23 of the systematic cases.
    bool TakesPart() { return !effort_.quick || ++turn_ % 23 == 0; }

    void Add(Sizes sizes, MapKind maps = MapKind::OfSizes) {
        if (IsPacked()) sizes.dstWidth += sizes.dstWidth % 2;
        if (row_.axis == Axis::Vertical) sizes.srcWidth = sizes.dstWidth;
        if (row_.axis != Axis::Vertical && row_.axis != Axis::Both) {
            sizes.srcHeight = sizes.dstHeight;
        }
        const size_t count = plans_.size();
        const Pattern extreme = kPatterns[count / 3 % std::size(kPatterns)];
        const Pattern pattern = count % 3 == 2 ? extreme : Pattern::Random;
        plans_.push_back({row_.axis, sizes, maps, pattern, effort_.seed * 1000003 + count});
    }

    void Fixed(int srcGroup, int dstGroup) {
        const int scale = IsPacked() ? 2 : 1;
        srcGroup *= scale;
        dstGroup *= scale;
        const auto add = [&](int groups) {
            Add({srcGroup * groups, 0, dstGroup * groups, Between(1, 5)});
        };
        for (int groups = 1; groups <= 170; ++groups) {
            if (TakesPart() || groups < 5) add(groups);
        }
        for (int groups : {240 / scale, 320 / scale, 321 / scale, 1000 / scale}) add(groups);
        for (int times = 0; times < (effort_.quick ? 2 : 8); ++times) {
            add(480 / dstGroup);
            Add({480 / dstGroup * srcGroup, 0, 480, 1});
            Add({480 / dstGroup * srcGroup, 0, 480, Between(20, 60)});
        }
        // The nearest neighbour kernel for MMX in this row is that of the other ratio.
        if (row_.row == RowH720Rgb24) {
            for (int groups = 1; groups <= 170; ++groups) Add({4 * groups, 0, 3 * groups, 3});
        }
    }

    void Widths() {
        ShortPairs([&](int source, int dst) {
            if (TakesPart()) Add({source, 0, dst, Between(1, 4)});
        });
        for (int source : kLengths) {
            for (int dst : kLengths) {
                if (TakesPart()) Add({source, 0, dst, Between(1, 3)});
            }
            Add({source, 0, Between(1, 40), 2});
            Add({Between(1, 40), 0, source, 2});
        }
        for (const Pair& ratio : kStrongRatios) Add({ratio.source, 0, ratio.destination, 2});
        for (int i = 0; i < (effort_.quick ? 40 : 400); ++i) {
            Add({Between(1, 90), 0, Between(1, 90), Between(1, 3)}, MapKind::Random);
            if (i % 4 > 0) continue;
            Add({Between(90, 3000), 0, Between(90, 3000), Between(1, 3)}, MapKind::Random);
        }
        if (effort_.quick) return;
        Add({1026, 0, 256, 511}, MapKind::EveryWeightX);
        Add({720, 0, 1280, 60});
    }

    void Heights() {
        ShortPairs([&](int source, int dst) {
            if (TakesPart()) Add({0, source, Between(1, 40), dst});
        });
        for (int width = 1; width <= 70; ++width) Add({0, Between(1, 9), width, Between(1, 9)});
        for (int width : kLengths) {
            for (int times = 0; times < (effort_.quick ? 1 : 4); ++times) {
                Add({0, Between(1, 12), width, Between(1, 12)});
            }
        }
        for (int source : kLengths) {
            for (int dst : kLengths) {
                if (TakesPart()) Add({0, source, Between(1, 9), dst});
            }
        }
        for (const Pair& ratio : kStrongRatios) {
            Add({0, ratio.source, Between(1, 9), ratio.destination});
        }
        for (int i = 0; i < (effort_.quick ? 40 : 400); ++i) {
            Add({0, Between(1, 40), Between(1, 40), Between(1, 40)}, MapKind::Random);
        }
        if (effort_.quick) return;
        Add({0, 1026, 512, 256}, MapKind::EveryWeightY);
        Add({0, 576, 720, 480});
    }

    void BothAxes() {
        ShortPairs([&](int source, int dst) {
            if (TakesPart()) Add({source, Between(1, 16), dst, Between(1, 16)});
            if (TakesPart()) Add({Between(1, 40), source, Between(1, 40), dst});
        });
        for (int source : kLengths) {
            for (int dst : kLengths) {
                if (!TakesPart()) continue;
                Add({source, Between(1, 6), dst, Between(1, 6)});
                Add({Between(1, 20), source, Between(1, 20), dst});
            }
            Add({source, Between(1, 6), Between(1, 40), Between(1, 6)});
            Add({Between(1, 40), Between(1, 6), source, Between(1, 3)});
        }
        for (const Pair& ratio : kStrongRatios) {
            Add({ratio.source, Between(1, 6), ratio.destination, Between(1, 6)});
            Add({Between(1, 12), ratio.source, Between(1, 12), ratio.destination});
        }
        for (int i = 0; i < (effort_.quick ? 60 : 600); ++i) {
            Add({Between(1, 70), Between(1, 12), Between(1, 70), Between(1, 12)}, MapKind::Random);
            if (i % 8 > 0) continue;
            Add({Between(70, 3000), Between(1, 5), Between(70, 3000), Between(1, 5)},
                MapKind::Random);
        }
        if (effort_.quick) return;
        Add({1026, 511, 256, 511}, MapKind::EveryWeightX);
        Add({512, 1026, 512, 256}, MapKind::EveryWeightY);
        Add({352, 288, 720, 576});
        Add({1920, 1080, 640, 360});
    }

    const ScaleRow& row_;
    const Effort effort_;
    Random random_;
    int turn_ = 0;
    std::vector<CasePlan> plans_;
};

bool IsRatio(const Sizes& sizes, int srcGroup, int dstGroup) {
    return sizes.srcWidth % srcGroup == 0 && sizes.srcWidth / srcGroup * dstGroup == sizes.dstWidth;
}

}  // namespace

std::vector<CasePlan> PlanCases(const ScaleRow& row, const Effort& effort) {
    return Planner(row, effort).Plan();
}

bool Serves(const ScaleRow& row, const ExpectedKernel& kernel, const Sizes& sizes) {
    if (row.axis != Axis::H720) return true;
    if (kernel.oracle != Nearest640Rgb24Mixed) return IsRatio(sizes, 3, 2);
    return IsRatio(sizes, 4, 3) || (sizes.srcWidth == 720 && sizes.dstWidth == 480);
}

std::string Describe(const CasePlan& plan) {
    const auto size = [](int width, int height) {
        return std::to_string(width) + "x" + std::to_string(height);
    };
    const char* maps = "";
    switch (plan.maps) {
        case MapKind::OfSizes: break;
        case MapKind::Random: maps = ", random maps"; break;
        case MapKind::EveryWeightX: maps = ", every weight across"; break;
        case MapKind::EveryWeightY: maps = ", every weight down"; break;
    }
    return size(plan.sizes.srcWidth, plan.sizes.srcHeight) + " to " +
           size(plan.sizes.dstWidth, plan.sizes.dstHeight) + maps + ", data " +
           NameOf(plan.pattern) + ", seed " + std::to_string(plan.seed);
}

}  // namespace tavo::test
