// The filter as a COM object and as a part of a graph, its clock, and the module's class objects.
#include <ocidl.h>

#include "tests/filter/random/sequence.h"

namespace tavo_test {

namespace {

GUID AnyIid(Sequence& s) {
    if (s.dice.OneIn(4)) {
        GUID any = {};
        any.Data1 = s.dice.random();
        any.Data2 = static_cast<unsigned short>(s.dice.random());
        return any;
    }
    return s.dice.Of<GUID>({IID_IUnknown,
                            IID_IBaseFilter,
                            IID_IMediaFilter,
                            IID_IPersist,
                            IID_IPersistStream,
                            IID_IPersistStreamInit,
                            IID_IPersistPropertyBag,
                            IID_IPin,
                            IID_IMemInputPin,
                            IID_IQualityControl,
                            IID_IMediaSeeking,
                            IID_IMediaPosition,
                            IID_IVantrelSettings,
                            IID_ISpecifyPropertyPages,
                            IID_IAMovieSetup,
                            IID_IAMFilterMiscFlags,
                            IID_IReferenceClock,
                            IID_IDispatch,
                            IID_IMarshal,
                            IID_IClassFactory,
                            IID_IPropertyPage,
                            IID_IMemAllocator,
                            IID_IStream,
                            IID_IAMStreamConfig,
                            IID_IAMBufferNegotiation,
                            IID_IFilterGraph});
}

// What is given is counted, and is the same object.
void QueryOf(Sequence& s, IUnknown* object) {
    const GUID iid = AnyIid(s);
    ComPtr<IUnknown> given;
    const HRESULT result = s.Call("QueryInterface", {S_OK, E_NOINTERFACE},
                                  [&] { return object->QueryInterface(iid, given.PutVoid()); });
    s.Check(bool(given) == (result == S_OK), "an interface exactly with success");
    // The platform's seeking object of a pin is a part of the pin.
    if (given) {
        const auto identity = given.As<IUnknown>(IID_IUnknown);
        const auto own = ComPtr<IUnknown>(object).As<IUnknown>(IID_IUnknown);
        s.Check(identity.Get() == own.Get(), "the same object");
    }
}

void Query(Sequence& s) {
    QueryOf(s, s.dice.Of<IUnknown*>({s.filter.Get(), s.input.Get(), s.output.Get()}));
}

void Pins(Sequence& s) {
    ComPtr<IEnumPins> list;
    const HRESULT made = s.Call("EnumPins", {S_OK}, [&] { return s.filter->EnumPins(list.Put()); });
    if (SUCCEEDED(made)) {
        IPin* pins[3] = {};
        ULONG fetched = 0;
        const HRESULT next = s.Call("Next of pins", {S_OK, S_FALSE, VFW_E_ENUM_OUT_OF_SYNC},
                                    [&] { return list->Next(3, pins, &fetched); });
        s.Check(
            FAILED(next) || (fetched == 2 && pins[0] == s.input.Get() && pins[1] == s.output.Get()),
            "the two pins");
        for (IPin* pin : pins) {
            if (pin) pin->Release();
        }
    }
    ComPtr<IPin> found;
    const wchar_t* const id = s.dice.Of({L"In", L"Out", L"Input", L""});
    s.Call("FindPin", {S_OK, VFW_E_NOT_FOUND}, [&] { return s.filter->FindPin(id, found.Put()); });
    IPin* const pin = s.dice.OneIn(2) ? s.input.Get() : s.output.Get();
    LPWSTR own = nullptr;
    s.Call("QueryId", {S_OK}, [&] { return pin->QueryId(&own); });
    CoTaskMemFree(own);
    PIN_INFO info = {};
    s.Call("QueryPinInfo", {S_OK}, [&] { return pin->QueryPinInfo(&info); });
    s.Check(info.pFilter == s.filter.Get(), "the pin's filter");
    if (info.pFilter) info.pFilter->Release();
    ULONG count = 0;
    s.Call("QueryInternalConnections", {E_NOTIMPL},
           [&] { return pin->QueryInternalConnections(nullptr, &count); });
}

void Answers(Sequence& s) {
    CLSID clsid = {};
    s.Call("GetClassID", {S_OK}, [&] { return s.filter->GetClassID(&clsid); });
    s.Check(clsid == CLSID_VantrelFilter, "the filter's class");
    LPWSTR vendor = nullptr;
    s.Call("QueryVendorInfo", {E_NOTIMPL}, [&] { return s.filter->QueryVendorInfo(&vendor); });
    CAUUID list = {};
    const auto owner = s.filter.As<ISpecifyPropertyPages>();
    const HRESULT given = s.Call("GetPages", {S_OK}, [&] { return owner->GetPages(&list); });
    s.Check(list.cElems == 2 && (list.pElems != nullptr) == SUCCEEDED(given), "two pages");
    CoTaskMemFree(list.pElems);
    const auto setup = s.filter.As<IAMovieSetup>();
    s.Call("Register", {S_FALSE}, [&] { return setup->Register(); });
}

void Join(Sequence& s) {
    IFilterGraph* const graph = s.dice.OneIn(3) ? nullptr : s.graph.graph();
    const std::wstring name(static_cast<size_t>(s.dice.Of({0, 5, 127, 128, 300})), L'n');
    const wchar_t* const given = s.dice.OneIn(4) ? nullptr : name.c_str();
    s.Call("JoinFilterGraph", {S_OK}, [&] {
        const HRESULT result = s.filter->JoinFilterGraph(graph, given);
        if (SUCCEEDED(result)) s.expected.graph = graph;
        s.expected.name = given && SUCCEEDED(result) ? name.substr(0, 127) : L"";
        return result;
    });
}

void ChangeClock(Sequence& s) {
    static const auto system = CreateObject<IReferenceClock>(CLSID_SystemClock);
    IReferenceClock* const clock = s.dice.Of<IReferenceClock*>({nullptr, &s.clock, system.Get()});
    s.Call("SetSyncSource", {S_OK}, [&] {
        s.expected.clock = clock;
        return s.filter->SetSyncSource(clock);
    });
}

// Every method says so, and goes no further.
void NullPointers(Sequence& s) {
    const auto memory = s.input.As<IMemInputPin>();
    IPin* const pin = s.dice.OneIn(2) ? s.input.Get() : s.output.Get();
    IBaseFilter* const filter = s.filter.Get();
    s.Call("a null pointer", {E_POINTER}, [&] {
        switch (s.dice.Below(20)) {
            case 0: return filter->GetClassID(nullptr);
            case 1: return filter->GetState(0, nullptr);
            case 2: return filter->GetSyncSource(nullptr);
            case 3: return filter->EnumPins(nullptr);
            case 4: return filter->FindPin(L"In", nullptr);
            case 5: return filter->QueryFilterInfo(nullptr);
            case 6: return filter->QueryInterface(IID_IUnknown, nullptr);
            case 7: return pin->ConnectedTo(nullptr);
            case 8: return pin->ConnectionMediaType(nullptr);
            case 9: return pin->QueryPinInfo(nullptr);
            case 10: return pin->QueryDirection(nullptr);
            case 11: return pin->QueryId(nullptr);
            case 12: return pin->QueryAccept(nullptr);
            case 13: return pin->EnumMediaTypes(nullptr);
            case 14: return pin->Connect(nullptr, nullptr);
            case 15: return pin->ReceiveConnection(nullptr, nullptr);
            case 16: return pin->QueryInterface(IID_IPin, nullptr);
            case 17: return memory->GetAllocator(nullptr);
            case 18: return memory->NotifyAllocator(nullptr, FALSE);
            default: return s.filter.As<ISpecifyPropertyPages>()->GetPages(nullptr);
        }
    });
}

// Whoever takes the module's objects into his own.
class Outer final : public IUnknown {
  public:
    virtual ~Outer() = default;
    long references = 0;
    STDMETHODIMP QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references); }
};

void Factory(Sequence& s) {
    const CLSID clsid = s.dice.OneIn(8)
                            ? AnyIid(s)
                            : s.dice.Of<CLSID>({CLSID_VantrelFilter, CLSID_ResamplePropertyPage,
                                                CLSID_TimeRegulatorPropertyPage});
    ComPtr<IClassFactory> factory;
    s.Call("GetClassObject", {S_OK, CLASS_E_CLASSNOTAVAILABLE},
           [&] { return TheModule().GetClassObject(clsid, IID_IClassFactory, factory.PutVoid()); });
    if (factory) {
        QueryOf(s, factory.Get());
        Outer outer;
        const bool isPart = s.dice.OneIn(3);
        const GUID iid = s.dice.OneIn(2) ? IID_IUnknown : AnyIid(s);
        ComPtr<IUnknown> object;
        const HRESULT made = s.Call("CreateInstance", {S_OK, E_NOINTERFACE}, [&] {
            return factory->CreateInstance(isPart ? &outer : nullptr, iid, object.PutVoid());
        });
        s.Check(bool(object) == (made == S_OK), "an object exactly with success");
        object.Reset();
        s.Check(outer.references == 0, "the owner has its references back");
        const bool lock = s.dice.OneIn(2);
        if (lock || s.locks > 0) {
            s.locks += lock ? 1 : -1;
            s.Call("LockServer", {S_OK}, [&] { return factory->LockServer(lock); });
        }
    }
    s.Call("CanUnloadNow", {S_FALSE}, [] { return TheModule().CanUnloadNow(); });
}

constexpr Act kActs[] = {{"query", 4, Query},       {"pins", 2, Pins},
                         {"answers", 1, Answers},   {"join", 4, Join},
                         {"clock", 4, ChangeClock}, {"null", 3, NullPointers},
                         {"factory", 2, Factory}};

}  // namespace

std::span<const Act> ObjectActs() { return kActs; }

}  // namespace tavo_test
