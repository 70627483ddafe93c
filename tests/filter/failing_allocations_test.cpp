// The module without memory: each of its requests to the platform refused in turn, while a filter
// is made, asked, connected, run and changed. An error comes back or the call works without,
// nothing is forgotten, and the next try works.
#include "tests/filter/support/failing_allocations.h"
#include "tests/support/graph.h"
#include "tests/support/hand_clock.h"

using namespace tavo_test;

namespace {

TEST_F(FailingAllocationsTest, MakingObjects) {
    for (const CLSID& clsid :
         {CLSID_VantrelFilter, CLSID_ResamplePropertyPage, CLSID_TimeRegulatorPropertyPage}) {
        WithEveryRefusal([&] {
            ComPtr<IClassFactory> factory;
            ComPtr<IUnknown> object;
            FailsOrWorks([&] {
                const HRESULT hr =
                    TheModule().GetClassObject(clsid, IID_IClassFactory, factory.PutVoid());
                if (FAILED(hr)) return hr;
                return factory->CreateInstance(nullptr, IID_IUnknown, object.PutVoid());
            });
            EXPECT_EQ(bool(object), !refused_);
            factory.Reset();
            object.Reset();
            EXPECT_EQ(TheModule().CanUnloadNow(), S_OK) << names_;
            EXPECT_TRUE(TheModule().Create<IUnknown>(clsid)) << names_;
        });
    }
}

TEST_F(FailingAllocationsTest, AskingForPins) {
    WithEveryRefusal([this] {
        const ComPtr<IBaseFilter> filter = CreateFilter();
        ComPtr<IEnumPins> list;
        ComPtr<IEnumPins> clone;
        IPin* pins[2] = {};
        ULONG fetched = 7;
        FailsOrWorks([&] {
            HRESULT hr = filter->EnumPins(list.Put());
            if (SUCCEEDED(hr)) hr = list->Next(2, pins, &fetched);
            if (SUCCEEDED(hr)) hr = list->Clone(clone.Put());
            return hr;
        });
        EXPECT_EQ(bool(clone), !refused_) << names_;
        for (IPin* pin : pins) {
            if (pin) pin->Release();
        }
        EXPECT_TRUE(GetPin(filter.Get(), PINDIR_INPUT)) << names_;
        EXPECT_TRUE(GetPin(filter.Get(), PINDIR_OUTPUT)) << names_;
    });
    WithEveryRefusal([this] {
        const ComPtr<IBaseFilter> filter = CreateFilter();
        ComPtr<IPin> pin;
        FailsOrWorks([&] { return filter->FindPin(L"In", pin.Put()); });
        EXPECT_EQ(bool(pin), !refused_) << names_;
        EXPECT_EQ(filter->FindPin(L"In", pin.Put()), S_OK);
    });
}

// What a call gives out in task memory or as an object.
TEST_F(FailingAllocationsTest, Answers) {
    OnARig([this](FilterRig& rig) { Connect(rig); },
           [this](FilterRig& rig) {
               CAUUID pages = {7, nullptr};
               FailsOrWorks([&] {
                   return rig.filter.As<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages)
                       ->GetPages(&pages);
               });
               EXPECT_EQ(pages.cElems, 2u);
               EXPECT_EQ(pages.pElems == nullptr, refused_);
               CoTaskMemFree(pages.pElems);
           });
    for (const bool isInput : {true, false}) {
        OnARig([this](FilterRig& rig) { Connect(rig); },
               [&](FilterRig& rig) {
                   LPWSTR id = nullptr;
                   IPin* const pin = isInput ? rig.input.Get() : rig.output.Get();
                   FailsOrWorks([&] { return pin->QueryId(&id); });
                   EXPECT_EQ(id == nullptr, refused_);
                   CoTaskMemFree(id);
               });
        OnARig([this](FilterRig& rig) { Connect(rig); },
               [&](FilterRig& rig) {
                   MediaType type;
                   IPin* const pin = isInput ? rig.input.Get() : rig.output.Get();
                   FailsOrWorks([&] { return pin->ConnectionMediaType(type.Put()); });
                   EXPECT_EQ(type->pbFormat == nullptr, refused_);
                   EXPECT_EQ(type->cbFormat == 0, refused_);
               });
    }
}

TEST_F(FailingAllocationsTest, OfferingTypes) {
    OnARig([this](FilterRig& rig) { ASSERT_EQ(rig.ConnectInput(TypeOf(format_, 64, 48)), S_OK); },
           [this](FilterRig& rig) {
               ComPtr<IEnumMediaTypes> list;
               ComPtr<IEnumMediaTypes> clone;
               AM_MEDIA_TYPE* type = nullptr;
               HRESULT result = E_PENDING;
               // The enumerator does not tell no type from no memory.
               Failing([&] {
                   result = rig.output->EnumMediaTypes(list.Put());
                   if (SUCCEEDED(result)) result = list->Next(1, &type, nullptr);
                   if (SUCCEEDED(result)) result = list->Clone(clone.Put());
               });
               EXPECT_EQ(type != nullptr && clone, !refused_) << names_;
               if (type) DeleteType(type);
               EXPECT_EQ(rig.OfferedTypes().size(), 1u) << names_;
           });
}

// The pins' own allocators may fail: the other side has one as well.
TEST_F(FailingAllocationsTest, ConnectingTheInput) {
    OnARig([](FilterRig&) {},
           [this](FilterRig& rig) {
               WorksOrFails([&] { return rig.ConnectInput(TypeOf(format_, 64, 48)); });
               ComPtr<IPin> peer;
               const bool connected = rig.input->ConnectedTo(peer.Put()) == S_OK;
               EXPECT_EQ(connected, SUCCEEDED(result_)) << names_;
               EXPECT_EQ(connected, rig.source->pin().connected()) << names_;
               MediaType type;
               EXPECT_EQ(rig.input->ConnectionMediaType(type.Put()),
                         connected ? S_OK : VFW_E_NOT_CONNECTED);
           });
}

TEST_F(FailingAllocationsTest, ConnectingTheOutput) {
    for (const SinkAllocator allocator :
         {SinkAllocator::kNone, SinkAllocator::kOwn, SinkAllocator::kPlatform}) {
        WithEveryRefusal([&] {
            FilterRig rig({.allocator = allocator});
            rig.settings->SetOutputSize(40, 36);
            ASSERT_EQ(rig.ConnectInput(TypeOf(format_, 64, 48)), S_OK);
            FailsOrWorks([&] { return rig.ConnectOutput(); });
            ComPtr<IPin> peer;
            EXPECT_EQ(rig.output->ConnectedTo(peer.Put()) == S_OK, !refused_) << names_;
            EXPECT_EQ(rig.sink->pin().connected(), !refused_) << names_;
            EXPECT_EQ(rig.OutputSize(), std::pair(40, 36));
            ExpectWorks(rig);
        });
    }
}

TEST_F(FailingAllocationsTest, AllocatorsAndSeeking) {
    OnARig([](FilterRig&) {},
           [this](FilterRig& rig) {
               const auto memory = rig.input.As<IMemInputPin>();
               ComPtr<IMemAllocator> allocator;
               FailsOrWorks([&] { return memory->GetAllocator(allocator.Put()); });
               EXPECT_EQ(bool(allocator), !refused_);
               EXPECT_EQ(memory->GetAllocator(allocator.Put()), S_OK);
           });
    OnARig([](FilterRig&) {},
           [this](FilterRig& rig) {
               ComPtr<IMediaSeeking> seeking;
               FailsOrWorks([&] {
                   return rig.output->QueryInterface(IID_IMediaSeeking, seeking.PutVoid());
               });
               EXPECT_EQ(bool(seeking), !refused_);
               EXPECT_EQ(rig.output->QueryInterface(IID_IMediaSeeking, seeking.PutVoid()), S_OK);
           });
}

// A filter that could not join must not go on with a graph that does not know it.
TEST_F(FailingAllocationsTest, JoiningAGraph) {
    WithEveryRefusal([this] {
        FilterRig rig;
        HRESULT added = E_PENDING;
        {
            Graph graph;
            FailsOrWorks([&] { return added = graph.Add(rig.filter.Get(), L"vantrel"); });
            FILTER_INFO info = {};
            ASSERT_EQ(rig.filter->QueryFilterInfo(&info), S_OK);
            EXPECT_EQ(info.pGraph != nullptr, SUCCEEDED(added)) << names_;
            if (info.pGraph) info.pGraph->Release();
        }
        ExpectWorks(rig);
        rig.Stop();
        EXPECT_EQ(rig.settings->ApplySettings(), 0) << "there is no graph to ask";
    });
}

TEST_F(FailingAllocationsTest, Streaming) {
    for (const double fps : {0.0, 25.0}) {
        OnARig(
            [&](FilterRig& rig) {
                Connect(rig);
                rig.settings->SetFrameRate(fps);
            },
            [&](FilterRig& rig) {
                // Without times the regulator needs a clock, and has one of its own.
                WorksOrFails([&] {
                    HRESULT hr = rig.Start();
                    if (SUCCEEDED(hr)) hr = rig.Deliver(frame_);
                    rig.source->pin().SendBeginFlush();
                    rig.source->pin().SendEndFlush();
                    if (SUCCEEDED(hr)) hr = rig.Deliver(frame_);
                    const HRESULT stopped = rig.Stop();
                    return FAILED(hr) ? hr : stopped;
                });
                EXPECT_EQ(result_, S_OK) << "all of that can be done without";
            });
    }
}

TEST_F(FailingAllocationsTest, ATypeOnASample) {
    const PixelFormat& format = format_;
    const std::vector<BYTE> larger = RandomFrame(format, 100, 80);
    const SampleSpec change = {.bytes = larger,
                               .type = TypeOf(format, 100, 80),
                               .freestanding = SampleConfig{.size = 100 * 80 * 3 / 2}};
    OnARig([this](FilterRig& rig) { Start(rig); },
           [&](FilterRig& rig) {
               FailsOrWorks([&] { return rig.Deliver(change); });
               EXPECT_EQ(rig.samples().size(), refused_ ? 0u : 1u) << names_;
               rig.sink->pin().ClearSamples();
               if (refused_) {
                   ASSERT_EQ(rig.Deliver(frame_), S_OK) << names_;
                   EXPECT_TRUE(Matches(NearestPlanar(format, frame_, {64, 48}, {40, 36}),
                                       rig.samples().at(0).bytes))
                       << names_;
                   rig.sink->pin().ClearSamples();
               }
               ASSERT_EQ(rig.Deliver(change), S_OK) << names_;
               EXPECT_TRUE(Matches(NearestPlanar(format, larger, {100, 80}, {40, 36}),
                                   rig.samples().at(0).bytes))
                   << names_;
           });
}

TEST_F(FailingAllocationsTest, ATypeOnTheSinksBuffer) {
    OnARig([this](FilterRig& rig) { Start(rig); },
           [this](FilterRig& rig) {
               rig.sink->pin().ownAllocator()->AttachTypeOnce(*TypeOf(format_, 32, 24));
               FailsOrWorks([&] { return rig.Deliver(frame_); });
               rig.sink->pin().ClearSamples();
               const Size size = refused_ ? Size{40, 36} : Size{32, 24};
               ASSERT_EQ(rig.Deliver(frame_), S_OK);
               EXPECT_TRUE(Matches(NearestPlanar(format_, frame_, {64, 48}, size),
                                   rig.samples().at(0).bytes))
                   << names_;
           });
}

TEST_F(FailingAllocationsTest, ATypeThatIsProposedNeedsNoMemory) {
    FilterRig rig;
    Start(rig);
    const FailingImports::Window window(imports_, 0, Refuse::AllLater);
    for (IPin* const pin : {rig.input.Get(), rig.output.Get()}) {
        EXPECT_EQ(pin->QueryAccept(TypeOf(format_, 48, 32).Get()), S_OK);
        EXPECT_EQ(pin->QueryAccept(TypeOf(Format("YUY2"), 48, 32).Get()), S_FALSE);
    }
    EXPECT_EQ(window.names(), "");
}

TEST_F(FailingAllocationsTest, ApplyingWithoutASink) {
    OnARig([this](FilterRig& rig) { ASSERT_EQ(rig.ConnectInput(TypeOf(format_, 64, 48)), S_OK); },
           [this](FilterRig& rig) {
               rig.settings->SetOutputSize(40, 36);
               int result = 7;
               const bool refused = Failing([&] { result = rig.settings->ApplySettings(); }) > 0;
               EXPECT_EQ(result == 1, !refused) << result << " " << names_;
               EXPECT_EQ(rig.OutputSize(), std::pair(40, 36));
               EXPECT_EQ(rig.settings->ApplySettings(), 1) << names_;
           });
}

// The graph parts the pins before it finds out that it cannot connect them again.
TEST_F(FailingAllocationsTest, ApplyingInAGraph) {
    WithEveryRefusal([this] {
        FilterRig rig({.allocator = SinkAllocator::kOwn});
        Graph graph;
        ASSERT_EQ(graph.Add(rig.source.Get(), L"source"), S_OK);
        ASSERT_EQ(graph.Add(rig.filter.Get(), L"vantrel"), S_OK);
        ASSERT_EQ(graph.Add(rig.sink.Get(), L"sink"), S_OK);
        Connect(rig);
        rig.settings->SetOutputSize(32, 24);
        int result = 7;
        const int refused = Failing([&] { result = rig.settings->ApplySettings(); });
        EXPECT_TRUE(result == 1 || refused) << result;
        ComPtr<IPin> peer;
        const bool connected = rig.output->ConnectedTo(peer.Put()) == S_OK;
        EXPECT_EQ(connected, rig.sink->pin().connected()) << names_;
        if (refused < 2) {
            EXPECT_TRUE(connected) << names_;
            EXPECT_EQ(rig.settings->ApplySettings(), 1) << names_;
        }
        ExpectWorks(rig);
        rig.Stop();
    });
}

// The stream goes on with a clock of the filter's own.
TEST_F(FailingAllocationsTest, TheClockIsTakenAway) {
    HandClock clock;
    OnARig(
        [&](FilterRig& rig) {
            clock.now = 0;
            rig.settings->SetFrameRate(25.0);
            EXPECT_EQ(rig.filter->SetSyncSource(&clock), S_OK);
            Start(rig);
            clock.now = 10'000'000;
            EXPECT_EQ(rig.Deliver(frame_), S_OK);
        },
        [&](FilterRig& rig) {
            WorksOrFails([&] { return rig.filter->SetSyncSource(nullptr); });
            EXPECT_EQ(result_, S_OK);
            EXPECT_TRUE(SUCCEEDED(rig.Deliver(frame_)));
            EXPECT_EQ(clock.references, 1);
        });
}

}  // namespace
