// The streaming thread never asks for the filter lock: whoever stops the filter holds it while he
// waits for that thread.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/filter/regulation/scenario.h"
#include "tests/filter/support/pictures.h"
#include "tests/support/patience.h"
#include "tests/support/time_units.h"

using namespace tavo_test;

namespace {

// A graph that keeps a filter inside JoinFilterGraph, where the filter holds its lock.
class HoldingGraph final : public IFilterGraph {
  public:
    HoldingGraph()
        : entered(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
          release(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}
    ~HoldingGraph() {
        CloseHandle(entered);
        CloseHandle(release);
    }

    STDMETHODIMP QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        SetEvent(entered);
        WaitForSingleObject(release, INFINITE);
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP AddFilter(IBaseFilter*, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP RemoveFilter(IBaseFilter*) override { return E_NOTIMPL; }
    STDMETHODIMP EnumFilters(IEnumFilters**) override { return E_NOTIMPL; }
    STDMETHODIMP FindFilterByName(LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
    STDMETHODIMP ConnectDirect(IPin*, IPin*, const AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP Reconnect(IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP Disconnect(IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP SetDefaultSyncSource() override { return E_NOTIMPL; }

    const HANDLE entered;
    const HANDLE release;
};

class FilterLockTest : public FilterTest {
  protected:
    FilterLockTest() { checksTaskMemory_ = false; }
};

TEST_F(FilterLockTest, IsNotNeededForAnySample) {
    std::atomic<int> frames = 0;
    std::atomic<int64_t> lastStop = 0;
    FilterRig rig({.keepBytes = false, .onReceive = [&](IMediaSample* sample) {
                       ++frames;
                       lastStop = ReadFrame(sample).time.value_or(std::pair{0, 0}).second;
                       return S_OK;
                   }});
    rig.settings->SetFrameRate(100.0);
    ASSERT_EQ(rig.Connect(ScenarioType()), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);

    HoldingGraph graph;
    std::thread holder([&] { rig.filter->JoinFilterGraph(&graph, L"held"); });
    ASSERT_EQ(WaitForSingleObject(graph.entered, kPatience), WAIT_OBJECT_0);
    // One that needs the lock waits: it is really held.
    std::atomic<bool> asked = false;
    std::thread asker([&] {
        rig.filter->SetSyncSource(nullptr);
        asked = true;
    });

    std::atomic<bool> delivered = false;
    std::thread streamer([&] {
        ComApartment com;
        EXPECT_EQ(rig.Deliver(SpecOf(Timed(1, 0, 100 * kMs))), S_OK);
        Sleep(150);
        EXPECT_TRUE(SUCCEEDED(rig.Deliver(SpecOf({.picture = 2})))) << "by the filter's own clock";
        // The clock may have gone far.
        const int64_t next = lastStop + 400 * kMs;
        SampleSpec typed = SpecOf(Timed(3, next, next + 100 * kMs));
        typed.type = TypeOf(Format("YV12"), 8, 8);
        EXPECT_EQ(rig.Deliver(typed), S_OK);
        rig.settings->SetFrameRate(0.0);
        EXPECT_EQ(rig.Deliver(SpecOf(Timed(4, next + 100 * kMs, next + 140 * kMs))), S_OK);
        delivered = true;
    });
    EXPECT_TRUE(WaitUntil([&] { return delivered.load(); }))
        << "the streaming thread waits for the filter lock";
    EXPECT_FALSE(asked);
    SetEvent(graph.release);
    holder.join();
    asker.join();
    streamer.join();
    EXPECT_GE(frames, 50);
    EXPECT_EQ(rig.filter->JoinFilterGraph(nullptr, nullptr), S_OK);
}

}  // namespace
