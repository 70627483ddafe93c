// CBaseFilter in a graph: its name, its pins by name, events, reconnecting.
#include <atomic>
#include <cwchar>
#include <string>
#include <thread>

#include "tests/dshow/base_filter_fixture.h"
#include "tests/support/nothrow_new.h"
#include "tests/support/task_memory.h"

using namespace tavo_test;

namespace {

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
    // Another thread may take the filter out of the graph meanwhile.
    EXPECT_EQ(graph.referencesMeanwhile, 1);
    host_->JoinFilterGraph(nullptr, nullptr);
    EXPECT_EQ(graph.references, 0);
    DropConnections();
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
