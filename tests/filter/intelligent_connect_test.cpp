// The graph's search for filters, which must never come upon this one.
#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/support/graph.h"

using namespace tavo_test;

namespace {

class IntelligentConnect : public FilterTest {
  protected:
    IntelligentConnect() { checksTaskMemory_ = false; }

    const PixelFormat& format_ = Format("YV12");
};

// Registered for as long as the object lives.
class Registration {
  public:
    Registration() { EXPECT_EQ(TheModule().RegisterServer(), S_OK); }
    ~Registration() { EXPECT_EQ(TheModule().UnregisterServer(), S_OK); }
};

int CountFilters(const Graph& graph) {
    ComPtr<IEnumFilters> filters;
    EXPECT_EQ(graph.builder()->EnumFilters(filters.Put()), S_OK);
    int count = 0;
    ComPtr<IBaseFilter> filter;
    while (filters->Next(1, filter.Put(), nullptr) == S_OK) ++count;
    filter.Detach();
    return count;
}

TEST_F(IntelligentConnect, NeverPicksTheFilter) {
    const Registration registration;
    const MediaType small = TypeOf(format_, 32, 24);
    auto source = TestSource::Create({.types = {TypeOf(format_, 64, 48)}});
    auto sink = TestSink::Create({.accept = [](const AM_MEDIA_TYPE& type) {
        const MediaType asked(type);
        return asked.Bitmap() && asked.Bitmap()->biWidth == 32;
    }});
    Graph graph;
    ASSERT_EQ(graph.Add(source.Get(), L"source"), S_OK);
    ASSERT_EQ(graph.Add(sink.Get(), L"sink"), S_OK);
    EXPECT_TRUE(FAILED(graph.builder()->Connect(&source->pin(), &sink->pin())));
    EXPECT_EQ(CountFilters(graph), 2);

    // An application that wants it adds it by its class.
    {
        auto filter = CreateObject<IBaseFilter>(CLSID_VantrelFilter);
        ASSERT_TRUE(filter);
        filter.As<IVantrelSettings>(IID_IVantrelSettings)->SetOutputSize(32, 24);
        ASSERT_EQ(graph.Add(filter.Get(), L"vantrel"), S_OK);
        EXPECT_EQ(graph.Connect(&source->pin(), GetPin(filter.Get(), PINDIR_INPUT).Get()), S_OK);
        EXPECT_EQ(graph.Connect(GetPin(filter.Get(), PINDIR_OUTPUT).Get(), &sink->pin()), S_OK);
    }
    EXPECT_EQ(sink->pin().connectionType().Bitmap()->biWidth, 32);
}

}  // namespace
