// CBaseFilter: interfaces, state changes over its pins, clock.
#include <atomic>
#include <string>
#include <thread>

#include "tests/dshow/base_filter_fixture.h"
#include "tests/support/nothrow_new.h"
#include "tests/support/task_memory.h"

using namespace tavo_test;

namespace {

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

}  // namespace
