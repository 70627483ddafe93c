// Types that are proposed and offered; pins that connect and part, also as nobody should.
#include "tests/filter/random/sequence.h"
#include "tests/filter/support/mutated_types.h"

namespace tavo_test {

namespace {

void Accept(Sequence& s) {
    IPin* const pin = s.dice.OneIn(2) ? s.input.Get() : s.output.Get();
    const MediaType type = s.AnyType();
    s.Call("QueryAccept", {S_OK, S_FALSE}, [&] { return pin->QueryAccept(type.Get()); });
}

void Enumerate(Sequence& s) {
    IPin* const pin = s.dice.OneIn(4) ? s.input.Get() : s.output.Get();
    ComPtr<IEnumMediaTypes> list;
    const HRESULT made =
        s.Call("EnumMediaTypes", {S_OK}, [&] { return pin->EnumMediaTypes(list.Put()); });
    if (FAILED(made)) {
        s.Check(!list, "no list");
        return;
    }
    for (int i = s.dice.Below(3); i >= 0; --i) {
        AM_MEDIA_TYPE* types[3] = {};
        ULONG fetched = 7;
        const auto wanted = static_cast<ULONG>(s.dice.Below(3) + 1);
        const HRESULT next = s.Call(
            "Next", {S_OK, S_FALSE, VFW_E_ENUM_OUT_OF_SYNC, E_UNEXPECTED, E_INVALIDARG},
            [&] { return list->Next(wanted, types, &fetched); }, kMaySettleSize);
        s.Check(FAILED(next) || fetched <= wanted, "as many types as asked for");
        for (AM_MEDIA_TYPE* type : types) {
            s.Check(!type || (type->pbFormat && type->cbFormat), "a whole type is offered");
            if (type) DeleteType(type);
        }
        if (s.dice.OneIn(2)) s.Call("Reset", {S_OK}, [&] { return list->Reset(); });
        if (s.dice.OneIn(2)) {
            s.Call(
                "Skip", {S_OK, S_FALSE, VFW_E_ENUM_OUT_OF_SYNC, E_INVALIDARG, E_UNEXPECTED},
                [&] { return list->Skip(static_cast<ULONG>(s.dice.Below(3))); }, kMaySettleSize);
        }
        ComPtr<IEnumMediaTypes> clone;
        if (s.dice.OneIn(3)) {
            s.Call("Clone", {S_OK, VFW_E_ENUM_OUT_OF_SYNC},
                   [&] { return list->Clone(clone.Put()); });
        }
    }
}

void ConnectInput(Sequence& s) {
    const MediaType type = s.AnyType();
    s.source->pin().offered = {s.AnyType()};
    const MediaType partial = MakePartialType(MEDIATYPE_Video);
    const AM_MEDIA_TYPE* const wanted = s.dice.OneIn(4) ? partial.Get() : type.Get();
    s.Call(
        "connect the source",
        {S_OK, VFW_E_TYPE_NOT_ACCEPTED, VFW_E_ALREADY_CONNECTED, VFW_E_NOT_STOPPED, E_INVALIDARG,
         VFW_E_NO_ACCEPTABLE_TYPES},
        [&] { return s.source->pin().Connect(s.input.Get(), wanted); }, kMaySettleSize);
}

void ConnectOutput(Sequence& s) {
    const MediaType type = s.AnyType();
    const MediaType partial = MakePartialType(s.dice.OneIn(4) ? MEDIATYPE_Audio : MEDIATYPE_Video);
    const AM_MEDIA_TYPE* const wanted =
        s.dice.Of<const AM_MEDIA_TYPE*>({nullptr, nullptr, nullptr, type.Get(), partial.Get()});
    if (s.dice.OneIn(4)) s.sink->pin().offered = {s.AnyType()};
    const HRESULT connected = s.Call(
        "connect the sink",
        {S_OK, VFW_E_NO_ACCEPTABLE_TYPES, VFW_E_TYPE_NOT_ACCEPTED, VFW_E_ALREADY_CONNECTED,
         VFW_E_NOT_STOPPED, E_UNEXPECTED, E_INVALIDARG, E_OUTOFMEMORY},
        [&] { return s.output->Connect(&s.sink->pin(), wanted); }, kMaySettleSize);
    Sequence::totals.connections += connected == S_OK;
}

// The whole way, as most sequences should come that far.
void ConnectAll(Sequence& s) {
    if (s.expected.state != State_Stopped) return;
    if (!s.source->pin().connected()) {
        s.Call("format back", {1}, [&] {
            s.expected.format = 0;
            return s.settings->SetOutputFormat(0);
        });
        s.Call("type back", {1}, [&] {
            s.expected.type = 0;
            return s.settings->SetVideoType(0);
        });
        s.Call("size back", {1}, [&] {
            s.expected.width = 2 * (s.dice.Below(40) + 1);
            s.expected.height = 2 * (s.dice.Below(30) + 1);
            return s.settings->SetOutputSize(s.expected.width, s.expected.height);
        });
        ConnectInput(s);
    }
    if (!s.sink->pin().connected()) ConnectOutput(s);
}

void ReceiveConnection(Sequence& s) {
    IPin* const connector = s.dice.Of<IPin*>(
        {&s.source->pin(), &s.source->pin(), s.output.Get(), &s.sink->pin(), nullptr});
    const MediaType type = s.AnyType();
    const AM_MEDIA_TYPE* const proposed = s.dice.OneIn(8) ? nullptr : type.Get();
    if (connector == s.output.Get()) return;  // a filter that holds itself is never released
    s.Call(
        "ReceiveConnection",
        {S_OK, E_POINTER, VFW_E_ALREADY_CONNECTED, VFW_E_NOT_STOPPED, VFW_E_INVALID_DIRECTION,
         VFW_E_TYPE_NOT_ACCEPTED, E_INVALIDARG},
        [&] { return s.input->ReceiveConnection(connector, proposed); }, kMaySettleSize);
}

void WrongWay(Sequence& s) {
    const MediaType type = s.AnyType();
    if (s.dice.OneIn(2)) {
        s.Call(
            "Connect of the input",
            {VFW_E_INVALID_DIRECTION, VFW_E_ALREADY_CONNECTED, VFW_E_NOT_STOPPED, E_UNEXPECTED,
             VFW_E_NO_ACCEPTABLE_TYPES, VFW_E_TYPE_NOT_ACCEPTED},
            [&] { return s.input->Connect(&s.sink->pin(), type.Get()); }, kMaySettleSize);
    } else {
        s.Call(
            "Connect of the output to a source",
            {VFW_E_INVALID_DIRECTION, VFW_E_ALREADY_CONNECTED, VFW_E_NOT_STOPPED, E_UNEXPECTED},
            [&] { return s.output->Connect(&s.source->pin(), type.Get()); }, kMaySettleSize);
    }
}

void Disconnect(Sequence& s) {
    const std::initializer_list<HRESULT> allowed = {S_OK, S_FALSE, VFW_E_NOT_STOPPED};
    switch (s.dice.Below(4)) {
        case 0:
            s.Call("Disconnect the input", allowed, [&] { return s.input->Disconnect(); });
            break;
        case 1:
            s.Call("Disconnect the output", allowed, [&] { return s.output->Disconnect(); });
            break;
        case 2:
            s.Call("Disconnect the input", allowed, [&] { return s.input->Disconnect(); });
            s.source->Stop();
            s.source->pin().Disconnect();
            break;
        default:
            s.Call("Disconnect the output", allowed, [&] { return s.output->Disconnect(); });
            s.sink->Stop();
            s.sink->pin().Disconnect();
            break;
    }
}

void Allocator(Sequence& s) {
    const auto memory = s.input.As<IMemInputPin>();
    ComPtr<IMemAllocator> allocator;
    s.Call("GetAllocator", {S_OK}, [&] { return memory->GetAllocator(allocator.Put()); });
    ALLOCATOR_PROPERTIES wishes = {};
    s.Call("GetAllocatorRequirements", {E_NOTIMPL},
           [&] { return memory->GetAllocatorRequirements(&wishes); });
    s.Call("ReceiveCanBlock", {S_OK, S_FALSE}, [&] { return memory->ReceiveCanBlock(); });
    if (s.expected.state != State_Stopped || !allocator) return;
    s.Call("NotifyAllocator", {S_OK},
           [&] { return memory->NotifyAllocator(allocator.Get(), s.dice.OneIn(2)); });
}

constexpr Act kActs[] = {{"accept", 5, Accept},
                         {"enumerate", 4, Enumerate},
                         {"connect the input", 6, ConnectInput},
                         {"connect the output", 8, ConnectOutput},
                         {"connect all", 20, ConnectAll},
                         {"receive a connection", 3, ReceiveConnection},
                         {"wrong way", 2, WrongWay},
                         {"disconnect", 4, Disconnect},
                         {"allocator", 2, Allocator}};

}  // namespace

std::span<const Act> NegotiationActs() { return kActs; }

}  // namespace tavo_test
