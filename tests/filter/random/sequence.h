// One filter of the module, and a random sequence of calls on it. After each call what must hold is
// looked at; at the end all is released, and nothing may be left.
//
//   Sequence sequence(seed, imports, false);
//   sequence.Run(60);
//
// The acts are in acts_*.cpp; each makes its calls through Call.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/filter/random/dice.h"
#include "tests/filter/random/hand_graph.h"
#include "tests/filter/support/failing_imports.h"
#include "tests/filter/support/pictures.h"
#include "tests/pages/support/page_frame.h"
#include "tests/support/hand_clock.h"

namespace tavo_test {

// What a call may change that it need not, or although it fails.
enum Effect : unsigned {
    kNoEffect = 0,
    kMaySettleSize = 1,         // the output size, as types are negotiated
    kMayChangeSettings = 2,     // any
    kMayChangeConnections = 4,  // peers and types, although it fails
};

// All that can be asked of the filter.
struct Snapshot {
    FILTER_STATE state = State_Stopped;
    IPin* inputPeer = nullptr;  // not counted
    IPin* outputPeer = nullptr;
    MediaType inputType;
    MediaType outputType;
    int width = 0;
    int height = 0;
    int method = 0;
    int format = 0;
    int type = 0;
    double frameRate = 0;
    IReferenceClock* clock = nullptr;
    IFilterGraph* graph = nullptr;
    std::wstring name;
};

class Sequence {
  public:
    Sequence(unsigned seed, FailingImports& imports, bool isTraced);
    ~Sequence();
    Sequence(const Sequence&) = delete;
    Sequence& operator=(const Sequence&) = delete;

    // Ends early where something is wrong.
    void Run(int acts);

    struct Totals {
        long sequences = 0;
        long calls = 0;
        long callsRefused = 0;  // in which the platform refused something
        long samples = 0;       // that reached the sink
        long pages = 0;         // that were opened
        long connections = 0;   // of the output
    };
    static Totals totals;

    // For the acts.
    template <typename Function>
    HRESULT Call(const char* name, std::initializer_list<HRESULT> allowed, Function function,
                 unsigned effects = kNoEffect) {
        BeginCall(name);
        HRESULT result = E_PENDING;
        int refused = 0;
        if (dice.OneIn(5)) {
            const int served = dice.Below(dice.Below(20) + 1);
            const Refuse refuse = dice.OneIn(2) ? Refuse::OnlyNext : Refuse::AllLater;
            const FailingImports::Window window(imports_, served, refuse);
            result = function();
            refused = window.refused();
        } else {
            result = function();
        }
        EndCall(name, result, refused, {allowed.begin(), allowed.size()}, effects);
        return result;
    }
    // Of something that must hold.
    void Check(bool holds, const std::string& what);
    void Note(const std::string& text);
    // In the last call.
    bool WasRefused() const { return wasRefused_; }
    // Some of the other filters' next calls fail.
    bool PeersFail() const { return peersFail_; }
    MediaType AnyType();
    const PixelFormat& OneFormat();
    // The longest that a window of time may be without thousands of frames in it.
    REFERENCE_TIME LongestWindow() const;

    Dice dice;
    ComPtr<TestSource> source;
    ComPtr<TestSink> sink;
    ComPtr<IBaseFilter> filter;
    ComPtr<IVantrelSettings> settings;
    ComPtr<IPin> input;
    ComPtr<IPin> output;
    HandClock clock;
    HandGraph graph;
    std::vector<std::unique_ptr<PageFrame>> pages;
    Snapshot expected;  // as far as the calls so far settle it
    int locks = 0;      // of the server
    bool peersFail_ = false;

  private:
    void BeginCall(const char* name);
    void EndCall(const char* name, HRESULT result, int refused, std::span<const HRESULT> allowed,
                 unsigned effects);
    void CheckUnchanged(const Snapshot& now, unsigned effects);
    void CheckExpected(const Snapshot& now);
    Snapshot TakeSnapshot();
    void LetPeersWork();
    void Unlock();

    const unsigned seed_;
    FailingImports& imports_;
    const bool isTraced_;
    int act_ = 0;
    const char* actName_ = "";
    bool wasRefused_ = false;
    bool isWrong_ = false;
    Snapshot before_;
    std::vector<std::string> log_;
};

struct Act {
    const char* name;
    int weight;
    void (*run)(Sequence&);
};

std::span<const Act> SettingsActs();
std::span<const Act> NegotiationActs();
std::span<const Act> StreamActs();
std::span<const Act> ObjectActs();
std::span<const Act> PageActs();

}  // namespace tavo_test
