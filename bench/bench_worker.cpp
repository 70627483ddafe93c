// Times the kernels of its own build for a program of another build. Lines on the standard input:
//   FAMILY METHOD WIDTHxHEIGHT WIDTHxHEIGHT [set=NAME]   selects the work; answers "ready"
//   round                                                answers nanoseconds per call of one round
//   cold round                                           the same with pictures that are in no
//   cache operations                                           answers what AUTO runs on here:
//   "AVX2"
// for instance "RGB24 bilinear 1920x1080 1280x720 set=ssse3". What cannot be done is answered with
// "error" and a reason.

#include <cstdio>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>

#include "bench/scaling.h"
#include "bench/stopwatch.h"
#include "bench/workloads.h"
#include "cpu/cpu_level.h"
#include "resample/kernel_table.h"
#include "resample/row_ops/instruction_sets.h"

namespace tavo::bench {
namespace {

// Gives the reason where it fails, otherwise nothing.
std::string ForceSet(const std::string& name) {
    if (name == "auto") {
        FillKernelTable();
        return {};
    }
    std::string keys;
    for (const InstructionSetInfo& info : InstructionSets()) {
        keys += std::string(" ") + info.key;
        if (name != info.key) continue;
        if (!info.canRun()) return "this processor cannot run " + name;
        FillKernelTable(info.cpuLevel, 0);
        ChooseRowOps(info.set);
        return {};
    }
    return "there is no instruction set " + name + ", only auto" + keys;
}

bool ReadSize(std::istream& in, int32_t& width, int32_t& height) {
    char by = 0;
    return (in >> width >> by >> height) && by == 'x' && width > 0 && height > 0;
}

std::optional<Case> ReadCase(std::istream& in) {
    std::string family, method;
    Sizes sizes{};
    if (!(in >> family >> method) || !ReadSize(in, sizes.srcWidth, sizes.srcHeight) ||
        !ReadSize(in, sizes.dstWidth, sizes.dstHeight)) {
        return std::nullopt;
    }
    for (const FamilyInfo& info : kFamilies) {
        if (family != info.name) continue;
        for (const Method known : {Method::Bilinear, Method::Nearest, Method::Copy}) {
            if (method == NameOf(known)) return Case{info.family, known, sizes};
        }
    }
    return std::nullopt;
}

KernelSlot SlotOf(Method method) { return method == Method::Nearest ? SlotNearestAuto : SlotAuto; }

class Kernel {
  public:
    explicit Kernel(const Case& work) : scaling_(work.Info(), work.sizes) {
        entry_ = KernelTable[scaling_.Row()][SlotOf(work.method)];
    }

    bool IsReady() const { return scaling_.IsReady(); }
    void operator()() const { scaling_.Run(entry_); }

  private:
    Scaling scaling_;
    KernelEntry entry_;
};

class Worker {
  public:
    std::string Answer(const std::string& line) {
        if (line == "operations") return InstructionSetName(WidestSet(GetCpuLevel()));
        const bool isCold = line == "cold round";
        if (line != "round" && !isCold) return Select(line);
        if (!stopwatch_) return "error nothing is selected";
        char text[32];
        std::snprintf(text, sizeof text, "%.1f",
                      stopwatch_->Round(isCold ? Caches::Cold : Caches::Hot));
        return text;
    }

  private:
    std::string Select(const std::string& line) {
        stopwatch_.reset();
        std::istringstream in(line);
        const std::optional<Case> work = ReadCase(in);
        if (!work) return "error this is no work: " + line;
        std::string option;
        in >> option;
        if (!option.empty() && option.rfind("set=", 0) != 0) return "error no option: " + option;
        const std::string failure = ForceSet(option.empty() ? "auto" : option.substr(4));
        if (!failure.empty()) return "error " + failure;
        Kernel kernel(*work);
        if (!kernel.IsReady()) return "error out of memory";
        stopwatch_.emplace(std::move(kernel));
        return "ready";
    }

    std::optional<Stopwatch<Kernel>> stopwatch_;
};

}  // namespace
}  // namespace tavo::bench

int main() {
    tavo::bench::Worker worker;
    for (std::string line; std::getline(std::cin, line);) {
        std::cout << worker.Answer(line) << std::endl;
    }
    return 0;
}
