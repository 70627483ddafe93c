// The walk over the rows of scalers.

#include <climits>
#include <cstdio>
#include <map>

#include "resample/kernel_table.h"
#include "tests/kernel_check/walk.h"
#include "tests/resample/support/kernel_caller.h"

namespace tavo::test {
namespace {

// One slot with one backend.
struct Task {
    int slot;
    const ExpectedKernel* expected;
    std::string label;
};

struct BackendTasks {
    Backend backend;
    std::vector<Task> tasks;
};

std::vector<BackendTasks> PlanTasks(const ScaleRow& row, const std::string& filter) {
    std::vector<BackendTasks> plan;
    for (const Backend& backend : RunnableBackends()) {
        BackendTasks entry{backend, {}};
        for (int slot = 0; slot < kKernelSlots; ++slot) {
            const std::string label = LabelOf(row, slot, backend);
            if (!CoversSlot(backend, slot) || !Matches(label, filter)) continue;
            entry.tasks.push_back(
                {slot, &row.InSlot(slot, backend.level, backend.speedClass), label});
        }
        if (!entry.tasks.empty()) plan.push_back(entry);
    }
    return plan;
}

// Gives nulls and wrong heights for arguments that the kernels of a row may not read.
CallStyle StyleOf(const ScaleRow& row, const Sizes& sizes, unsigned turn) {
    CallStyle style{sizes.srcHeight, true, true, turn * 4 % 16};
    if (turn / 2 % 2 == 1) style.srcHeight = -sizes.srcHeight;
    const bool plain = turn % 2 == 0;
    switch (row.axis) {
        case Axis::Both:
        case Axis::Copy: break;
        case Axis::Vertical: style.withXMap = plain; break;
        case Axis::H640:
        case Axis::H720: style.withXMap = plain; [[fallthrough]];
        case Axis::Horizontal:
            style.withYMap = plain;
            if (!plain) style.srcHeight = turn / 2 % 2 == 1 ? INT_MIN : 0;
            break;
    }
    return style;
}

class CaseRun {
  public:
    CaseRun(const ScaleRow& row, const CasePlan& plan, KernelCaller& caller, Tally& tally)
        : row_(row),
          plan_(plan),
          source_(MakeSource(row.format, plan)),
          maps_(MakeMaps(plan)),
          caller_(caller),
          tally_(tally) {}

    void Run(const std::vector<BackendTasks>& plan, bool withLevels) {
        for (BufferGuard guard : {BufferGuard::kPageAfter, BufferGuard::kPageBefore}) {
            RunAtPitch(plan, guard, 0, withLevels);
        }
        // Planes are the ones whose sources pad their rows.
        if (row_.format != Format::Planar) return;
        const int padding = 1 + static_cast<int>(plan_.seed % kMostPadding);
        const BufferGuard guard =
            plan_.seed % 2 ? BufferGuard::kPageAfter : BufferGuard::kPageBefore;
        RunAtPitch(plan, guard, plan_.sizes.srcWidth + padding, withLevels);
    }

  private:
    static constexpr int kMostPadding = 17;

    void RunAtPitch(const std::vector<BackendTasks>& plan, BufferGuard guard, int pitch,
                    bool withLevels) {
        caller_.Place(source_, maps_, guard, pitch);
        guard_ = guard;
        pitch_ = pitch;
        for (const BackendTasks& entry : plan) {
            if (entry.backend.isLevel && !withLevels) continue;
            Activate(entry.backend);
            for (const Task& task : entry.tasks) Try(task);
        }
    }

    void Try(const Task& task) {
        if (!Serves(row_, *task.expected, plan_.sizes)) return;
        const ScaleKernel kernel = KernelTable[row_.row][task.slot].scale;
        if (kernel != task.expected->kernel) {
            tally_.Fail(task.label, "another kernel stands in this slot", "");
            return;
        }
        for (int sign : {1, -1}) {
            CallStyle style = StyleOf(row_, plan_.sizes, turn_++);
            if (pitch_ != 0) style.withXMap = true;
            const std::string where = Where(sign, style);
            SetCurrentTrial((task.label + ": " + where).c_str());
            const std::string wrong =
                caller_.Run(kernel, ExpectationOf(task.expected->oracle, sign),
                            plan_.sizes.dstWidth, plan_.sizes.dstHeight * sign, style);
            if (wrong.empty()) {
                tally_.Pass();
            } else {
                tally_.Fail(task.label, wrong, where);
            }
        }
    }

    std::string Where(int sign, const CallStyle& style) const {
        if (description_.empty()) description_ = Describe(plan_);
        return description_ + (sign < 0 ? ", bottom-up" : "") + ", source height passed " +
               std::to_string(style.srcHeight) +
               (pitch_ != 0 ? ", pitch " + std::to_string(pitch_) : "") +
               (style.withXMap ? "" : ", no xMap") + (style.withYMap ? "" : ", no yMap") +
               (guard_ == BufferGuard::kPageAfter ? ", guard behind" : ", guard in front");
    }

    const Expectation& ExpectationOf(Oracle oracle, int sign) {
        const auto key = std::make_pair(oracle, sign);
        const auto found = expectations_.find(key);
        if (found != expectations_.end()) return found->second;
        Canvas canvas(row_.format, plan_.sizes.dstWidth, plan_.sizes.dstHeight * sign);
        oracle(canvas, source_, maps_);
        return expectations_.emplace(key, Expectation(std::move(canvas))).first->second;
    }

    const ScaleRow& row_;
    const CasePlan& plan_;
    const Source source_;
    const Maps maps_;
    KernelCaller& caller_;
    Tally& tally_;
    BufferGuard guard_ = BufferGuard::kPageAfter;
    int pitch_ = 0;
    unsigned turn_ = 0;
    mutable std::string description_;
    std::map<std::pair<Oracle, int>, Expectation> expectations_;
};

}  // namespace

void WalkScaleRow(const ScaleRow& row, const WalkOptions& options, Tally& tally) {
    const std::vector<BackendTasks> tasks = PlanTasks(row, options.filter);
    if (tasks.empty()) return;
    const Tally before = tally;
    std::vector<CasePlan> cases = PlanCases(row, options.effort);
    KeepShare(cases, options.effort, static_cast<size_t>(row.row));
    KernelCaller caller;
    // Levels choose among kernels that each instruction set is tried with in full.
    const size_t share = options.effort.quick ? 60 : 16;
    size_t turn = 0;
    for (const CasePlan& plan : cases) {
        CaseRun(row, plan, caller, tally).Run(tasks, turn++ % share == 0);
    }
    const uint64_t passed = tally.Passed() - before.Passed();
    const uint64_t failed = tally.Failed() - before.Failed();
    std::printf("row %2d %s %s: %zu cases, %zu backends, %llu comparisons, %llu failed\n", row.row,
                NameOf(row.format), NameOf(row.axis), cases.size(), tasks.size(),
                static_cast<unsigned long long>(passed + failed),
                static_cast<unsigned long long>(failed));
    std::fflush(stdout);
}

}  // namespace tavo::test
