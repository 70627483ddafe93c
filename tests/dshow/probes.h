// Small classes derived from the base classes, as a filter's author would derive them: they note
// every call that reaches them and can be made to fail at each.
//
//   HostFilter is a CBaseFilter with whatever pins the test puts into it (it deletes them).
//   PlainPin, InputPin, OutputPin are CBasePin, CBaseInputPin, CBaseOutputPin with a log.
//
// BreakConnect is noted as "BreakConnect+" while the pin still counts as connected, else as
// "BreakConnect-".
#pragma once

#include "streams.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/call_log.h"
#include "tests/support/com_ptr.h"
#include "tests/support/live_objects.h"
#include "tests/support/media_types.h"
#include "tests/support/watchdog.h"

namespace tavo_test {

// COM, a watchdog, and the check that everything is gone afterwards.
class DshowTest : public testing::Test {
  protected:
    ~DshowTest() override {
        EXPECT_EQ(CBaseObject::ObjectsActive(), objects_);
        EXPECT_EQ(CurrentLiveCounts(), live_);
    }

    ComApartment com_;
    Watchdog dog_{testing::UnitTest::GetInstance()->current_test_info()->name()};
    const LONG objects_ = CBaseObject::ObjectsActive();
    const LiveCounts live_ = CurrentLiveCounts();
};

inline constexpr GUID kHostClass = {
    0x3B0B2C1D, 0x51A4, 0x4E67, {0x9D, 0x31, 0x0E, 0x55, 0x70, 0x12, 0x8F, 0x01}};

class HostFilter : public CBaseFilter {
  public:
    explicit HostFilter(LPUNKNOWN outer = nullptr)
        : CBaseFilter(NAME("host"), outer, &lock, kHostClass) {}
    ~HostFilter() override {
        for (CBasePin* pin : pins) delete pin;
    }

    CallLog log;
    CCritSec lock;
    std::vector<CBasePin*> pins;
    int extraPins = 0;  // promised by GetPinCount, not kept by GetPin

    int GetPinCount() override { return static_cast<int>(pins.size()) + extraPins; }
    CBasePin* GetPin(int n) override {
        return n >= 0 && n < static_cast<int>(pins.size()) ? pins[n] : nullptr;
    }

    using CBaseFilter::m_pClock;
    using CBaseFilter::m_pGraph;
    using CBaseFilter::m_PinVersion;
    using CBaseFilter::m_pName;
    using CBaseFilter::m_pSink;
    using CBaseFilter::m_State;
    using CBaseFilter::m_tStart;
};

template <typename Base>
class ProbePin : public Base {
  public:
    using Base::Base;

    CallLog log;
    std::vector<MediaType> types;
    // Empty: every type is accepted.
    std::function<HRESULT(const CMediaType&)> check;

    HRESULT CheckMediaType(const CMediaType* type) override {
        if (const auto injected = log.Enter("CheckMediaType")) return *injected;
        return check ? check(*type) : S_OK;
    }
    HRESULT SetMediaType(const CMediaType* type) override {
        if (const auto injected = log.Enter("SetMediaType")) return *injected;
        return Base::SetMediaType(type);
    }
    HRESULT CheckConnect(IPin* pin) override {
        if (const auto injected = log.Enter("CheckConnect")) return *injected;
        return Base::CheckConnect(pin);
    }
    HRESULT BreakConnect() override {
        if (const auto injected =
                log.Enter(this->IsConnected() ? "BreakConnect+" : "BreakConnect-"))
            return *injected;
        return Base::BreakConnect();
    }
    HRESULT CompleteConnect(IPin* pin) override {
        if (const auto injected = log.Enter("CompleteConnect")) return *injected;
        return Base::CompleteConnect(pin);
    }
    HRESULT GetMediaType(int position, CMediaType* type) override {
        if (const auto injected = log.Enter("GetMediaType(" + std::to_string(position) + ")"))
            return *injected;
        if (position < 0) return E_INVALIDARG;
        if (position >= static_cast<int>(types.size())) return VFW_S_NO_MORE_ITEMS;
        return type->Set(*types[position]);
    }
    HRESULT Active() override {
        if (const auto injected = log.Enter("Active")) return *injected;
        return Base::Active();
    }
    HRESULT Inactive() override {
        const auto injected = log.Enter("Inactive");
        const HRESULT hr = Base::Inactive();
        return injected.value_or(hr);
    }
    HRESULT Run(REFERENCE_TIME start) override {
        if (const auto injected = log.Enter("Run")) return *injected;
        return Base::Run(start);
    }

    using Base::AgreeMediaType;
    using Base::AttemptConnection;
    using Base::DisconnectInternal;
    using Base::m_bCanReconnectWhenActive;
    using Base::m_bRunTimeError;
    using Base::m_bTryMyTypesFirst;
    using Base::m_Connected;
    using Base::m_mt;
    using Base::m_pLock;
    using Base::m_pQSink;
    using Base::m_TypeVersion;
    using Base::TryMediaTypes;
};

class PlainPin final : public ProbePin<CBasePin> {
  public:
    PlainPin(HostFilter& host, PIN_DIRECTION direction, LPCWSTR name = L"plain")
        : ProbePin(NAME("plain pin"), &host, &host.lock, &created, name, direction) {}
    HRESULT created = S_OK;
    IEnumMediaTypes* ownList = nullptr;  // handed out instead of the base's enumerator

    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** list) override {
        if (!ownList) return CBasePin::EnumMediaTypes(list);
        ownList->AddRef();
        *list = ownList;
        return S_OK;
    }
    STDMETHODIMP BeginFlush() override { return S_OK; }
    STDMETHODIMP EndFlush() override { return S_OK; }
};

class OutputPin final : public ProbePin<CBaseOutputPin> {
  public:
    explicit OutputPin(HostFilter& host)
        : ProbePin(NAME("output pin"), &host, &host.lock, &created, L"out") {}
    HRESULT created = S_OK;
    ALLOCATOR_PROPERTIES wish = {2, 96, 1, 0};
    // What DecideBufferSize was given, each time.
    std::vector<ALLOCATOR_PROPERTIES> decided;
    bool keepRecord = true;  // whether DecideBufferSize leaves the record as it was

    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* properties) override {
        decided.push_back(*properties);
        ALLOCATOR_PROPERTIES request = *properties;
        request.cBuffers = wish.cBuffers;
        request.cbBuffer = wish.cbBuffer;
        if (!keepRecord) *properties = request;
        if (const auto injected = log.Enter("DecideBufferSize")) return *injected;
        ALLOCATOR_PROPERTIES granted = {};
        return allocator->SetProperties(&request, &granted);
    }
    HRESULT InitAllocator(IMemAllocator** allocator) override {
        if (const auto injected = log.Enter("InitAllocator")) {
            *allocator = nullptr;
            return *injected;
        }
        return CBaseOutputPin::InitAllocator(allocator);
    }

    using CBaseOutputPin::m_pAllocator;
    using CBaseOutputPin::m_pInputPin;
};

class InputPin final : public ProbePin<CBaseInputPin> {
  public:
    explicit InputPin(HostFilter& host)
        : ProbePin(NAME("input pin"), &host, &host.lock, &created, L"in") {}
    HRESULT created = S_OK;

    STDMETHODIMP EndOfStream() override {
        log.Add("EndOfStream");
        return CBaseInputPin::EndOfStream();
    }

    using CBaseInputPin::m_bFlushing;
    using CBaseInputPin::m_bReadOnly;
    using CBaseInputPin::m_pAllocator;
    using CBaseInputPin::m_SampleProps;
};

// A filter on the heap with one reference, and a pin inside it.
inline ComPtr<HostFilter> MakeHost() { return ComPtr<HostFilter>(new HostFilter); }

template <typename Pin, typename... Arguments>
Pin* AddPin(HostFilter& host, Arguments... arguments) {
    Pin* pin = new Pin(host, arguments...);
    host.pins.push_back(pin);
    return pin;
}

}  // namespace tavo_test
