// The loop over the acts, and what is looked at after each call.
#include "tests/filter/random/sequence.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "tests/filter/random/step_watch.h"
#include "tests/filter/support/mutated_types.h"
#include "tests/support/graph.h"

namespace tavo_test {

namespace {

// Of the calls that led to a failure.
constexpr size_t kShownCalls = 40;

// Also by what it says of its size, which allocators take for granted.
bool IsModest(const MediaType& type) {
    constexpr DWORD kMost = 4 << 20;
    return IsSmall(type) && type->lSampleSize < kMost && type.Bitmap()->biSizeImage < kMost;
}

SinkConfig AnySink(Dice& dice) {
    SinkConfig config;
    config.accept = [](const AM_MEDIA_TYPE& type) { return IsModest(MediaType(type)); };
    config.allocator = dice.Of(
        {SinkAllocator::kNone, SinkAllocator::kOwn, SinkAllocator::kOwn, SinkAllocator::kPlatform});
    config.ownAllocator.sample2 = !dice.OneIn(4);
    if (dice.OneIn(3)) config.ownAllocator.guard = BufferGuard::kPageAfter;
    if (dice.OneIn(8)) config.ownAllocator.sizeChange = dice.Of({-1L, 7L, 4096L});
    config.typeChangeWhileConnected = dice.OneIn(2);
    config.keepBytes = false;
    return config;
}

SourceConfig AnySource(Dice& dice) {
    SourceConfig config;
    config.choice = dice.Of(
        {AllocatorChoice::kPeerThenOwn, AllocatorChoice::kOwnOnly, AllocatorChoice::kPlatformOnly});
    config.wish = {dice.Below(3) + 1, 0, 1, 0};
    config.allocator.sample2 = !dice.OneIn(4);
    config.seeking = dice.OneIn(2);
    return config;
}

bool SameNumber(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

}  // namespace

Sequence::Totals Sequence::totals;

Sequence::Sequence(unsigned seed, FailingImports& imports, bool isTraced)
    : dice(seed), seed_(seed), imports_(imports), isTraced_(isTraced) {
    source = TestSource::Create(AnySource(dice));
    sink = TestSink::Create(AnySink(dice));
    sink->pin().config.onReceive = [this](IMediaSample* sample) {
        ++totals.samples;
        const long length = sample->GetActualDataLength();
        Check(length >= 0 && length <= sample->GetSize(), "the sample states its length");
        return S_OK;
    };
    filter = CreateFilter();
    settings = filter.As<IVantrelSettings>(IID_IVantrelSettings);
    input = GetPin(filter.Get(), PINDIR_INPUT);
    output = GetPin(filter.Get(), PINDIR_OUTPUT);
    expected = TakeSnapshot();
    ++totals.sequences;
}

Sequence::~Sequence() {
    sink->pin().config.onReceive = nullptr;
    LetPeersWork();
    sink->Stop();
    filter->Stop();
    source->Stop();
    for (auto& page : pages) {
        if (page->Dialog()) page->Close();
    }
    pages.clear();
    source->pin().Disconnect();
    input->Disconnect();
    output->Disconnect();
    sink->pin().Disconnect();
    for (; locks > 0; --locks) Check(TheModule().CanUnloadNow() == S_FALSE, "locked"), Unlock();
    filter->SetSyncSource(nullptr);
    if (dice.OneIn(2)) filter->JoinFilterGraph(nullptr, nullptr);
    input.Reset();
    output.Reset();
    settings.Reset();
    filter.Reset();
    Pump();
    Check(TheModule().CanUnloadNow() == S_OK, "objects of the module are left");
    Check(imports_.Held().empty(), "the module holds " + imports_.Held());
    Check(clock.references == 1, "the clock is held");
    Check(graph.references == 1, "the graph is held");
    Check(source->references() == 1, "the source is held");
    Check(sink->references() == 1, "the sink is held");
}

void Sequence::Unlock() {
    ComPtr<IClassFactory> factory;
    TheModule().GetClassObject(CLSID_VantrelFilter, IID_IClassFactory, factory.PutVoid());
    factory->LockServer(FALSE);
}

void Sequence::Run(int acts) {
    std::vector<Act> all;
    const auto add = [&all](std::span<const Act> some) {
        all.insert(all.end(), some.begin(), some.end());
    };
    add(SettingsActs());
    add(NegotiationActs());
    add(StreamActs());
    add(ObjectActs());
    if (dice.OneIn(4)) add(PageActs());
    int weights = 0;
    for (const Act& act : all) weights += act.weight;
    for (act_ = 0; act_ < acts && !isWrong_; ++act_) {
        int left = dice.Below(weights);
        size_t i = 0;
        while ((left -= all[i].weight) >= 0) ++i;
        actName_ = all[i].name;
        StepWatch::Step(seed_, act_, actName_);
        all[i].run(*this);
        if (PeersFail() && dice.OneIn(3)) LetPeersWork();
        sink->pin().ClearSamples();
    }
}

void Sequence::LetPeersWork() {
    sink->pin().calls().ClearInjections();
    source->pin().calls().ClearInjections();
    if (sink->pin().config.allocator == SinkAllocator::kOwn) {
        sink->pin().ownAllocator()->calls().ClearInjections();
    }
    peersFail_ = false;
}

void Sequence::Note(const std::string& text) {
    log_.push_back(std::to_string(act_) + " " + actName_ + ": " + text);
    if (isTraced_) {
        std::printf("  %s\n", log_.back().c_str());
        std::fflush(stdout);
    }
}

void Sequence::Check(bool holds, const std::string& what) {
    if (holds || isWrong_) return;
    isWrong_ = true;
    std::string calls;
    const size_t first = log_.size() > kShownCalls ? log_.size() - kShownCalls : 0;
    for (size_t i = first; i < log_.size(); ++i) calls += "  " + log_[i] + "\n";
    ADD_FAILURE() << "TAVO_SEED=" << seed_ << ", act " << act_ << " " << actName_ << ": " << what
                  << "\nThe calls before:\n"
                  << calls;
}

void Sequence::BeginCall(const char* name) {
    if (isTraced_) {
        std::printf("  %d %s: %s ...\n", act_, actName_, name);
        std::fflush(stdout);
    }
    before_ = TakeSnapshot();
}

void Sequence::EndCall(const char* name, HRESULT result, int refused,
                       std::span<const HRESULT> allowed, unsigned effects) {
    ++totals.calls;
    totals.callsRefused += refused > 0;
    wasRefused_ = refused > 0;
    char text[160];
    std::snprintf(text, sizeof text, "%s gave %08lx%s", name, static_cast<unsigned long>(result),
                  refused ? ", with something refused" : "");
    Note(text);
    const bool isAllowed = std::find(allowed.begin(), allowed.end(), result) != allowed.end();
    Check(isAllowed || PeersFail() || (refused && FAILED(result)), text);

    const Snapshot now = TakeSnapshot();
    if (FAILED(result)) CheckUnchanged(now, effects);
    if (effects & kMaySettleSize) {
        expected.width = now.width;
        expected.height = now.height;
    }
    if (effects & kMayChangeSettings) {
        expected.width = now.width;
        expected.height = now.height;
        expected.method = now.method;
        expected.format = now.format;
        expected.type = now.type;
        expected.frameRate = now.frameRate;
    }
    CheckExpected(now);
}

// After a call that failed.
void Sequence::CheckUnchanged(const Snapshot& now, unsigned effects) {
    Check(now.state == before_.state, "a refused call changes the state");
    if (effects & kMayChangeConnections) return;
    Check(now.inputPeer == before_.inputPeer, "a refused call changes the input's connection");
    Check(now.outputPeer == before_.outputPeer, "a refused call changes the output's connection");
    Check(now.inputType == before_.inputType, "a refused call changes the input's type");
    Check(now.outputType == before_.outputType, "a refused call changes the output's type");
}

void Sequence::CheckExpected(const Snapshot& now) {
    Check(now.state == expected.state, "the state is " + std::to_string(now.state));
    Check(now.width == expected.width && now.height == expected.height,
          "the size is " + std::to_string(now.width) + "x" + std::to_string(now.height));
    Check(now.method == expected.method, "the method is " + std::to_string(now.method));
    Check(now.format == expected.format, "the format is " + std::to_string(now.format));
    Check(now.type == expected.type, "the type is " + std::to_string(now.type));
    Check(SameNumber(now.frameRate, expected.frameRate),
          "the frame rate is " + std::to_string(now.frameRate));
    Check(now.clock == expected.clock, "the clock is another one");
    Check(now.graph == expected.graph, "the graph is another one");
    Check(now.name == expected.name, "the name is another one");
    Check(!now.inputPeer || now.inputPeer == &source->pin(), "nobody else's input");
    if (now.state == State_Stopped) {
        Check(imports_.Held("timeBeginPeriod") == 0, "a stopped filter holds the timer's period");
    }
}

Snapshot Sequence::TakeSnapshot() {
    Snapshot now;
    Check(filter->GetState(0, &now.state) == S_OK, "GetState");
    const auto lookAt = [this](IPin* pin, IPin** peer, MediaType* type) {
        ComPtr<IPin> connected;
        const HRESULT found = pin->ConnectedTo(connected.Put());
        Check(found == (connected ? S_OK : VFW_E_NOT_CONNECTED), "ConnectedTo");
        const HRESULT typed = pin->ConnectionMediaType(type->Put());
        Check(typed == found, "ConnectionMediaType");
        Check(!connected || ((*type)->majortype == MEDIATYPE_Video && (*type)->pbFormat),
              "the connection's type");
        *peer = connected.Get();
    };
    lookAt(input.Get(), &now.inputPeer, &now.inputType);
    lookAt(output.Get(), &now.outputPeer, &now.outputType);
    settings->GetOutputSize(&now.width, &now.height);
    settings->GetScaleMethod(&now.method);
    settings->GetOutputFormat(&now.format);
    settings->GetVideoType(&now.type);
    settings->GetFrameRate(&now.frameRate);
    double figure = -1.0;
    settings->GetModuleTime(&figure);
    Check(figure >= 0.0 && std::isfinite(figure), "the module time");
    settings->GetSystemFps(&figure);
    Check(figure >= 0.0 && std::isfinite(figure), "the system's frames");
    settings->GetGenerateFps(&figure);
    Check(figure >= 0.0 && std::isfinite(figure), "the generated frames");
    ComPtr<IReferenceClock> present;
    Check(filter->GetSyncSource(present.Put()) == S_OK, "GetSyncSource");
    now.clock = present.Get();
    FILTER_INFO info = {};
    Check(filter->QueryFilterInfo(&info) == S_OK, "QueryFilterInfo");
    now.graph = info.pGraph;
    if (info.pGraph) info.pGraph->Release();
    now.name = info.achName;
    return now;
}

MediaType Sequence::AnyType() {
    const PixelFormat& format = OneFormat();
    if (dice.OneIn(4)) {
        const MediaType odd = MutatedType(dice.random, format);
        if (IsModest(odd)) return odd;
    }
    const bool isSecond = format.layout != Layout::kRgb && dice.OneIn(3);
    return TypeOf(format, 2 * (dice.Below(40) + 2), 2 * (dice.Below(30) + 2),
                  isSecond ? FORMAT_VideoInfo2 : FORMAT_VideoInfo);
}

// Few, so that types often fit the connection that there is.
const PixelFormat& Sequence::OneFormat() {
    return dice.OneIn(3) ? dice.OneOf(AllFormats()) : Format(dice.Of({"YV12", "YUY2", "RGB24"}));
}

REFERENCE_TIME Sequence::LongestWindow() const {
    constexpr REFERENCE_TIME kSecond = 10'000'000;
    const double rate = expected.frameRate;
    if (!(rate > 0.0)) return kSecond;
    return static_cast<REFERENCE_TIME>(20.0 * kSecond / rate) + 1;
}

}  // namespace tavo_test
