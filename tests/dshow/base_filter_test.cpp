// CBaseFilter: state changes over its pins, clock, graph, events, names.
#include <atomic>
#include <cwchar>
#include <string>
#include <thread>

#include "tests/dshow/fakes.h"
#include "tests/dshow/probes.h"
#include "tests/support/nothrow_new.h"
#include "tests/support/task_memory.h"
#include "tests/support/test_source.h"

using namespace tavo_test;

namespace {

class BaseFilter : public DshowTest {
  protected:
    // Three pins; the first and the last get connected.
    void AddPins() {
        first_ = AddPin<PlainPin>(*host_, PINDIR_INPUT, L"first");
        loose_ = AddPin<PlainPin>(*host_, PINDIR_INPUT, L"loose");
        last_ = AddPin<PlainPin>(*host_, PINDIR_INPUT, L"last");
        for (PlainPin* pin : {first_, last_}) {
            ASSERT_EQ(pin->ReceiveConnection(&source_->pin(), type_.Get()), S_OK);
            pin->log.Forward(&order_, pin == first_ ? "first." : "last.");
            pin->log.Clear();
        }
        order_.Clear();
    }
    void DropConnections() {
        host_->Stop();
        for (PlainPin* pin : {first_, last_}) EXPECT_EQ(pin->Disconnect(), S_OK);
    }

    const MediaType type_ = MakeVideoType({});
    ComPtr<TestSource> source_ = TestSource::Create({.types = {type_}});
    CallLog order_;
    ComPtr<HostFilter> host_ = MakeHost();
    PlainPin* first_ = nullptr;
    PlainPin* loose_ = nullptr;
    PlainPin* last_ = nullptr;
};

TEST_F(BaseFilter, StartsStoppedAndAlone) {
    EXPECT_EQ(host_->m_State, State_Stopped);
    EXPECT_EQ(host_->m_pClock, nullptr);
    EXPECT_EQ(host_->m_pGraph, nullptr);
    EXPECT_EQ(host_->m_pSink, nullptr);
    EXPECT_EQ(host_->m_PinVersion, 1);
    EXPECT_EQ(host_->m_tStart, 0);
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 1);
}

TEST_F(BaseFilter, Interfaces) {
    EXPECT_EQ(host_->QueryInterface(IID_IBaseFilter, nullptr), E_POINTER);
    const ComPtr<IUnknown> unknown = host_.As<IUnknown>();
    for (REFIID iid : {IID_IBaseFilter, IID_IMediaFilter, IID_IPersist, __uuidof(IAMovieSetup)}) {
        const ComPtr<IUnknown> same = host_.As<IUnknown>(iid);
        ASSERT_TRUE(same);
        EXPECT_EQ(same.As<IUnknown>().Get(), unknown.Get());
    }
    for (REFIID iid : {IID_IMediaSeeking, IID_IMediaPosition, IID_IPin, IID_IQualityControl}) {
        void* other = &other;
        EXPECT_EQ(host_->QueryInterface(iid, &other), E_NOINTERFACE);
        EXPECT_EQ(other, nullptr);
    }
}

TEST_F(BaseFilter, ClassIdAndState) {
    CLSID clsid = {};
    EXPECT_EQ(host_->GetClassID(&clsid), S_OK);
    EXPECT_TRUE(clsid == kHostClass);
    EXPECT_EQ(host_->GetClassID(nullptr), E_POINTER);
    FILTER_STATE state = State_Running;
    EXPECT_EQ(host_->GetState(0, nullptr), E_POINTER);
    EXPECT_EQ(host_->GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Stopped);
    host_->Pause();
    EXPECT_EQ(host_->GetState(INFINITE, &state), S_OK);
    EXPECT_EQ(state, State_Paused);
    host_->Run(0);
    EXPECT_EQ(host_->GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Running);
}

TEST_F(BaseFilter, StateCanBeAskedWhileTheFilterLockIsHeld) {
    CAutoLock held(&host_->lock);
    std::thread([&] {
        FILTER_STATE state;
        CLSID clsid;
        FILTER_INFO info = {};
        ComPtr<IEnumPins> pins;
        CRefTime time;
        EXPECT_EQ(host_->GetState(0, &state), S_OK);
        EXPECT_EQ(host_->GetClassID(&clsid), S_OK);
        EXPECT_EQ(host_->QueryFilterInfo(&info), S_OK);
        EXPECT_EQ(host_->EnumPins(pins.Put()), S_OK);
        EXPECT_EQ(host_->StreamTime(time), VFW_E_NO_CLOCK);
        EXPECT_EQ(host_->NotifyEvent(EC_COMPLETE, 0, 0), E_NOTIMPL);
        EXPECT_TRUE(host_->IsStopped());
        // The pointer is tested before the lock is taken.
        EXPECT_EQ(host_->GetSyncSource(nullptr), E_POINTER);
        EXPECT_EQ(host_->FindPin(L"x", nullptr), E_POINTER);
    }).join();
}

TEST_F(BaseFilter, SyncSourceIsCounted) {
    FakeClock first, second;
    IReferenceClock* clock = &first;
    EXPECT_EQ(host_->GetSyncSource(&clock), NOERROR);
    EXPECT_EQ(clock, nullptr);
    EXPECT_EQ(host_->SetSyncSource(&first), NOERROR);
    EXPECT_EQ(first.references, 1);
    EXPECT_EQ(host_->SetSyncSource(&first), NOERROR);
    EXPECT_EQ(first.references, 1);
    EXPECT_EQ(first.deaths, 0);  // counted anew before it is released
    EXPECT_EQ(host_->GetSyncSource(&clock), NOERROR);
    EXPECT_EQ(clock, &first);
    EXPECT_EQ(first.references, 2);
    clock->Release();
    EXPECT_EQ(host_->SetSyncSource(&second), NOERROR);
    EXPECT_EQ(first.references, 0);
    EXPECT_EQ(second.references, 1);
    EXPECT_EQ(host_->SetSyncSource(nullptr), NOERROR);
    EXPECT_EQ(second.references, 0);
    host_->SetSyncSource(&first);
    host_.Reset();
    EXPECT_EQ(first.references, 0);
}

TEST_F(BaseFilter, PauseActivatesConnectedPinsInOrder) {
    AddPins();
    EXPECT_EQ(host_->Pause(), S_OK);
    EXPECT_EQ(order_.Text(), "first.Active last.Active");
    EXPECT_EQ(host_->Pause(), S_OK);
    EXPECT_EQ(host_->Run(5), S_OK);
    EXPECT_EQ(order_.Text(), "first.Active last.Active first.Run last.Run");
    EXPECT_EQ(host_->m_tStart, 5);
    EXPECT_EQ(host_->Run(6), S_OK);
    EXPECT_EQ(host_->m_tStart, 6);
    order_.Clear();
    EXPECT_EQ(host_->Pause(), S_OK);
    EXPECT_EQ(host_->m_State, State_Paused);
    EXPECT_EQ(order_.Text(), "");
    EXPECT_EQ(host_->Stop(), S_OK);
    EXPECT_EQ(host_->Stop(), S_OK);
    EXPECT_EQ(order_.Text(), "first.Inactive last.Inactive");
    EXPECT_EQ(loose_->log.Text(), "");
    DropConnections();
}

TEST_F(BaseFilter, FailedPauseUndoesNothing) {
    AddPins();
    last_->log.Inject("Active", E_ABORT);
    EXPECT_EQ(host_->Pause(), E_ABORT);
    EXPECT_EQ(host_->m_State, State_Stopped);
    EXPECT_EQ(order_.Text(), "first.Active last.Active");
    first_->log.Inject("Active", E_FAIL);
    order_.Clear();
    EXPECT_EQ(host_->Pause(), E_FAIL);
    EXPECT_EQ(order_.Text(), "first.Active");
    DropConnections();
}

TEST_F(BaseFilter, StopReachesEveryPinWhateverHappens) {
    AddPins();
    host_->Pause();
    first_->log.Inject("Inactive", E_ABORT);
    last_->log.Inject("Inactive", E_FAIL);
    order_.Clear();
    EXPECT_EQ(host_->Stop(), E_ABORT);
    EXPECT_EQ(host_->m_State, State_Stopped);
    EXPECT_EQ(order_.Text(), "first.Inactive last.Inactive");
    EXPECT_EQ(host_->Stop(), S_OK);
    DropConnections();
}

TEST_F(BaseFilter, RunFromStoppedPausesFirst) {
    AddPins();
    EXPECT_EQ(host_->Run(7), S_OK);
    EXPECT_EQ(host_->m_State, State_Running);
    EXPECT_EQ(order_.Text(), "first.Active last.Active first.Run last.Run");
    host_->Stop();
    first_->log.Inject("Active", E_FAIL);
    order_.Clear();
    EXPECT_EQ(host_->Run(8), E_FAIL);
    EXPECT_EQ(host_->m_State, State_Stopped);
    EXPECT_EQ(host_->m_tStart, 8);
    EXPECT_EQ(order_.Text(), "first.Active");
    first_->log.ClearInjections();
    first_->log.Inject("Run", E_ABORT);
    order_.Clear();
    EXPECT_EQ(host_->Run(9), E_ABORT);
    EXPECT_EQ(order_.Text(), "first.Active last.Active first.Run");
    EXPECT_EQ(host_->m_State, State_Paused);
    DropConnections();
}

TEST_F(BaseFilter, ActiveAndStopped) {
    EXPECT_FALSE(host_->IsActive());
    EXPECT_TRUE(host_->IsStopped());
    host_->Pause();
    EXPECT_TRUE(host_->IsActive());
    EXPECT_FALSE(host_->IsStopped());
    host_->Run(0);
    EXPECT_TRUE(host_->IsActive());
    EXPECT_FALSE(host_->IsStopped());
}

TEST_F(BaseFilter, StreamTime) {
    CRefTime time;
    EXPECT_EQ(host_->StreamTime(time), VFW_E_NO_CLOCK);
    FakeClock clock;
    clock.now = 1000;
    host_->SetSyncSource(&clock);
    host_->Run(300);
    EXPECT_EQ(host_->StreamTime(time), S_OK);
    EXPECT_EQ(time, 700);
    clock.result = S_FALSE;  // the same time as before, and valid
    clock.now = 1200;
    EXPECT_EQ(host_->StreamTime(time), S_OK);
    EXPECT_EQ(time, 900);
    clock.result = E_ABORT;
    EXPECT_EQ(host_->StreamTime(time), E_ABORT);
    host_->SetSyncSource(nullptr);
}

TEST_F(BaseFilter, FindPinByName) {
    AddPins();
    ComPtr<IPin> pin;
    EXPECT_EQ(host_->FindPin(L"loose", pin.Put()), S_OK);
    EXPECT_EQ(pin.Get(), static_cast<IPin*>(loose_));
    pin.Reset();
    IPin* none = loose_;
    EXPECT_EQ(host_->FindPin(L"Loose", &none), VFW_E_NOT_FOUND);
    EXPECT_EQ(none, nullptr);
    none = loose_;
    EXPECT_EQ(host_->FindPin(L"loos", &none), VFW_E_NOT_FOUND);
    EXPECT_EQ(none, nullptr);
    DropConnections();
}

TEST_F(BaseFilter, JoinKeepsGraphAndSinkUncounted) {
    FakeGraph graph;
    EXPECT_EQ(host_->JoinFilterGraph(graph.graph(), L"name in graph"), S_OK);
    EXPECT_EQ(graph.references, 0);
    EXPECT_EQ(host_->GetFilterGraph(), graph.graph());
    EXPECT_EQ(host_->m_pSink, static_cast<IMediaEventSink*>(&graph));
    FILTER_INFO info = {};
    EXPECT_EQ(host_->QueryFilterInfo(nullptr), E_POINTER);
    EXPECT_EQ(host_->QueryFilterInfo(&info), NOERROR);
    EXPECT_STREQ(info.achName, L"name in graph");
    EXPECT_EQ(info.pGraph, graph.graph());
    EXPECT_EQ(graph.references, 1);
    info.pGraph->Release();
    EXPECT_EQ(host_->JoinFilterGraph(nullptr, nullptr), S_OK);
    EXPECT_EQ(host_->GetFilterGraph(), nullptr);
    EXPECT_EQ(host_->m_pSink, nullptr);
    EXPECT_EQ(host_->QueryFilterInfo(&info), NOERROR);
    EXPECT_STREQ(info.achName, L"");
    EXPECT_EQ(info.pGraph, nullptr);
}

TEST_F(BaseFilter, GraphWithoutEventSink) {
    FakeGraph graph;
    graph.hasSink = false;
    EXPECT_EQ(host_->JoinFilterGraph(graph.graph(), nullptr), S_OK);
    EXPECT_EQ(host_->m_pSink, nullptr);
    EXPECT_EQ(host_->NotifyEvent(EC_USER, 1, 2), E_NOTIMPL);
    EXPECT_EQ(graph.references, 0);
    host_->JoinFilterGraph(nullptr, nullptr);
}

TEST_F(BaseFilter, LongNameIsCut) {
    FakeGraph graph;
    const std::wstring name(300, L'n');
    EXPECT_EQ(host_->JoinFilterGraph(graph.graph(), name.c_str()), S_OK);
    FILTER_INFO info = {};
    EXPECT_EQ(host_->QueryFilterInfo(&info), NOERROR);
    EXPECT_EQ(std::wstring(info.achName), name.substr(0, 127));
    info.pGraph->Release();
    EXPECT_EQ(std::wstring(host_->m_pName), name);
    host_->JoinFilterGraph(nullptr, nullptr);
}

TEST_F(BaseFilter, JoinWithoutMemoryForTheName) {
    FakeGraph graph;
    {
        FailNothrowNew failNew;
        FailTaskMemory failTask;
        EXPECT_EQ(host_->JoinFilterGraph(graph.graph(), L"name"), E_OUTOFMEMORY);
    }
    EXPECT_EQ(host_->GetFilterGraph(), graph.graph());
    EXPECT_EQ(host_->JoinFilterGraph(nullptr, nullptr), S_OK);
}

TEST_F(BaseFilter, Events) {
    FakeGraph graph;
    EXPECT_EQ(host_->NotifyEvent(EC_COMPLETE, 0, 0), E_NOTIMPL);
    host_->JoinFilterGraph(graph.graph(), nullptr);
    graph.notifyResult = S_FALSE;
    EXPECT_EQ(host_->NotifyEvent(EC_QUALITY_CHANGE, 3, 4), S_FALSE);
    EXPECT_EQ(host_->NotifyEvent(EC_COMPLETE, 5, 6), S_FALSE);
    ASSERT_EQ(graph.events.size(), 2u);
    EXPECT_EQ(graph.events[0].code, EC_QUALITY_CHANGE);
    EXPECT_EQ(graph.events[0].first, 3);
    EXPECT_EQ(graph.events[0].second, 4);
    EXPECT_EQ(graph.events[1].code, EC_COMPLETE);
    EXPECT_EQ(graph.events[1].first, 5);
    EXPECT_EQ(graph.events[1].second,
              reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(host_.Get())));
    host_->JoinFilterGraph(nullptr, nullptr);
    EXPECT_EQ(graph.references, 0);
}

TEST_F(BaseFilter, ReconnectPin) {
    AddPins();
    EXPECT_EQ(host_->ReconnectPin(first_, type_.Get()), E_NOINTERFACE);
    FakeGraph graph;
    host_->JoinFilterGraph(graph.graph(), nullptr);
    graph.log.Inject("ReconnectEx", S_FALSE);
    EXPECT_EQ(host_->ReconnectPin(first_, type_.Get()), S_FALSE);
    EXPECT_EQ(graph.log.Text(), "ReconnectEx");
    EXPECT_EQ(graph.reconnected, static_cast<IPin*>(first_));
    EXPECT_EQ(graph.reconnectType, type_.Get());
    graph.hasGraph2 = false;
    graph.log.Clear();
    graph.log.Inject("Reconnect", E_ABORT);
    EXPECT_EQ(host_->ReconnectPin(last_, type_.Get()), E_ABORT);
    EXPECT_EQ(graph.log.Text(), "Reconnect");
    EXPECT_EQ(graph.reconnected, static_cast<IPin*>(last_));
    host_->JoinFilterGraph(nullptr, nullptr);
    EXPECT_EQ(graph.references, 0);
    DropConnections();
}

TEST_F(BaseFilter, VersionVendorAndSetup) {
    EXPECT_EQ(host_->GetPinVersion(), 1);
    host_->IncrementPinVersion();
    EXPECT_EQ(host_->GetPinVersion(), 2);
    LPWSTR vendor = nullptr;
    EXPECT_EQ(host_->QueryVendorInfo(&vendor), E_NOTIMPL);
    EXPECT_EQ(host_->GetSetupData(), nullptr);
    EXPECT_EQ(host_->Register(), S_FALSE);
    EXPECT_EQ(host_->Unregister(), S_FALSE);
    EXPECT_EQ(host_->EnumPins(nullptr), E_POINTER);
}

TEST_F(BaseFilter, NamesOfBothKindsAndTheResultPointer) {
    struct Bare : CBaseFilter {
        Bare(CCritSec* lock, HRESULT* hr) : CBaseFilter("narrow", nullptr, lock, kHostClass, hr) {}
        Bare(CCritSec* lock, LPCTSTR name) : CBaseFilter(name, nullptr, lock, kHostClass) {}
        int GetPinCount() override { return 0; }
        CBasePin* GetPin(int) override { return nullptr; }
    };
    CCritSec lock;
    HRESULT hr = 0x12345678;
    const ComPtr<Bare> narrow(new Bare(&lock, &hr));
    const ComPtr<Bare> wide(new Bare(&lock, NAME("wide")));
    EXPECT_EQ(hr, 0x12345678);
}

// Names of one letter each: one that is read while it is replaced has two, or none that was given.
TEST_F(BaseFilter, NamesAreWholeWhileTheFilterJoinsAndLeaves) {
    std::atomic<bool> ends = false;
    std::thread joins([&] {
        for (int i = 0; i < 20000; ++i) {
            const std::wstring name(static_cast<size_t>(20 + i % 90),
                                    static_cast<wchar_t>(L'a' + i % 26));
            host_->JoinFilterGraph(nullptr, i % 10 ? name.c_str() : nullptr);
        }
        ends = true;
    });
    int torn = 0;
    while (!ends) {
        FILTER_INFO info;
        host_->QueryFilterInfo(&info);
        const std::wstring name = info.achName;
        const bool isWhole =
            name.empty() ||
            (name.size() >= 20 && name.size() < 110 && name[0] >= L'a' && name[0] <= L'z' &&
             name.find_first_not_of(name[0]) == std::wstring::npos);
        if (!isWhole) ++torn;
    }
    joins.join();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(host_->JoinFilterGraph(nullptr, nullptr), S_OK);
}

}  // namespace
