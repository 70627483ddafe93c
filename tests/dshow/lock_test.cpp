// Which calls wait for the filter lock and the streaming lock, and which go through while both are
// held by another thread.
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/dshow/transform_probe.h"

using namespace tavo_test;

namespace {

using Call = std::pair<const char*, std::function<void()>>;

class Locks : public TransformTest {
  protected:
    Locks() {
        MakeSource();
        MakeSink();
        filter_->outputs = {type_};
        EXPECT_EQ(ConnectInput(), S_OK);
        EXPECT_EQ(ConnectOutput(), S_OK);
    }
    // Makes every call on a thread of its own while this thread holds the lock; the names of those
    // that have come through before it is released.
    static std::vector<std::string> ThroughWhileHeld(CCritSec& lock,
                                                     const std::vector<Call>& calls) {
        std::vector<std::atomic<bool>> done(calls.size());
        std::vector<std::thread> threads;
        std::vector<std::string> through;
        {
            CAutoLock held(&lock);
            for (size_t i = 0; i < calls.size(); ++i) {
                threads.emplace_back([&calls, &done, i] {
                    calls[i].second();
                    done[i] = true;
                });
            }
            Sleep(400);
            for (size_t i = 0; i < calls.size(); ++i)
                if (done[i]) through.emplace_back(calls[i].first);
        }
        for (std::thread& thread : threads) thread.join();
        return through;
    }
};

TEST_F(Locks, CallsThatTakeTheFilterLock) {
    CTransformInputPin& in = *filter_->input();
    CTransformOutputPin& out = *filter_->output();
    const std::vector<Call> calls = {
        {"Stop", [&] { filter_->Stop(); }},
        {"Pause", [&] { filter_->Pause(); }},
        {"Run", [&] { filter_->Run(0); }},
        {"SetSyncSource", [&] { filter_->SetSyncSource(nullptr); }},
        {"GetSyncSource",
         [&] {
             IReferenceClock* clock = nullptr;
             filter_->GetSyncSource(&clock);
         }},
        {"JoinFilterGraph", [&] { filter_->JoinFilterGraph(nullptr, nullptr); }},
        {"CBaseFilter::FindPin",
         [&] {
             IPin* pin = nullptr;
             filter_->CBaseFilter::FindPin(L"none", &pin);
         }},
        {"IsActive", [&] { filter_->IsActive(); }},
        {"Connect", [&] { out.Connect(&sink_->pin(), nullptr); }},
        {"ReceiveConnection", [&] { in.ReceiveConnection(&source_->pin(), type_.Get()); }},
        {"ConnectionMediaType",
         [&] {
             MediaType type;
             in.ConnectionMediaType(type.Put());
         }},
        {"SetSink", [&] { in.SetSink(nullptr); }},
        {"GetAllocator",
         [&] {
             ComPtr<IMemAllocator> allocator;
             in.GetAllocator(allocator.Put());
         }},
        {"NotifyAllocator", [&] { in.NotifyAllocator(source_->pin().allocator(), FALSE); }},
        {"BeginFlush", [&] { in.BeginFlush(); }},
        {"EndFlush", [&] { in.EndFlush(); }},
    };
    EXPECT_EQ(ThroughWhileHeld(filter_->m_csFilter, calls), std::vector<std::string>());
    EXPECT_EQ(filter_->Stop(), S_OK);
    const std::vector<Call> disconnect = {{"Disconnect", [&] { out.Disconnect(); }}};
    EXPECT_EQ(ThroughWhileHeld(filter_->m_csFilter, disconnect), std::vector<std::string>());
    sink_->pin().Disconnect();
}

TEST_F(Locks, CallsThatTakeTheStreamingLock) {
    PauseAll();
    auto sample = TestSample::Create({.size = 96});
    const std::vector<Call> calls = {
        {"Receive", [&] { filter_->input()->Receive(sample.Get()); }},
        {"EndOfStream", [&] { filter_->input()->EndOfStream(); }},
    };
    EXPECT_EQ(ThroughWhileHeld(filter_->m_csReceive, calls), std::vector<std::string>());
    const std::vector<Call> stop = {{"Stop", [&] { filter_->Stop(); }}};
    EXPECT_EQ(ThroughWhileHeld(filter_->m_csReceive, stop), std::vector<std::string>());
}

TEST_F(Locks, CallsThatTakeNoLock) {
    CTransformInputPin& in = *filter_->input();
    CTransformOutputPin& out = *filter_->output();
    CAutoLock filterLock(&filter_->m_csFilter);
    CAutoLock streamingLock(&filter_->m_csReceive);
    // A call that waits ends the program by way of the watchdog.
    std::thread([&] {
        FILTER_STATE state;
        CLSID clsid;
        FILTER_INFO filterInfo = {};
        PIN_INFO pinInfo = {};
        PIN_DIRECTION direction;
        LPWSTR id = nullptr;
        CRefTime time;
        ComPtr<IEnumPins> pins;
        ComPtr<IEnumMediaTypes> types;
        ComPtr<IPin> pin;
        ALLOCATOR_PROPERTIES wish = {};
        AM_MEDIA_TYPE* type = nullptr;
        EXPECT_EQ(filter_->GetState(0, &state), S_OK);
        EXPECT_EQ(filter_->GetClassID(&clsid), S_OK);
        EXPECT_EQ(filter_->QueryFilterInfo(&filterInfo), S_OK);
        EXPECT_EQ(filter_->EnumPins(pins.Put()), S_OK);
        EXPECT_EQ(pins->Next(1, pin.Put(), nullptr), S_OK);
        EXPECT_EQ(filter_->FindPin(L"Out", pin.Put()), S_OK);
        EXPECT_EQ(filter_->StreamTime(time), VFW_E_NO_CLOCK);
        EXPECT_EQ(filter_->NotifyEvent(EC_USER, 0, 0), E_NOTIMPL);
        EXPECT_EQ(filter_->ReconnectPin(&out, nullptr), E_NOINTERFACE);
        EXPECT_EQ(out.QueryPinInfo(&pinInfo), S_OK);
        QueryPinInfoReleaseFilter(pinInfo);
        EXPECT_EQ(out.QueryDirection(&direction), S_OK);
        EXPECT_EQ(out.QueryId(&id), S_OK);
        CoTaskMemFree(id);
        EXPECT_EQ(out.ConnectedTo(pin.Put()), S_OK);
        EXPECT_EQ(out.QueryAccept(type_.Get()), S_OK);
        EXPECT_EQ(out.EnumMediaTypes(types.Put()), S_OK);
        EXPECT_EQ(types->Next(1, &type, nullptr), S_OK);
        DeleteMediaType(type);
        EXPECT_EQ(in.NewSegment(0, 1, 1), S_OK);
        EXPECT_EQ(out.Notify(sink_.Get(), Quality{}), S_OK);
        EXPECT_EQ(in.ReceiveCanBlock(), S_OK);
        EXPECT_EQ(in.GetAllocatorRequirements(&wish), E_NOTIMPL);
    }).join();
}

}  // namespace
