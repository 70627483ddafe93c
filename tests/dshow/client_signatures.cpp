// What client code may rely on, checked by the compiler: parameter types, constness, calling
// conventions (only a 32-bit build can tell them apart), access, and what is virtual or abstract.
// Nothing here runs.
#include "streams.h"

#include <type_traits>

// As modules written for the SDK declare it themselves.
extern "C" BOOL WINAPI DllEntryPoint(HINSTANCE, ULONG, LPVOID);

namespace {

template <typename Expected, typename Actual>
constexpr bool kSame = std::is_same_v<Expected, Actual>;

#define COM STDMETHODCALLTYPE

// ---- Functions
static_assert(kSame<AM_MEDIA_TYPE*(WINAPI*)(const AM_MEDIA_TYPE*), decltype(&CreateMediaType)>);
static_assert(
    kSame<HRESULT(WINAPI*)(AM_MEDIA_TYPE*, const AM_MEDIA_TYPE*), decltype(&CopyMediaType)>);
static_assert(kSame<void(WINAPI*)(AM_MEDIA_TYPE&), decltype(&FreeMediaType)>);
static_assert(kSame<void(WINAPI*)(AM_MEDIA_TYPE*), decltype(&DeleteMediaType)>);
static_assert(kSame<HRESULT(WINAPI*)(LPUNKNOWN, void**), decltype(&GetInterface)>);
static_assert(kSame<HRESULT(WINAPI*)(LPCWSTR, LPWSTR*), decltype(&AMGetWideString)>);
static_assert(
    kSame<HRESULT(WINAPI*)(LPUNKNOWN, BOOL, IPin*, IUnknown**), decltype(&CreatePosPassThru)>);
static_assert(kSame<HRESULT(WINAPI*)(BOOL), decltype(&AMovieDllRegisterServer2)>);
static_assert(kSame<HRESULT(WINAPI*)(const AMOVIESETUP_FILTER*, IFilterMapper2*, BOOL),
                    decltype(&AMovieSetupRegisterFilter2)>);
static_assert(kSame<BOOL(WINAPI*)(HINSTANCE, ULONG, LPVOID), decltype(&DllEntryPoint)>);
static_assert(kSame<HINSTANCE, decltype(g_hInst)>);
static_assert(kSame<CUnknown*(CALLBACK*)(LPUNKNOWN, HRESULT*), LPFNNewCOMObject>);
static_assert(kSame<void(CALLBACK*)(BOOL, const CLSID*), LPFNInitRoutine>);

// ---- Objects
static_assert(kSame<LONG (*)(), decltype(&CBaseObject::ObjectsActive)>);
static_assert(std::is_constructible_v<CBaseObject, LPCTSTR> &&
              std::is_constructible_v<CBaseObject, LPCSTR>);
static_assert(kSame<LPUNKNOWN (CUnknown::*)() const, decltype(&CUnknown::GetOwner)>);
static_assert(kSame<HRESULT (COM INonDelegatingUnknown::*)(REFIID, void**),
                    decltype(&INonDelegatingUnknown::NonDelegatingQueryInterface)>);
static_assert(kSame<ULONG (COM INonDelegatingUnknown::*)(),
                    decltype(&INonDelegatingUnknown::NonDelegatingAddRef)>);
static_assert(kSame<ULONG (COM CUnknown::*)(), decltype(&CUnknown::NonDelegatingRelease)>);
static_assert(std::is_constructible_v<CUnknown, LPCTSTR, LPUNKNOWN> &&
              std::is_constructible_v<CUnknown, LPCTSTR, LPUNKNOWN, HRESULT*> &&
              std::is_constructible_v<CUnknown, LPCSTR, LPUNKNOWN, HRESULT*>);
static_assert(kSame<void (CCritSec::*)(), decltype(&CCritSec::Lock)> &&
              kSame<void (CCritSec::*)(), decltype(&CCritSec::Unlock)>);
static_assert(std::is_constructible_v<CAutoLock, CCritSec*>);

// ---- Media types
static_assert(std::is_constructible_v<CMediaType, const GUID*> &&
              std::is_constructible_v<CMediaType, const AM_MEDIA_TYPE&, HRESULT*> &&
              std::is_constructible_v<CMediaType, const CMediaType&, HRESULT*>);
static_assert(
    kSame<BOOL (CMediaType::*)(const CMediaType&) const, decltype(&CMediaType::operator==)> &&
    kSame<BOOL (CMediaType::*)(const CMediaType&) const, decltype(&CMediaType::operator!=)>);
static_assert(kSame<const GUID* (CMediaType::*)() const, decltype(&CMediaType::Subtype)>);
static_assert(kSame<void (CMediaType::*)(const GUID*), decltype(&CMediaType::SetFormatType)>);
static_assert(kSame<ULONG (CMediaType::*)() const, decltype(&CMediaType::GetSampleSize)>);
static_assert(kSame<BYTE* (CMediaType::*)() const, decltype(&CMediaType::Format)>);
static_assert(kSame<BOOL (CMediaType::*)(BYTE*, ULONG), decltype(&CMediaType::SetFormat)>);
static_assert(kSame<BYTE* (CMediaType::*)(ULONG), decltype(&CMediaType::AllocFormatBuffer)>);
static_assert(kSame<BYTE* (CMediaType::*)(ULONG), decltype(&CMediaType::ReallocFormatBuffer)>);
static_assert(kSame<BOOL (CMediaType::*)() const, decltype(&CMediaType::IsPartiallySpecified)>);
static_assert(
    kSame<BOOL (CMediaType::*)(const CMediaType*) const, decltype(&CMediaType::MatchesPartial)>);

// ---- Filter
static_assert(kSame<HRESULT (CBaseFilter::*)(CRefTime&), decltype(&CBaseFilter::StreamTime)>);
static_assert(
    kSame<HRESULT (CBaseFilter::*)(long, LONG_PTR, LONG_PTR), decltype(&CBaseFilter::NotifyEvent)>);
static_assert(kSame<HRESULT (CBaseFilter::*)(IPin*, const AM_MEDIA_TYPE*),
                    decltype(&CBaseFilter::ReconnectPin)>);
static_assert(kSame<IFilterGraph* (CBaseFilter::*)(), decltype(&CBaseFilter::GetFilterGraph)>);
static_assert(kSame<CBasePin* (CBaseFilter::*)(int), decltype(&CBaseFilter::GetPin)>);
static_assert(kSame<LPAMOVIESETUP_FILTER (CBaseFilter::*)(), decltype(&CBaseFilter::GetSetupData)>);
static_assert(kSame<BOOL (CBaseFilter::*)(), decltype(&CBaseFilter::IsActive)>);
static_assert(
    kSame<HRESULT (COM CBaseFilter::*)(LPCWSTR, IPin**), decltype(&CBaseFilter::FindPin)>);
static_assert(kSame<HRESULT (COM CBaseFilter::*)(REFERENCE_TIME), decltype(&CBaseFilter::Run)>);
static_assert(std::is_abstract_v<CBaseFilter>);

// ---- Pins
static_assert(kSame<HRESULT (CBasePin::*)(const CMediaType*), decltype(&CBasePin::SetMediaType)>);
static_assert(kSame<HRESULT (CBasePin::*)(IPin*), decltype(&CBasePin::CompleteConnect)>);
static_assert(kSame<HRESULT (CBasePin::*)(REFERENCE_TIME), decltype(&CBasePin::Run)>);
static_assert(
    kSame<HRESULT (COM CBasePin::*)(IPin*, const AM_MEDIA_TYPE*), decltype(&CBasePin::Connect)>);
static_assert(kSame<HRESULT (COM CBasePin::*)(IBaseFilter*, Quality), decltype(&CBasePin::Notify)>);
static_assert(kSame<REFERENCE_TIME (CBasePin::*)(), decltype(&CBasePin::CurrentStopTime)>);
static_assert(kSame<LPWSTR (CBasePin::*)(), decltype(&CBasePin::Name)>);
static_assert(kSame<IPin* (CBasePin::*)(), decltype(&CBasePin::GetConnected)>);
static_assert(
    kSame<HRESULT (CBaseOutputPin::*)(IMediaSample**, REFERENCE_TIME*, REFERENCE_TIME*, DWORD),
          decltype(&CBaseOutputPin::GetDeliveryBuffer)>);
static_assert(kSame<HRESULT (CBaseOutputPin::*)(IMemInputPin*, IMemAllocator**),
                    decltype(&CBaseOutputPin::DecideAllocator)>);
static_assert(kSame<HRESULT (CBaseOutputPin::*)(REFERENCE_TIME, REFERENCE_TIME, double),
                    decltype(&CBaseOutputPin::DeliverNewSegment)>);
static_assert(kSame<HRESULT (COM CBaseInputPin::*)(IMediaSample**, long, long*),
                    decltype(&CBaseInputPin::ReceiveMultiple)>);
static_assert(kSame<HRESULT (CBaseInputPin::*)(), decltype(&CBaseInputPin::CheckStreaming)>);
static_assert(kSame<HRESULT (CBaseInputPin::*)(Quality&), decltype(&CBaseInputPin::PassNotify)>);
static_assert(
    kSame<AM_SAMPLE2_PROPERTIES* (CBaseInputPin::*)(), decltype(&CBaseInputPin::SampleProps)>);
static_assert(
    kSame<CMediaType& (CTransformInputPin::*)(), decltype(&CTransformInputPin::CurrentMediaType)>);
static_assert(
    kSame<IUnknown*(CTransformOutputPin::*), decltype(&CTransformOutputPin::m_pPosition)>);

// ---- Transform filter: names shared with the pins' COM methods, yet of the ordinary convention
static_assert(
    kSame<HRESULT (CTransformFilter::*)(IMediaSample*), decltype(&CTransformFilter::Receive)>);
static_assert(kSame<HRESULT (CTransformFilter::*)(), decltype(&CTransformFilter::EndOfStream)>);
static_assert(kSame<HRESULT (CTransformFilter::*)(), decltype(&CTransformFilter::BeginFlush)>);
static_assert(kSame<HRESULT (CTransformFilter::*)(REFERENCE_TIME, REFERENCE_TIME, double),
                    decltype(&CTransformFilter::NewSegment)>);
static_assert(kSame<HRESULT (CTransformFilter::*)(IMediaSample*, IMediaSample**),
                    decltype(&CTransformFilter::InitializeOutputSample)>);
static_assert(kSame<HRESULT (COM CTransformFilter::*)(), decltype(&CTransformFilter::Stop)>);
static_assert(
    std::is_constructible_v<CTransformInputPin, LPCTSTR, CTransformFilter*, HRESULT*, LPCWSTR> &&
    std::is_constructible_v<CTransformOutputPin, LPCSTR, CTransformFilter*, HRESULT*, LPCWSTR>);

// ---- Clock and page
static_assert(kSame<HRESULT (COM CBaseReferenceClock::*)(const REFERENCE_TIME&),
                    decltype(&CBaseReferenceClock::SetTimeDelta)>);
static_assert(kSame<REFERENCE_TIME (CBaseReferenceClock::*)(),
                    decltype(&CBaseReferenceClock::GetPrivateTime)>);
static_assert(kSame<CAMSchedule* (CBaseReferenceClock::*)() const,
                    decltype(&CBaseReferenceClock::GetSchedule)>);
static_assert(
    kSame<DWORD_PTR (CAMSchedule::*)(const REFERENCE_TIME&, const REFERENCE_TIME&, HANDLE, BOOL),
          decltype(&CAMSchedule::AddAdvisePacket)>);
static_assert(
    kSame<HRESULT (CBasePropertyPage::*)(IUnknown*), decltype(&CBasePropertyPage::OnConnect)>);
static_assert(kSame<INT_PTR (CBasePropertyPage::*)(HWND, UINT, WPARAM, LPARAM),
                    decltype(&CBasePropertyPage::OnReceiveMessage)>);
static_assert(kSame<HRESULT (COM CBasePropertyPage::*)(HWND, LPCRECT, BOOL),
                    decltype(&CBasePropertyPage::Activate)>);

// ---- Protected members are out of reach from here
template <typename T>
concept ShowsPinType = requires(T& pin) {
    pin.m_mt;
};
template <typename T>
concept ShowsState = requires(T& filter) {
    filter.m_State;
};
template <typename T>
concept ShowsAllocator = requires(T& pin) {
    pin.m_pAllocator;
};
template <typename T>
concept ShowsPins = requires(T& filter) {
    filter.m_pInput;
};
template <typename T>
concept ShowsCount = requires(T& object) {
    object.m_cRef;
};
template <typename T>
concept ShowsWindow = requires(T& page) {
    page.m_hwnd;
};
template <typename T>
concept ShowsAttempt = requires(T& pin) {
    pin.AttemptConnection(nullptr, nullptr);
};
static_assert(!ShowsPinType<CBasePin> && !ShowsPinType<CTransformInputPin>);
static_assert(!ShowsState<CBaseFilter> && !ShowsPins<CTransformFilter>);
static_assert(!ShowsAllocator<CBaseInputPin> && !ShowsAllocator<CBaseOutputPin>);
static_assert(!ShowsCount<CUnknown> && !ShowsWindow<CBasePropertyPage>);
static_assert(!ShowsAttempt<CBasePin>);

// ---- Everything that may be overridden can be
class EveryPin : public CTransformInputPin {
  public:
    using CTransformInputPin::CTransformInputPin;
    LONG GetMediaTypeVersion() override { return 0; }
    HRESULT Active() override { return S_OK; }
    HRESULT Inactive() override { return S_OK; }
    HRESULT Run(REFERENCE_TIME) override { return S_OK; }
    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
    HRESULT SetMediaType(const CMediaType*) override { return S_OK; }
    HRESULT CheckConnect(IPin*) override { return S_OK; }
    HRESULT BreakConnect() override { return S_OK; }
    HRESULT CompleteConnect(IPin*) override { return S_OK; }
    HRESULT GetMediaType(int, CMediaType*) override { return S_OK; }
    HRESULT CheckStreaming() override { return S_OK; }
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) override { return S_OK; }
    STDMETHODIMP Receive(IMediaSample*) override { return S_OK; }
    STDMETHODIMP BeginFlush() override { return S_OK; }
};

class EveryOutputPin : public CTransformOutputPin {
  public:
    using CTransformOutputPin::CTransformOutputPin;
    HRESULT DecideAllocator(IMemInputPin*, IMemAllocator**) override { return S_OK; }
    HRESULT DecideBufferSize(IMemAllocator*, ALLOCATOR_PROPERTIES*) override { return S_OK; }
    HRESULT InitAllocator(IMemAllocator**) override { return S_OK; }
    HRESULT GetDeliveryBuffer(IMediaSample**, REFERENCE_TIME*, REFERENCE_TIME*, DWORD) override {
        return S_OK;
    }
    HRESULT Deliver(IMediaSample*) override { return S_OK; }
    HRESULT DeliverEndOfStream() override { return S_OK; }
    HRESULT DeliverBeginFlush() override { return S_OK; }
    HRESULT DeliverEndFlush() override { return S_OK; }
    HRESULT DeliverNewSegment(REFERENCE_TIME, REFERENCE_TIME, double) override { return S_OK; }
    STDMETHODIMP Notify(IBaseFilter*, Quality) override { return S_OK; }
};

class EveryFilter : public CTransformFilter {
  public:
    using CTransformFilter::CTransformFilter;
    int GetPinCount() override { return 0; }
    CBasePin* GetPin(int) override { return nullptr; }
    STDMETHODIMP FindPin(LPCWSTR, IPin**) override { return S_OK; }
    HRESULT StreamTime(CRefTime&) override { return S_OK; }
    LONG GetPinVersion() override { return 0; }
    LPAMOVIESETUP_FILTER GetSetupData() override { return nullptr; }
    HRESULT CheckInputType(const CMediaType*) override { return S_OK; }
    HRESULT CheckTransform(const CMediaType*, const CMediaType*) override { return S_OK; }
    HRESULT DecideBufferSize(IMemAllocator*, ALLOCATOR_PROPERTIES*) override { return S_OK; }
    HRESULT GetMediaType(int, CMediaType*) override { return S_OK; }
    HRESULT Transform(IMediaSample*, IMediaSample*) override { return S_OK; }
    HRESULT StartStreaming() override { return S_OK; }
    HRESULT StopStreaming() override { return S_OK; }
    HRESULT AlterQuality(Quality) override { return S_OK; }
    HRESULT SetMediaType(PIN_DIRECTION, const CMediaType*) override { return S_OK; }
    HRESULT CheckConnect(PIN_DIRECTION, IPin*) override { return S_OK; }
    HRESULT BreakConnect(PIN_DIRECTION) override { return S_OK; }
    HRESULT CompleteConnect(PIN_DIRECTION, IPin*) override { return S_OK; }
    HRESULT Receive(IMediaSample*) override { return S_OK; }
    HRESULT EndOfStream() override { return S_OK; }
    HRESULT BeginFlush() override { return S_OK; }
    HRESULT EndFlush() override { return S_OK; }
    HRESULT NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) override { return S_OK; }
    STDMETHODIMP Stop() override { return S_OK; }
    STDMETHODIMP Pause() override { return S_OK; }
    STDMETHODIMP Run(REFERENCE_TIME) override { return S_OK; }
};
static_assert(!std::is_abstract_v<EveryFilter> && !std::is_abstract_v<EveryPin> &&
              !std::is_abstract_v<EveryOutputPin>);

// ---- What is not virtual may be declared anew with another type; a virtual one would not compile
class PinWithOtherMembers : public EveryPin {
  public:
    using EveryPin::EveryPin;
    struct Other {};
    Other IsConnected();
    Other GetConnected();
    Other IsStopped();
    Other IncrementTypeVersion();
    Other CurrentStartTime();
    Other CurrentRate();
    Other Name();
    Other SetReconnectWhenActive(bool);
    Other CanReconnectWhenActive();
    Other AttemptConnection(IPin*, const CMediaType*);
    Other TryMediaTypes(IPin*, const CMediaType*, IEnumMediaTypes*);
    Other AgreeMediaType(IPin*, const CMediaType*);
    Other DisconnectInternal();
    Other PassNotify(Quality&);
    Other IsReadOnly();
    Other IsFlushing();
    Other SampleProps();
};

class FilterWithOtherMembers : public EveryFilter {
  public:
    using EveryFilter::EveryFilter;
    struct Other {};
    Other IsActive();
    Other IsStopped();
    Other NotifyEvent(long, LONG_PTR, LONG_PTR);
    Other GetFilterGraph();
    Other ReconnectPin(IPin*, const AM_MEDIA_TYPE*);
    Other IncrementPinVersion();
    Other InitializeOutputSample(IMediaSample*, IMediaSample**);
    Other GetOwner() const;
};
static_assert(sizeof(PinWithOtherMembers) == sizeof(EveryPin));
static_assert(sizeof(FilterWithOtherMembers) == sizeof(EveryFilter));

// ---- streams.h leaves this name to the header that clients include for it
[[maybe_unused]] int VIDEOINFOHEADER2;

}  // namespace
