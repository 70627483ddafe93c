// CBasePin by itself: identity, references, queries, notices, versions.
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

class BasePin : public DshowTest {
  protected:
    ~BasePin() override {
        host_.Reset();
        EXPECT_EQ(LiveTaskBlocks(), blocks_);
    }
    const long blocks_ = LiveTaskBlocks();
    ComPtr<HostFilter> host_ = MakeHost();
    PlainPin* pin_ = AddPin<PlainPin>(*host_, PINDIR_INPUT, L"pin name");
};

TEST_F(BasePin, StartsUnconnected) {
    EXPECT_EQ(pin_->created, S_OK);
    EXPECT_FALSE(pin_->IsConnected());
    EXPECT_EQ(pin_->GetConnected(), nullptr);
    EXPECT_TRUE(pin_->IsStopped());
    EXPECT_FALSE(pin_->m_bRunTimeError);
    EXPECT_FALSE(pin_->CanReconnectWhenActive());
    EXPECT_FALSE(pin_->m_bTryMyTypesFirst);
    EXPECT_EQ(pin_->m_pQSink, nullptr);
    EXPECT_EQ(pin_->CurrentStartTime(), 0);
    EXPECT_EQ(pin_->CurrentStopTime(), MAX_TIME);
    EXPECT_EQ(pin_->CurrentRate(), 1.0);
    EXPECT_STREQ(pin_->Name(), L"pin name");
    EXPECT_EQ(pin_->log.Text(), "");
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 2);
}

TEST_F(BasePin, ReferencesAreTheFilters) {
    EXPECT_EQ(pin_->AddRef(), 2u);
    EXPECT_EQ(pin_->NonDelegatingAddRef(), 3u);
    EXPECT_EQ(RefCount(host_.Get()), 3u);
    EXPECT_EQ(pin_->NonDelegatingRelease(), 2u);
    EXPECT_EQ(pin_->Release(), 1u);
}

TEST_F(BasePin, ReferencesGoThroughTheFiltersOwner) {
    FakeOuter outer;
    auto* host = new HostFilter(&outer);
    host->NonDelegatingAddRef();
    PlainPin* pin = AddPin<PlainPin>(*host, PINDIR_INPUT, L"x");
    pin->AddRef();
    EXPECT_EQ(outer.references, 1);
    pin->Release();
    EXPECT_EQ(outer.references, 0);
    host->NonDelegatingRelease();
}

TEST_F(BasePin, HasAnIdentityOfItsOwn) {
    const ComPtr<IPin> pin(static_cast<IPin*>(pin_));
    const ComPtr<IUnknown> unknown = pin.As<IUnknown>();
    EXPECT_NE(unknown.Get(), host_.As<IUnknown>().Get());
    const ComPtr<IQualityControl> quality = pin.As<IQualityControl>();
    ASSERT_TRUE(quality);
    EXPECT_EQ(quality.As<IUnknown>().Get(), unknown.Get());
    EXPECT_EQ(quality.As<IPin>().Get(), pin.Get());
    EXPECT_FALSE(pin.As<IMemInputPin>());
    EXPECT_FALSE(pin.As<IMediaSeeking>());
    EXPECT_FALSE(pin.As<IBaseFilter>());
    EXPECT_EQ(pin->QueryInterface(IID_IPin, nullptr), E_POINTER);
}

TEST_F(BasePin, QueryPinInfo) {
    PIN_INFO info = {};
    EXPECT_EQ(pin_->QueryPinInfo(nullptr), E_POINTER);
    EXPECT_EQ(pin_->QueryPinInfo(&info), S_OK);
    EXPECT_EQ(info.pFilter, static_cast<IBaseFilter*>(host_.Get()));
    EXPECT_EQ(RefCount(host_.Get()), 2u);
    info.pFilter->Release();
    EXPECT_EQ(info.dir, PINDIR_INPUT);
    EXPECT_STREQ(info.achName, L"pin name");
    const std::wstring longName(200, L'x');
    PlainPin* wordy = AddPin<PlainPin>(*host_, PINDIR_OUTPUT, longName.c_str());
    EXPECT_EQ(wordy->QueryPinInfo(&info), S_OK);
    info.pFilter->Release();
    EXPECT_EQ(info.dir, PINDIR_OUTPUT);
    EXPECT_EQ(std::wstring(info.achName), longName.substr(0, 127));
}

TEST_F(BasePin, DirectionAndId) {
    PIN_DIRECTION direction = PINDIR_OUTPUT;
    EXPECT_EQ(pin_->QueryDirection(nullptr), E_POINTER);
    EXPECT_EQ(pin_->QueryDirection(&direction), S_OK);
    EXPECT_EQ(direction, PINDIR_INPUT);
    LPWSTR id = nullptr;
    EXPECT_EQ(pin_->QueryId(nullptr), E_POINTER);
    EXPECT_EQ(pin_->QueryId(&id), S_OK);
    EXPECT_STREQ(id, L"pin name");
    EXPECT_NE(id, pin_->Name());
    CoTaskMemFree(id);
    FailTaskMemory fail;
    EXPECT_EQ(pin_->QueryId(&id), E_OUTOFMEMORY);
}

TEST_F(BasePin, QueriesOfTheConnection) {
    IPin* peer = pin_;
    EXPECT_EQ(pin_->ConnectedTo(nullptr), E_POINTER);
    EXPECT_EQ(pin_->ConnectedTo(&peer), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(peer, nullptr);
    AM_MEDIA_TYPE type;
    memset(&type, 0xEE, sizeof type);
    EXPECT_EQ(pin_->ConnectionMediaType(nullptr), E_POINTER);
    EXPECT_EQ(pin_->ConnectionMediaType(&type), VFW_E_NOT_CONNECTED);
    EXPECT_TRUE(type.bFixedSizeSamples);
    EXPECT_EQ(type.lSampleSize, 1u);
    EXPECT_EQ(type.pbFormat, nullptr);
    EXPECT_EQ(type.cbFormat, 0u);
    EXPECT_EQ(type.pUnk, nullptr);
    EXPECT_TRUE(type.majortype == GUID_NULL);

    const MediaType video = MakeVideoType({});
    auto source = TestSource::Create({.types = {video}});
    ASSERT_EQ(pin_->ReceiveConnection(&source->pin(), video.Get()), NOERROR);
    EXPECT_EQ(pin_->GetConnected(), static_cast<IPin*>(&source->pin()));
    EXPECT_EQ(source->references(), 2);
    EXPECT_EQ(pin_->ConnectedTo(&peer), S_OK);
    EXPECT_EQ(peer, static_cast<IPin*>(&source->pin()));
    EXPECT_EQ(source->references(), 3);
    peer->Release();
    EXPECT_EQ(pin_->ConnectionMediaType(&type), S_OK);
    EXPECT_EQ(MediaType(type), video);
    EXPECT_NE(type.pbFormat, pin_->m_mt.pbFormat);
    CoTaskMemFree(type.pbFormat);
    EXPECT_EQ(pin_->Disconnect(), S_OK);
    EXPECT_EQ(MediaType(pin_->m_mt), video);  // outlives the connection
    EXPECT_EQ(pin_->ConnectionMediaType(&type), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(type.pbFormat, nullptr);
}

TEST_F(BasePin, QueryAcceptMasksFailures) {
    const MediaType video = MakeVideoType({});
    EXPECT_EQ(pin_->QueryAccept(nullptr), E_POINTER);
    EXPECT_EQ(pin_->QueryAccept(video.Get()), S_OK);
    for (const HRESULT failure : {E_FAIL, E_OUTOFMEMORY, E_INVALIDARG, VFW_E_TYPE_NOT_ACCEPTED}) {
        pin_->log.Inject("CheckMediaType", failure);
        EXPECT_EQ(pin_->QueryAccept(video.Get()), S_FALSE);
    }
    pin_->log.Inject("CheckMediaType", S_FALSE);
    EXPECT_EQ(pin_->QueryAccept(video.Get()), S_FALSE);
    pin_->log.Inject("CheckMediaType", HRESULT(7));
    EXPECT_EQ(pin_->QueryAccept(video.Get()), HRESULT(7));
}

TEST_F(BasePin, DefaultsOfTheBase) {
    struct Bare : CBasePin {
        Bare(HostFilter& host, HRESULT* hr)
            : CBasePin("bare", &host, &host.lock, hr, L"bare", PINDIR_OUTPUT) {}
        HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
        STDMETHODIMP BeginFlush() override { return S_OK; }
        STDMETHODIMP EndFlush() override { return S_OK; }
    };
    HRESULT hr = S_OK;
    Bare bare(*host_, &hr);
    EXPECT_EQ(hr, S_OK);
    CMediaType type;
    EXPECT_EQ(bare.GetMediaType(0, &type), E_UNEXPECTED);
    EXPECT_EQ(bare.Active(), NOERROR);
    EXPECT_EQ(bare.Run(0), NOERROR);
    EXPECT_EQ(bare.Inactive(), NOERROR);
    EXPECT_EQ(bare.BreakConnect(), NOERROR);
    EXPECT_EQ(bare.CompleteConnect(pin_), NOERROR);
    EXPECT_EQ(bare.CheckConnect(pin_), NOERROR);
    EXPECT_EQ(bare.CheckConnect(&bare), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(bare.EndOfStream(), S_OK);
    ULONG count = 0;
    EXPECT_EQ(bare.QueryInternalConnections(nullptr, &count), E_NOTIMPL);
    EXPECT_EQ(bare.Notify(host_.Get(), Quality{}), E_NOTIMPL);
}

TEST_F(BasePin, ConstructionDoesNotCallTheFilter) {
    // The filter is known by address only while it is still being built.
    HRESULT hr = S_OK;
    struct Bare : CBasePin {
        Bare(CBaseFilter* filter, CCritSec* lock, HRESULT* hr, LPCWSTR name)
            : CBasePin(NAME("bare"), filter, lock, hr, name, PINDIR_INPUT) {}
        HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
        STDMETHODIMP BeginFlush() override { return S_OK; }
        STDMETHODIMP EndFlush() override { return S_OK; }
    };
    CCritSec lock;
    alignas(HostFilter) unsigned char raw[sizeof(HostFilter)] = {};
    auto* unborn = reinterpret_cast<HostFilter*>(raw);
    {
        Bare bare(unborn, &lock, &hr, L"x");
        EXPECT_EQ(hr, S_OK);
    }
    FailNothrowNew failNew;
    FailTaskMemory failTask;
    Bare nameless(unborn, &lock, &hr, L"x");
    EXPECT_EQ(hr, E_OUTOFMEMORY);
}

TEST_F(BasePin, InactiveClearsTheRunTimeError) {
    pin_->m_bRunTimeError = true;
    EXPECT_EQ(pin_->Inactive(), NOERROR);
    EXPECT_FALSE(pin_->m_bRunTimeError);
}

TEST_F(BasePin, NewSegmentStoresWithoutLock) {
    CAutoLock held(&host_->lock);
    std::thread([&] {
        EXPECT_EQ(pin_->NewSegment(10, 20, 2.5), S_OK);
        PIN_INFO info;
        PIN_DIRECTION direction;
        LPWSTR id = nullptr;
        IPin* peer = nullptr;
        ComPtr<IEnumMediaTypes> types;
        EXPECT_EQ(pin_->QueryPinInfo(&info), S_OK);
        info.pFilter->Release();
        EXPECT_EQ(pin_->QueryDirection(&direction), S_OK);
        EXPECT_EQ(pin_->QueryId(&id), S_OK);
        CoTaskMemFree(id);
        EXPECT_EQ(pin_->ConnectedTo(&peer), VFW_E_NOT_CONNECTED);
        EXPECT_EQ(pin_->QueryAccept(MakeVideoType({}).Get()), S_OK);
        EXPECT_EQ(pin_->EnumMediaTypes(types.Put()), S_OK);
        EXPECT_EQ(pin_->Notify(host_.Get(), Quality{}), E_NOTIMPL);
        // Pointers are tested before the lock is taken.
        EXPECT_EQ(pin_->Connect(nullptr, nullptr), E_POINTER);
        EXPECT_EQ(pin_->ReceiveConnection(nullptr, nullptr), E_POINTER);
        EXPECT_EQ(pin_->ConnectionMediaType(nullptr), E_POINTER);
    }).join();
    EXPECT_EQ(pin_->CurrentStartTime(), 10);
    EXPECT_EQ(pin_->CurrentStopTime(), 20);
    EXPECT_EQ(pin_->CurrentRate(), 2.5);
    EXPECT_EQ(host_->m_tStart, 0);
}

TEST_F(BasePin, SinkIsStoredUncounted) {
    FakeQualitySink sink;
    EXPECT_EQ(pin_->SetSink(&sink), NOERROR);
    EXPECT_EQ(pin_->m_pQSink, &sink);
    EXPECT_EQ(sink.references, 0);
    EXPECT_EQ(pin_->SetSink(nullptr), NOERROR);
    EXPECT_EQ(pin_->m_pQSink, nullptr);
}

TEST_F(BasePin, TypeVersionIsTheAuthorsBusiness) {
    EXPECT_EQ(pin_->GetMediaTypeVersion(), 1);
    const MediaType video = MakeVideoType({});
    auto source = TestSource::Create({.types = {video}});
    EXPECT_EQ(pin_->ReceiveConnection(&source->pin(), video.Get()), NOERROR);
    EXPECT_EQ(pin_->Disconnect(), S_OK);
    EXPECT_EQ(pin_->GetMediaTypeVersion(), 1);
    pin_->IncrementTypeVersion();
    EXPECT_EQ(pin_->GetMediaTypeVersion(), 2);
}

TEST_F(BasePin, EnumMediaTypesChecksItsPointer) {
    EXPECT_EQ(pin_->EnumMediaTypes(nullptr), E_POINTER);
}

TEST_F(BasePin, SetMediaTypeWithoutMemory) {
    const MediaType video = MakeVideoType({});
    const CMediaType type(*video);
    FailTaskMemory fail;
    EXPECT_EQ(pin_->SetMediaType(&type), E_OUTOFMEMORY);
}

TEST_F(BasePin, ReconnectWhenActiveFlag) {
    pin_->SetReconnectWhenActive(true);
    EXPECT_TRUE(pin_->CanReconnectWhenActive());
    EXPECT_TRUE(pin_->m_bCanReconnectWhenActive);
    pin_->SetReconnectWhenActive(false);
    EXPECT_FALSE(pin_->CanReconnectWhenActive());
}

}  // namespace
