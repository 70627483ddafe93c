// Without libFuzzer: every target gets its corpus, then inputs that are changed at random from it,
// always the same ones. What breaks a promise is left in a file. With names of files as arguments,
// a target gets those instead:
//
//   fuzz_replay_test --gtest_filter='*Conversion' FILE...
#include <gtest/gtest.h>
#include <sanitizer/common_interface_defs.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "tests/fuzz/targets.h"
#include "tests/support/rounds.h"

namespace tavo_test {
namespace {

using Bytes = std::vector<uint8_t>;

struct FuzzTarget {
    const char* name;
    void (*run)(FuzzBytes bytes);
    size_t mostBytes;
    int inputs;  // about a second's worth under the sanitizers
};

constexpr FuzzTarget kTargets[] = {
    {"AviReader", FuzzAviReader, 4096, 10'000}, {"AxisMap", FuzzAxisMap, 20, 10'000},
    {"Conversion", FuzzConversion, 32, 1'000},  {"MediaProbe", FuzzMediaProbe, 1024, 10'000},
    {"MediaType", FuzzMediaType, 280, 50'000},  {"Options", FuzzOptions, 256, 20'000},
    {"Regulator", FuzzRegulator, 512, 10'000},
};

void PrintTo(const FuzzTarget& target, std::ostream* out) { *out << target.name; }

// Names of files from the command line.
std::vector<std::string> files;

struct Trial {
    const char* target = "";
    const Bytes* input = nullptr;
};
Trial trial;

// The process ends here: nothing but the file counts.
void SaveTrial() {
    if (!trial.input) return;
    const std::string name = std::string("crash-") + trial.target;
    std::ofstream file(name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(trial.input->data()),
               static_cast<std::streamsize>(trial.input->size()));
    std::fprintf(stderr, "%s has this input: run it by --gtest_filter='*%s' %s\n", name.c_str(),
                 trial.target, name.c_str());
    trial.input = nullptr;
}

void SaveAtAbort(int) { SaveTrial(); }

Bytes ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<Bytes> CorpusOf(const FuzzTarget& target) {
    const char* const folder = std::getenv("TAVO_FUZZ_CORPUS");
    if (!folder) return {};
    std::vector<std::filesystem::path> paths;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(folder) / target.name)) {
        paths.push_back(entry.path());
    }
    std::ranges::sort(paths);  // the order of a folder is not always the same
    std::vector<Bytes> corpus;
    for (const auto& path : paths) corpus.push_back(ReadFile(path));
    return corpus;
}

class Mutator {
  public:
    explicit Mutator(uint32_t seed) : random_(seed) {}

    // One to five changes of an input of the corpus.
    Bytes Next(const std::vector<Bytes>& corpus, size_t mostBytes) {
        Bytes bytes = corpus[Below(corpus.size())];
        for (size_t changes = 1 + Below(5); changes > 0; --changes) {
            if (bytes.empty()) bytes.push_back(Byte());
            Change(bytes, corpus);
        }
        if (bytes.size() > mostBytes) bytes.resize(mostBytes);
        return bytes;
    }

  private:
    size_t Below(size_t end) { return random_() % end; }
    uint8_t Byte() { return static_cast<uint8_t>(random_() >> 7); }
    Bytes::iterator Somewhere(Bytes& bytes) {
        return bytes.begin() + static_cast<ptrdiff_t>(Below(bytes.size()));
    }

    void Change(Bytes& bytes, const std::vector<Bytes>& corpus) {
        switch (Below(7)) {
            case 0: *Somewhere(bytes) ^= static_cast<uint8_t>(1 << Below(8)); break;
            case 1: *Somewhere(bytes) = Byte(); break;
            case 2: *Somewhere(bytes) += Below(2) ? 1 : 255; break;
            case 3: bytes.insert(Somewhere(bytes), Byte()); break;
            case 4: Erase(bytes); break;
            case 5: PutNumber(bytes); break;
            case 6: Splice(bytes, corpus[Below(corpus.size())]); break;
        }
    }

    void Erase(Bytes& bytes) {
        const auto from = Somewhere(bytes);
        const auto left = static_cast<size_t>(bytes.end() - from);
        bytes.erase(from, from + static_cast<ptrdiff_t>(1 + Below(std::min<size_t>(left, 8))));
    }

    // Four bytes that arithmetic may stumble over.
    void PutNumber(Bytes& bytes) {
        constexpr uint32_t kNumbers[] = {0,          1,          0x7f,      0xff,
                                         0x7fff,     0xffff,     0x10000,   0x7fffffff,
                                         0x80000000, 0xffffffff, 0xfffffff8};
        uint32_t number = kNumbers[Below(std::size(kNumbers))];
        for (auto at = Somewhere(bytes); at != bytes.end() && number != 0; ++at) {
            *at = static_cast<uint8_t>(number);
            number >>= 8;
        }
    }

    void Splice(Bytes& bytes, const Bytes& other) {
        if (other.empty()) return;
        const size_t from = Below(other.size());
        const size_t count = 1 + Below(other.size() - from);
        bytes.insert(Somewhere(bytes), other.begin() + static_cast<ptrdiff_t>(from),
                     other.begin() + static_cast<ptrdiff_t>(from + count));
    }

    std::minstd_rand random_;
};

void RunTarget(const FuzzTarget& target, const Bytes& bytes) {
    // Of exactly these bytes, so that the sanitizer sees an access beyond them.
    const Bytes exact(bytes);
    trial = {target.name, &exact};
    target.run(exact);
    trial.input = nullptr;
}

class FuzzReplayTest : public testing::TestWithParam<FuzzTarget> {};

TEST_P(FuzzReplayTest, KeepsItsPromises) {
    const FuzzTarget& target = GetParam();
    if (!files.empty()) {
        for (const std::string& file : files) RunTarget(target, ReadFile(file));
        return;
    }
    std::vector<Bytes> corpus = CorpusOf(target);
    ASSERT_FALSE(corpus.empty()) << "TAVO_FUZZ_CORPUS must name the folder tests/fuzz/corpus";
    for (const Bytes& bytes : corpus) RunTarget(target, bytes);
    Mutator mutator(1);
    const int inputs = Rounds(target.inputs);
    for (int i = 0; i < inputs; ++i) RunTarget(target, mutator.Next(corpus, target.mostBytes));
}

INSTANTIATE_TEST_SUITE_P(, FuzzReplayTest, testing::ValuesIn(kTargets),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tavo_test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    tavo_test::files.assign(argv + 1, argv + argc);
    std::signal(SIGABRT, tavo_test::SaveAtAbort);
    __sanitizer_set_death_callback(tavo_test::SaveTrial);
    return RUN_ALL_TESTS();
}
