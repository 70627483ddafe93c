// Loading the module, wiring it up, and the checks of the fixture.
#include "tests/filter/support/filter_rig.h"

#include "tests/support/graph.h"
#include "tests/support/rounds.h"
#include "tests/support/task_memory.h"

namespace tavo_test {

std::wstring ModulePath() {
    wchar_t buffer[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, buffer, MAX_PATH);
    std::wstring path(buffer);
    path.resize(path.find_last_of(L'\\') + 1);
    for (const char c : std::string(TAVO_MODULE)) path += c == '/' ? L'\\' : wchar_t(c);
    wchar_t full[MAX_PATH] = {};
    GetFullPathNameW(path.c_str(), MAX_PATH, full, nullptr);
    return full;
}

const Module& TheModule() {
    static const Module module(ModulePath().c_str());
    return module;
}

ComPtr<IBaseFilter> CreateFilter() { return TheModule().Create<IBaseFilter>(CLSID_VantrelFilter); }

FilterRig::FilterRig(const SinkConfig& sinkConfig, const SourceConfig& sourceConfig)
    : source(TestSource::Create(sourceConfig)), sink(TestSink::Create(sinkConfig)) {
    Use(CreateFilter());
}

void FilterRig::Use(const ComPtr<IBaseFilter>& other) {
    filter = other;
    settings = filter.As<IVantrelSettings>(IID_IVantrelSettings);
    input = GetPin(filter.Get(), PINDIR_INPUT);
    output = GetPin(filter.Get(), PINDIR_OUTPUT);
}

FilterRig::~FilterRig() {
    Stop();
    DisconnectOutput();
    DisconnectInput();
}

HRESULT FilterRig::ConnectInput(const MediaType& type) {
    source->pin().offered = {type};
    return ConnectPins(&source->pin(), input.Get());
}

HRESULT FilterRig::ConnectOutput(const MediaType* type) {
    return ConnectPins(output.Get(), &sink->pin(), type ? type->Get() : nullptr);
}

HRESULT FilterRig::Connect(const MediaType& type) {
    const HRESULT connected = ConnectInput(type);
    return FAILED(connected) ? connected : ConnectOutput();
}

void FilterRig::DisconnectInput() { DisconnectPins(&source->pin(), input.Get()); }

void FilterRig::DisconnectOutput() { DisconnectPins(output.Get(), &sink->pin()); }

HRESULT FilterRig::Start() {
    sink->Pause();
    HRESULT started = filter->Pause();
    if (SUCCEEDED(started)) started = source->Pause();
    if (FAILED(started)) return started;
    sink->Run(0);
    started = filter->Run(0);
    source->Run(0);
    return started;
}

HRESULT FilterRig::Stop() {
    sink->Stop();
    const HRESULT stopped = filter->Stop();
    source->Stop();
    return stopped;
}

std::vector<MediaType> FilterRig::OfferedTypes() const {
    std::vector<MediaType> types;
    ComPtr<IEnumMediaTypes> list;
    if (FAILED(output->EnumMediaTypes(list.Put()))) return types;
    AM_MEDIA_TYPE* type = nullptr;
    while (list->Next(1, &type, nullptr) == S_OK) {
        types.emplace_back(*type);
        DeleteType(type);
    }
    return types;
}

MediaType FilterRig::ConnectionTypeOf(IPin* pin) const {
    MediaType type;
    pin->ConnectionMediaType(type.Put());
    return type;
}

std::pair<int, int> FilterRig::OutputSize() const {
    int width = -1;
    int height = -1;
    settings->GetOutputSize(&width, &height);
    return {width, height};
}

void FilterTest::SetUp() {
    ASSERT_TRUE(TheModule().loaded());
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    dog_ = std::make_unique<Watchdog>(std::string(test->test_suite_name()) + "." + test->name(),
                                      static_cast<unsigned>(Rounds(300)));
    // What COM itself allocates once must not count as left behind.
    { FilterRig warmUp; }
    before_ = CurrentLiveCounts();
    taskBlocksBefore_ = LiveTaskBlocks();
    ASSERT_EQ(TheModule().CanUnloadNow(), S_OK);
}

void FilterTest::TearDown() {
    EXPECT_EQ(CurrentLiveCounts(), before_);
    if (checksTaskMemory_) {
        EXPECT_EQ(LiveTaskBlocks(), taskBlocksBefore_);
    }
    EXPECT_EQ(TheModule().CanUnloadNow(), S_OK) << "objects of the module are left over";
}

}  // namespace tavo_test
