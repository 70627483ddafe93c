// Measures the kernels of the 64-bit and the 32-bit build beside other libraries and beside the
// memory limit, all in one run.

#include <sched.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>

#include "bench/compare/measure.h"
#include "bench/compare/reports.h"

namespace tavo::bench {
namespace {

constexpr const char* kUsage =
    "compare [--worker32 FILE] [--filter TEXT]... [--rounds N] [--set NAME] [--no-peers]\n"
    "        [--costs] [--json FILE] [--svg FILE] [--list]\n"
    "  --worker32   bench_worker of a 32-bit build, to be measured too\n"
    "  --filter     only cases whose description holds every TEXT, for instance\n"
    "               --filter RGB24 --filter bilinear --filter '> 1280x720'\n"
    "  --rounds     rounds for each contestant (25)\n"
    "  --set        holds our kernels to one instruction set, for instance portable\n"
    "               or avx2 (auto); an unknown NAME is answered with all of them\n"
    "  --no-peers   only our kernels and the memory limit\n"
    "  --costs      what frames cost, although only some cases are chosen\n"
    "  --list       prints the descriptions of the cases\n";

struct Options {
    std::string worker64 =
        (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "bench_worker").string();
    std::string worker32, set = "auto", json, svg;
    std::vector<std::string> filters;
    int rounds = 25;
    bool hasNoPeers = false;
    bool hasCosts = false;
    bool listsOnly = false;
};

Options Parse(int argc, char** argv) {
    Options options;
    const std::map<std::string, std::string*> texts = {{"--worker32", &options.worker32},
                                                       {"--set", &options.set},
                                                       {"--json", &options.json},
                                                       {"--svg", &options.svg}};
    const std::map<std::string, bool*> switches = {{"--no-peers", &options.hasNoPeers},
                                                   {"--costs", &options.hasCosts},
                                                   {"--list", &options.listsOnly}};
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        const auto value = [&] {
            if (i + 1 == argc) throw std::runtime_error(name + " needs a value");
            return std::string(argv[++i]);
        };
        if (texts.contains(name)) {
            *texts.at(name) = value();
        } else if (switches.contains(name)) {
            *switches.at(name) = true;
        } else if (name == "--filter") {
            options.filters.push_back(value());
        } else if (name == "--rounds") {
            options.rounds = std::atoi(value().c_str());
        } else {
            throw std::runtime_error(kUsage);
        }
    }
    if (options.rounds < 1) throw std::runtime_error("--rounds needs a number above 0");
    return options;
}

std::vector<Case> ChosenCases(const Options& options) {
    std::vector<Case> cases;
    for (const Case& work : AllCases()) {
        const std::string text = TextOf(work);
        bool isChosen = true;
        for (const std::string& filter : options.filters) {
            isChosen = isChosen && text.find(filter) != std::string::npos;
        }
        if (isChosen) cases.push_back(work);
    }
    return cases;
}

std::vector<OwnContestant> OwnContestants(const Options& options) {
    std::vector<OwnContestant> own;
    const auto add = [&own](Build build, const std::string& set, const std::string& program) {
        own.push_back({build, set, std::make_unique<Worker>(program)});
    };
    const bool has32 = !options.worker32.empty();
    add(Build64, options.set, options.worker64);
    if (has32) add(Build32, options.set, options.worker32);
    if (options.set == "auto") {
        add(Avx2Build64, "avx2", options.worker64);
        add(Ssse3Build64, "ssse3", options.worker64);
        if (has32) add(Avx2Build32, "avx2", options.worker32);
        if (has32) add(Ssse3Build32, "ssse3", options.worker32);
    }
    return own;
}

// All contestants, the workers too, take turns on one core: cores differ by what else they do.
void StayOnThisCore() {
    cpu_set_t core;
    CPU_ZERO(&core);
    CPU_SET(sched_getcpu(), &core);
    sched_setaffinity(0, sizeof core, &core);
}

std::string ProcessorName() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
    }
    return "unknown processor";
}

void Write(const std::string& path, const std::string& text) {
    if (path.empty()) return;
    std::ofstream file(path);
    file << text;
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

int Main(int argc, char** argv) {
    const Options options = Parse(argc, argv);
    const std::vector<Case> cases = ChosenCases(options);
    if (options.listsOnly) {
        for (const Case& work : cases) std::puts(TextOf(work).c_str());
        return 0;
    }
    if (cases.empty()) throw std::runtime_error("no case holds all of these texts; see --list");
    StayOnThisCore();
    const std::vector<Peer> peers = options.hasNoPeers ? std::vector<Peer>{} : FoundPeers();
    const std::vector<OwnContestant> own = OwnContestants(options);
    Run run;
    run.processor = ProcessorName();
    run.operations = options.set == "auto" ? own.front().worker->Ask("operations") : options.set;
    run.rounds = options.rounds;
    for (const Peer& peer : peers) run.peerNames.push_back(peer.name + (' ' + peer.version));
    const bool showsProgress = isatty(STDERR_FILENO);
    for (const Case& work : cases) {
        if (showsProgress) {
            std::fprintf(stderr, "\r\033[K%zu of %zu: %s", run.cold.cases.size() + 1, cases.size(),
                         TextOf(work).c_str());
        }
        Measure(run, work, own, peers);
    }
    if (options.filters.empty() || options.hasCosts) {
        if (showsProgress) std::fputs("\r\033[KWhat frames cost", stderr);
        run.costs = MeasureCosts(own, run.rounds);
    }
    if (showsProgress) std::fputs("\r\033[K", stderr);
    std::fputs(TextReport(run).c_str(), stdout);
    Write(options.json, JsonReport(run));
    Write(options.svg, SvgChart(run));
    return 0;
}

}  // namespace
}  // namespace tavo::bench

int main(int argc, char** argv) {
    try {
        return tavo::bench::Main(argc, argv);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
