// The transform filter: its pins, and what it sees while they connect.
#include <thread>
#include <vector>

#include "tests/dshow/fakes.h"
#include "tests/dshow/transform_probe.h"
#include "tests/support/graph.h"
#include "tests/support/nothrow_new.h"

using namespace tavo_test;

namespace {

class TransformConnect : public TransformTest {};

TEST_F(TransformConnect, PinsAreMadeOnFirstUse) {
    EXPECT_EQ(filter_->m_pInput, nullptr);
    EXPECT_EQ(filter_->m_pOutput, nullptr);
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 1);
    EXPECT_EQ(filter_->GetPinCount(), 2);
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 1);
    EXPECT_NE(filter_->GetPin(0), nullptr);
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 3);
    EXPECT_EQ(filter_->GetPin(0), filter_->m_pInput);
    EXPECT_EQ(filter_->GetPin(1), filter_->m_pOutput);
    EXPECT_EQ(filter_->GetPin(2), nullptr);
    EXPECT_EQ(filter_->GetPin(-1), nullptr);
    EXPECT_EQ(RefCount(filter_.Get()), 1u);
    ComPtr<IEnumPins> pins;
    EXPECT_EQ(filter_->EnumPins(pins.Put()), S_OK);
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 3);
    EXPECT_STREQ(filter_->input()->Name(), L"XForm In");
    EXPECT_STREQ(filter_->output()->Name(), L"XForm Out");
}

TEST_F(TransformConnect, BothPinsOrNeither) {
    for (int after = 0;; ++after) {
        ComPtr<ProbeTransform> filter = MakeTransform();
        {
            FailNothrowNew fail(after);
            const CBasePin* pin = filter->GetPin(0);
            if (fail.refused() == 0) break;
            EXPECT_EQ(pin, nullptr) << after;
        }
        EXPECT_EQ(filter->m_pInput, nullptr);
        EXPECT_EQ(filter->m_pOutput, nullptr);
        EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 2) << after;  // filter_ and filter
        {
            IPin* found = reinterpret_cast<IPin*>(1);
            FailNothrowNew fail(after);
            EXPECT_EQ(filter->FindPin(L"In", &found), E_OUTOFMEMORY);
            EXPECT_EQ(found, nullptr);
        }
        EXPECT_NE(filter->GetPin(0), nullptr);  // with memory it goes on
    }
}

TEST_F(TransformConnect, PinsAreMadeOnceFromSeveralThreads) {
    CBasePin* seen[4] = {};
    std::vector<std::thread> threads;
    for (CBasePin*& pin : seen) threads.emplace_back([&] { pin = filter_->GetPin(1); });
    for (std::thread& thread : threads) thread.join();
    for (CBasePin* pin : seen) EXPECT_EQ(pin, filter_->m_pOutput);
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 3);
}

TEST_F(TransformConnect, FindPinGoesByIdNotName) {
    ComPtr<IPin> pin;
    EXPECT_EQ(filter_->FindPin(L"In", nullptr), E_POINTER);
    EXPECT_EQ(filter_->FindPin(L"In", pin.Put()), S_OK);
    EXPECT_EQ(pin.Get(), static_cast<IPin*>(filter_->input()));
    EXPECT_EQ(RefCount(filter_.Get()), 2u);
    EXPECT_EQ(filter_->FindPin(L"Out", pin.Put()), S_OK);
    EXPECT_EQ(pin.Get(), static_cast<IPin*>(filter_->output()));
    pin.Reset();
    for (const wchar_t* id : {L"XForm In", L"in", L"", static_cast<const wchar_t*>(nullptr)}) {
        IPin* none = filter_->input();
        EXPECT_EQ(filter_->FindPin(id, &none), VFW_E_NOT_FOUND);
        EXPECT_EQ(none, nullptr);
    }
    for (CBasePin* p : {filter_->GetPin(0), filter_->GetPin(1)}) {
        LPWSTR id = nullptr;
        EXPECT_EQ(p->QueryId(nullptr), E_POINTER);
        ASSERT_EQ(p->QueryId(&id), S_OK);
        EXPECT_STREQ(id, p == filter_->GetPin(0) ? L"In" : L"Out");
        CoTaskMemFree(id);
    }
}

TEST_F(TransformConnect, Interfaces) {
    for (REFIID iid : {IID_IMediaSeeking, IID_IMediaPosition, IID_IQualityControl, IID_IPin}) {
        void* none = &none;
        EXPECT_EQ(filter_->QueryInterface(iid, &none), E_NOINTERFACE);
        EXPECT_EQ(none, nullptr);
    }
    CLSID clsid = {};
    EXPECT_EQ(filter_->GetClassID(&clsid), S_OK);
    EXPECT_TRUE(clsid == kTransformClass);
}

TEST_F(TransformConnect, InputConnects) {
    ASSERT_EQ(ConnectInput(), S_OK);
    EXPECT_EQ(log_.Text(), "CheckConnect(IN) CheckInputType SetMediaType(IN) CompleteConnect(IN)");
    EXPECT_EQ(MediaType(filter_->input()->CurrentMediaType()), type_);
    EXPECT_NE(source_->pin().allocator(), nullptr);
}

TEST_F(TransformConnect, InputConnectsWhileTheOutputIs) {
    ConnectBoth();
    ASSERT_EQ(filter_->input()->Disconnect(), S_OK);
    ASSERT_EQ(source_->pin().Disconnect(), S_OK);
    EXPECT_EQ(log_.Text(), "BreakConnect(IN)+");
    log_.Clear();
    ASSERT_EQ(ConnectInput(), S_OK);
    EXPECT_EQ(log_.Text(),
              "CheckConnect(IN) CheckInputType CheckTransform SetMediaType(IN) "
              "CompleteConnect(IN)");
    EXPECT_EQ(filter_->checkedInput, type_);
    EXPECT_EQ(filter_->checkedOutput, type_);
}

TEST_F(TransformConnect, InputTypeRefused) {
    MakeSource({.types = {type_, other_}});
    filter_->log.Inject("CheckInputType", S_FALSE);
    EXPECT_EQ(ConnectInput(), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(log_.Text(),
              "CheckConnect(IN) CheckInputType BreakConnect(IN)- "
              "CheckConnect(IN) CheckInputType BreakConnect(IN)-");
    EXPECT_EQ(source_->references(), 1);
    filter_->log.ClearInjections();
    filter_->log.Inject("CheckConnect(IN)", E_ABORT);
    log_.Clear();
    EXPECT_EQ(filter_->input()->ReceiveConnection(&source_->pin(), type_.Get()), E_ABORT);
    EXPECT_EQ(log_.Text(), "CheckConnect(IN) BreakConnect(IN)-");
}

TEST_F(TransformConnect, InputFailsLate) {
    MakeSource();
    for (const char* step : {"SetMediaType(IN)", "CompleteConnect(IN)"}) {
        filter_->log.ClearInjections();
        filter_->log.Inject(step, E_ABORT);
        log_.Clear();
        EXPECT_EQ(ConnectInput(), E_ABORT);
        std::string expected = "CheckConnect(IN) CheckInputType SetMediaType(IN) ";
        if (std::string(step) == "CompleteConnect(IN)") expected += "CompleteConnect(IN) ";
        EXPECT_EQ(log_.Text(), expected + "BreakConnect(IN)-");
        EXPECT_EQ(source_->references(), 1);
    }
}

TEST_F(TransformConnect, OutputConnects) {
    ASSERT_EQ(ConnectInput(), S_OK);
    filter_->outputs = {type_};
    log_.Clear();
    ASSERT_EQ(ConnectOutput(), S_OK);
    EXPECT_EQ(log_.Text(),
              "sink.EnumMediaTypes GetMediaType(0) CheckConnect(OUT) CheckTransform "
              "SetMediaType(OUT) sink.ReceiveConnection CompleteConnect(OUT) "
              "sink.GetAllocatorRequirements sink.GetAllocator DecideBufferSize "
              "sink.NotifyAllocator");
    EXPECT_FALSE(sink_->pin().readOnly());
    EXPECT_EQ(MediaType(filter_->output()->CurrentMediaType()), type_);
}

TEST_F(TransformConnect, SinkRefuses) {
    ASSERT_EQ(ConnectInput(), S_OK);
    filter_->outputs = {type_};
    MakeSink();
    sink_->pin().calls().Inject("ReceiveConnection", VFW_E_TYPE_NOT_ACCEPTED);
    log_.Clear();
    EXPECT_EQ(ConnectOutput(), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_EQ(log_.Text(),
              "sink.EnumMediaTypes GetMediaType(0) CheckConnect(OUT) CheckTransform "
              "SetMediaType(OUT) sink.ReceiveConnection BreakConnect(OUT)+ GetMediaType(1) "
              "BreakConnect(OUT)-");
}

TEST_F(TransformConnect, DecideBufferSizeFails) {
    ASSERT_EQ(ConnectInput(), S_OK);
    filter_->outputs = {type_};
    MakeSink();
    filter_->log.Inject("DecideBufferSize", E_FAIL);
    log_.Clear();
    EXPECT_EQ(ConnectOutput(), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_EQ(log_.Text(),
              "sink.EnumMediaTypes GetMediaType(0) CheckConnect(OUT) CheckTransform "
              "SetMediaType(OUT) sink.ReceiveConnection CompleteConnect(OUT) "
              "sink.GetAllocatorRequirements sink.GetAllocator DecideBufferSize DecideBufferSize "
              "sink.Disconnect BreakConnect(OUT)+ GetMediaType(1) BreakConnect(OUT)-");
    EXPECT_FALSE(sink_->pin().connected());
    filter_->log.Inject("DecideBufferSize", E_ABORT);
    EXPECT_EQ(ConnectOutput(), E_ABORT);
}

TEST_F(TransformConnect, OutputFailsLate) {
    ASSERT_EQ(ConnectInput(), S_OK);
    filter_->outputs = {type_};
    MakeSink();
    filter_->log.Inject("SetMediaType(OUT)", E_ABORT);
    log_.Clear();
    EXPECT_EQ(ConnectOutput(), E_ABORT);
    EXPECT_EQ(log_.Text(),
              "sink.EnumMediaTypes GetMediaType(0) CheckConnect(OUT) CheckTransform "
              "SetMediaType(OUT) BreakConnect(OUT)+ GetMediaType(1) BreakConnect(OUT)-");
    filter_->log.ClearInjections();
    filter_->log.Inject("CompleteConnect(OUT)", E_ABORT);
    log_.Clear();
    EXPECT_EQ(ConnectOutput(), E_ABORT);
    EXPECT_EQ(log_.Text(),
              "sink.EnumMediaTypes GetMediaType(0) CheckConnect(OUT) CheckTransform "
              "SetMediaType(OUT) sink.ReceiveConnection CompleteConnect(OUT) sink.Disconnect "
              "BreakConnect(OUT)+ GetMediaType(1) BreakConnect(OUT)-");
    EXPECT_EQ(sink_->references(), 1);
}

TEST_F(TransformConnect, OutputWithoutInput) {
    filter_->outputs = {type_};
    EXPECT_EQ(ConnectOutput(), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_EQ(log_.Text(), "sink.EnumMediaTypes BreakConnect(OUT)-");
    EXPECT_EQ(ConnectOutput(type_.Get()), E_UNEXPECTED);
    EXPECT_EQ(filter_->output()->QueryAccept(type_.Get()), S_FALSE);
    EXPECT_EQ(filter_->log.Count("CheckTransform"), 0);
    CMediaType type;
    EXPECT_EQ(filter_->output()->GetMediaType(0, &type), VFW_S_NO_MORE_ITEMS);
    const CMediaType whole(*type_);
    EXPECT_EQ(filter_->output()->CheckMediaType(&whole), E_INVALIDARG);
}

TEST_F(TransformConnect, TypeChecks) {
    const CMediaType type(*type_);
    filter_->log.Inject("CheckInputType", HRESULT(5));
    EXPECT_EQ(filter_->input()->CheckMediaType(&type), HRESULT(5));
    filter_->log.ClearInjections();
    ConnectBoth();
    const CMediaType other(*other_);
    filter_->log.Inject("CheckTransform", S_FALSE);
    EXPECT_EQ(filter_->input()->CheckMediaType(&other), S_FALSE);
    EXPECT_EQ(filter_->checkedInput, other_);
    EXPECT_EQ(filter_->checkedOutput, type_);
    EXPECT_EQ(filter_->output()->CheckMediaType(&other), S_FALSE);
    EXPECT_EQ(filter_->checkedInput, type_);
    EXPECT_EQ(filter_->checkedOutput, other_);
}

TEST_F(TransformConnect, InputOffersNothing) {
    ComPtr<IEnumMediaTypes> types;
    ASSERT_EQ(filter_->input()->EnumMediaTypes(types.Put()), S_OK);
    AM_MEDIA_TYPE* type = nullptr;
    EXPECT_EQ(types->Next(1, &type, nullptr), S_FALSE);
}

TEST_F(TransformConnect, OutputOffersTheFiltersTypes) {
    filter_->outputs = {type_, other_};
    ASSERT_EQ(ConnectInput(), S_OK);
    ComPtr<IEnumMediaTypes> types;
    ASSERT_EQ(filter_->output()->EnumMediaTypes(types.Put()), S_OK);
    AM_MEDIA_TYPE* type[3] = {};
    ULONG fetched = 0;
    EXPECT_EQ(types->Next(3, type, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 2u);
    EXPECT_EQ(MediaType(*type[0]), type_);
    EXPECT_EQ(MediaType(*type[1]), other_);
    DeleteType(type[0]);
    DeleteType(type[1]);
}

TEST_F(TransformConnect, InThePlatformsGraph) {
    filter_->outputs = {type_};
    MakeSource();
    MakeSink();
    Graph graph;
    ASSERT_EQ(graph.Add(source_.Get(), L"source"), S_OK);
    ASSERT_EQ(graph.Add(filter_.Get(), L"filter"), S_OK);
    ASSERT_EQ(graph.Add(sink_.Get(), L"sink"), S_OK);
    const ULONG added = RefCount(filter_.Get());
    EXPECT_EQ(added, 3u);  // the test, the graph helper, the graph
    ASSERT_EQ(graph.Connect(&source_->pin(), filter_->input()), S_OK);
    ASSERT_EQ(graph.Connect(filter_->output(), &sink_->pin()), S_OK);
    ASSERT_EQ(graph.Run(), S_OK);
    EXPECT_EQ(source_->pin().Deliver({.start = 0, .stop = 1, .bytes = bytes_}), S_OK);
    EXPECT_EQ(source_->pin().SendEndOfStream(), S_OK);
    EXPECT_EQ(graph.Remove(filter_.Get()), VFW_E_NOT_STOPPED);
    ASSERT_EQ(graph.Stop(), S_OK);
    ASSERT_EQ(sink_->pin().samples().size(), 1u);
    EXPECT_EQ(sink_->pin().samples()[0].bytes, bytes_);
    EXPECT_EQ(graph.Remove(filter_.Get()), S_OK);
    EXPECT_FALSE(filter_->input()->IsConnected());
    EXPECT_FALSE(filter_->output()->IsConnected());
    EXPECT_EQ(filter_->GetFilterGraph(), nullptr);
    EXPECT_EQ(RefCount(filter_.Get()), 1u);
}

TEST_F(TransformConnect, ReconnectThroughTheGraph) {
    filter_->outputs = {type_};
    MakeSource();
    MakeSink();
    Graph graph;
    graph.Add(source_.Get(), L"source");
    graph.Add(filter_.Get(), L"filter");
    graph.Add(sink_.Get(), L"sink");
    ASSERT_EQ(graph.Connect(&source_->pin(), filter_->input()), S_OK);
    ASSERT_EQ(graph.Connect(filter_->output(), &sink_->pin()), S_OK);
    EXPECT_EQ(filter_->ReconnectPin(filter_->output(), other_.Get()), S_OK);
    EXPECT_EQ(sink_->pin().connectionType(), other_);
    EXPECT_EQ(MediaType(filter_->output()->CurrentMediaType()), other_);
}

TEST_F(TransformConnect, AggregatedFilter) {
    FakeOuter outer;
    auto* filter = new ProbeTransform(&outer);
    filter->NonDelegatingAddRef();
    IPin* pin = filter->GetPin(1);
    pin->AddRef();
    EXPECT_EQ(outer.references, 1);
    PIN_INFO info = {};
    EXPECT_EQ(pin->QueryPinInfo(&info), S_OK);
    EXPECT_EQ(outer.references, 2);
    info.pFilter->Release();
    pin->Release();
    ComPtr<IEnumPins> pins;
    EXPECT_EQ(filter->EnumPins(pins.Put()), S_OK);
    EXPECT_EQ(outer.references, 1);
    pins.Reset();
    EXPECT_EQ(outer.references, 0);
    EXPECT_EQ(filter->NonDelegatingRelease(), 0u);
}

}  // namespace
