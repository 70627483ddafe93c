// A host that loads the module, uses all of it and unloads it, over and over: nothing may stay
// behind in its process. Needs a display.
#include <gtest/gtest.h>
#include <windows.h>

#include <ocidl.h>
#include <strmif.h>

#include "settings/vantrel_settings.h"
#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/pages/support/page_site.h"
#include "tests/support/graph.h"
#include "tests/support/process_usage.h"
#include "tests/support/rounds.h"

using namespace tavo_test;

namespace {

// Frames through the filter at another size and rate, with a type that changes under way.
void Stream(const ComPtr<IBaseFilter>& filter) {
    const auto settings = filter.As<IVantrelSettings>(IID_IVantrelSettings);
    ASSERT_TRUE(settings);
    settings->SetOutputSize(40, 36);
    settings->SetFrameRate(50.0);
    const ComPtr<IPin> input = GetPin(filter.Get(), PINDIR_INPUT);
    const ComPtr<IPin> output = GetPin(filter.Get(), PINDIR_OUTPUT);
    const auto sink = TestSink::Create({.keepBytes = false});
    const auto source = TestSource::Create({});
    source->pin().offered = {TypeOf(Format("YV12"), 64, 48)};
    ASSERT_EQ(ConnectPins(&source->pin(), input.Get()), S_OK);
    ASSERT_EQ(ConnectPins(output.Get(), &sink->pin()), S_OK);
    for (IBaseFilter* each : {static_cast<IBaseFilter*>(sink.Get()), filter.Get(),
                              static_cast<IBaseFilter*>(source.Get())}) {
        ASSERT_TRUE(SUCCEEDED(each->Pause()));
        ASSERT_TRUE(SUCCEEDED(each->Run(0)));
    }
    for (int i = 0; i < 2; ++i) {
        SampleSpec spec = {.start = i * 400000, .stop = (i + 1) * 400000};
        if (i == 1) {
            spec.type = TypeOf(Format("YV12"), 32, 24);
            spec.freestanding = SampleConfig{.size = 32 * 24 * 3 / 2};
        }
        EXPECT_EQ(source->pin().Deliver(spec), S_OK);
    }
    EXPECT_GT(sink->pin().samples().size(), 2u);
    EXPECT_EQ(sink->Stop(), S_OK);
    EXPECT_EQ(filter->Stop(), S_OK);
    EXPECT_EQ(source->Stop(), S_OK);
    EXPECT_EQ(DisconnectPins(output.Get(), &sink->pin()), S_OK);
    EXPECT_EQ(DisconnectPins(&source->pin(), input.Get()), S_OK);
}

void ShowPage(const Module& module, REFCLSID clsid, IUnknown* filter, HWND frame) {
    constexpr RECT kPlace = {0, 0, 400, 250};
    PageSite site;
    {
        const auto page = module.Create<IPropertyPage>(clsid);
        ASSERT_TRUE(page);
        EXPECT_EQ(page->SetPageSite(&site), S_OK);
        EXPECT_EQ(page->SetObjects(1, &filter), S_OK);
        ASSERT_EQ(page->Activate(frame, &kPlace, FALSE), S_OK);
        SendMessageW(GetWindow(frame, GW_CHILD), WM_TIMER, 3, 0);
        EXPECT_EQ(page->Apply(), S_OK);
        EXPECT_EQ(page->Deactivate(), S_OK);
        EXPECT_EQ(page->SetObjects(0, nullptr), S_OK);
        EXPECT_EQ(page->SetPageSite(nullptr), S_OK);
    }
    EXPECT_EQ(site.references, 0);
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
}

void LoadUseAndUnload(HWND frame) {
    const std::wstring path = ModulePath();
    {
        const Module module(path.c_str());
        ASSERT_TRUE(module.loaded());
        {
            const auto filter = module.Create<IBaseFilter>(CLSID_VantrelFilter);
            ASSERT_TRUE(filter);
            ASSERT_NO_FATAL_FAILURE(Stream(filter));
            for (const CLSID& page : {CLSID_ResamplePropertyPage, CLSID_TimeRegulatorPropertyPage})
                ASSERT_NO_FATAL_FAILURE(ShowPage(module, page, filter.Get(), frame));
            EXPECT_EQ(module.CanUnloadNow(), S_FALSE);
        }
        ASSERT_EQ(module.CanUnloadNow(), S_OK);
    }
    ASSERT_EQ(GetModuleHandleW(path.c_str()), nullptr)
        << "a cycle that does not unload shows nothing";
}

TEST(ModuleCycles, NothingStaysBehindInTheHost) {
    // Wine 8 loses handles and memory each time that these two are loaded and unloaded.
    const Module multimedia(L"winmm.dll");
    const Module controls(L"comctl32.dll");
    ASSERT_TRUE(multimedia.loaded() && controls.loaded());
    const ComApartment com(COINIT_APARTMENTTHREADED);
    const HWND frame = CreateWindowExW(WS_EX_NOACTIVATE, L"STATIC", L"frame", WS_POPUP, 0, 0, 420,
                                       280, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(frame, nullptr);
    for (int i = 0; i < 20; ++i) ASSERT_NO_FATAL_FAILURE(LoadUseAndUnload(frame)) << "cycle " << i;
    const ProcessUsage before = ProcessUsage::Now();
    const int cycles = Rounds(100);
    for (int i = 0; i < cycles; ++i)
        ASSERT_NO_FATAL_FAILURE(LoadUseAndUnload(frame)) << "cycle " << i;
    const ProcessUsage more = ProcessUsage::Now() - before;
    std::cout << "  " << cycles << " cycles, more than before: " << more << "\n";
    EXPECT_EQ(more, ProcessUsage{});
    DestroyWindow(frame);
}

}  // namespace
