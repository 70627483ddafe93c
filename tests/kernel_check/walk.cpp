// What the walks over scalers and copies share, and the walk over copies.

#include "tests/kernel_check/walk.h"

#include <cstdio>

#include "resample/kernel_table.h"
#include "tests/resample/support/kernel_caller.h"

namespace tavo::test {

void Tally::Fail(const std::string& label, const std::string& what, const std::string& where) {
    constexpr int kShown = 2;
    ++failed_;
    ofLabel_ = label == lastLabel_ ? ofLabel_ + 1 : 1;
    lastLabel_ = label;
    if (ofLabel_ <= kShown) {
        std::printf("FAILED %s\n    %s\n    %s\n", label.c_str(), where.c_str(), what.c_str());
        std::fflush(stdout);
    }
}

bool Matches(const std::string& label, const std::string& filter) {
    return filter.empty() || label.find(filter) != std::string::npos;
}

bool CoversSlot(const Backend& backend, int slot) {
    return backend.isLevel || (slot >= 3 && slot != 5);
}

std::string LabelOf(const ScaleRow& row, int slot, const Backend& backend) {
    const char* kernel = row.InSlot(slot, backend.level, backend.speedClass).name;
    return "row " + std::to_string(row.row) + " " + NameOf(row.format) + " " + NameOf(row.axis) +
           " slot " + std::to_string(slot) + " " + kernel + ", " + backend.name;
}

std::string LabelOf(const CopyRow& row, int slot, const Backend& backend) {
    return "row " + std::to_string(row.row) + " " + NameOf(row.formats[0]) + " Copy slot " +
           std::to_string(slot) + " " + row.InSlot(slot, backend.level).name + ", " + backend.name;
}

namespace {

struct CopyCase {
    Format format;
    int width;
    int height;
    uint64_t seed;
};

std::vector<CopyCase> PlanCopies(const CopyRow& row, const Effort& effort) {
    std::vector<CopyCase> cases;
    uint64_t seed = effort.seed * 1000003;
    for (Format format : row.formats) {
        for (int width = 1; width <= 40; ++width) {
            for (int height : {1, 2, 3, 8}) cases.push_back({format, width, height, ++seed});
        }
        for (int width : {63, 64, 65, 333, 352, 353, 640, 719, 720, 1279, 1280, 1920}) {
            cases.push_back({format, width, 7, ++seed});
        }
        cases.push_back({format, 0, 3, ++seed});
        cases.push_back({format, 16, 0, ++seed});
    }
    return cases;
}

// Blocks reach as far beyond the last source row as beyond the last destination row.
constexpr size_t kBlock = 8;

// Every slot of one case.
class CopyCaseRun {
  public:
    CopyCaseRun(const CopyRow& row, const CopyCase& plan, KernelCaller& caller, Tally& tally)
        : row_(row), plan_(plan), caller_(caller), tally_(tally) {
        const size_t picture = static_cast<size_t>(StrideOf(plan.format, plan.width)) *
                               static_cast<size_t>(plan.height);
        bytes_ = MakeBytes(Pattern::Random, static_cast<int32_t>(picture + kBlock), 1, plan.seed);
    }

    void Run(const Backend& backend, const std::string& filter) {
        Activate(backend);
        for (int slot = 0; slot < kKernelSlots; ++slot) {
            const std::string label = LabelOf(row_, slot, backend);
            if (!CoversSlot(backend, slot) || !Matches(label, filter)) continue;
            const ExpectedCopy& expected = row_.InSlot(slot, backend.level);
            if (KernelTable[row_.row][slot].copy != expected.kernel) {
                tally_.Fail(label, "another kernel stands in this slot", "");
                continue;
            }
            for (int sign : {1, -1}) {
                for (BufferGuard guard : {BufferGuard::kPageAfter, BufferGuard::kPageBefore}) {
                    Try(expected, sign, guard, label);
                }
            }
        }
    }

  private:
    void Try(const ExpectedCopy& expected, int sign, BufferGuard guard, const std::string& label) {
        const std::string where =
            std::string(NameOf(plan_.format)) + " " + std::to_string(plan_.width) + "x" +
            std::to_string(plan_.height * sign) + ", seed " + std::to_string(plan_.seed) +
            (guard == BufferGuard::kPageAfter ? ", guard behind" : ", guard in front");
        SetCurrentTrial((label + ": " + where).c_str());
        Source source{plan_.format, plan_.width, plan_.height, bytes_};
        Canvas canvas(plan_.format, plan_.width, plan_.height * sign);
        const Maps none;
        expected.oracle(canvas, source, none);
        source.bytes.resize(canvas.Size());
        caller_.Place(source, none, guard);
        turn_ = (turn_ + 4) % 16;
        const std::string wrong =
            caller_.Run(expected.kernel, Expectation(canvas), plan_.width, plan_.height * sign,
                        BytesPerPixel(plan_.format) * 8, turn_);
        if (wrong.empty()) {
            tally_.Pass();
        } else {
            tally_.Fail(label, wrong, where);
        }
    }

    const CopyRow& row_;
    const CopyCase& plan_;
    KernelCaller& caller_;
    Tally& tally_;
    std::vector<uint8_t> bytes_;
    unsigned turn_ = 0;
};

}  // namespace

void WalkCopyRow(const CopyRow& row, const WalkOptions& options, Tally& tally) {
    const Tally before = tally;
    std::vector<CopyCase> cases = PlanCopies(row, options.effort);
    KeepShare(cases, options.effort, static_cast<size_t>(row.row));
    const std::vector<Backend> backends = RunnableBackends();
    KernelCaller caller;
    size_t turn = 0;
    for (const CopyCase& plan : cases) {
        CopyCaseRun run(row, plan, caller, tally);
        const bool withLevels = turn++ % (options.effort.quick ? 40 : 8) == 0;
        for (const Backend& backend : backends) {
            if (backend.isLevel && !withLevels) continue;
            run.Run(backend, options.filter);
        }
    }
    const uint64_t passed = tally.Passed() - before.Passed();
    const uint64_t failed = tally.Failed() - before.Failed();
    if (passed + failed == 0) return;
    std::printf("row %2d Copy: %zu cases, %zu backends, %llu comparisons, %llu failed\n", row.row,
                cases.size(), backends.size(), static_cast<unsigned long long>(passed + failed),
                static_cast<unsigned long long>(failed));
    std::fflush(stdout);
}

}  // namespace tavo::test
