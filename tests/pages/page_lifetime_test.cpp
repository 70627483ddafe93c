// Pages that come and go: in any order with their objects, many times over, with nothing left
// behind. Needs a display.
#include <thread>

#include "pages/resource_ids.h"
#include "tests/pages/support/balloons.h"
#include "tests/pages/support/page_frame.h"
#include "tests/support/process_usage.h"
#include "tests/support/rounds.h"

using namespace tavo_test;

namespace {

class PageLifetime : public PagesTest {};

// An object that is no filter of ours.
class WrongObject final : public IUnknown {
  public:
    virtual ~WrongObject() = default;
    HRESULT result = E_NOINTERFACE;
    long references = 0;

    STDMETHODIMP QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return result;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references); }
};

TEST_F(PageLifetime, WrongObjectsAreRefused) {
    for (const CLSID& clsid : kPages) {
        PageFrame frame(clsid);
        WrongObject wrong;
        for (const HRESULT result : {E_NOINTERFACE, E_FAIL, E_OUTOFMEMORY}) {
            wrong.result = result;
            EXPECT_EQ(frame.Connect(&wrong), E_NOINTERFACE);
        }
        EXPECT_EQ(wrong.references, 0);
        // A frame that shows the page all the same gets one that does nothing.
        ASSERT_EQ(frame.Open(), S_OK);
        EXPECT_EQ(frame.Send(WM_TIMER, 3), TRUE);
        frame.site.notices.clear();
        Click(frame.Control(IDC_ENABLE));
        Click(frame.Control(IDC_ENABLE));
        Type(frame.Control(IDC_WIDTH), "1");
        EXPECT_EQ(frame.Apply(), E_UNEXPECTED);
        EXPECT_TRUE(frame.IsDirty());
    }
}

TEST_F(PageLifetime, AWrongObjectTakesThePlaceOfTheRightOne) {
    for (const CLSID& clsid : kPages) {
        PageFrame frame(clsid);
        FakeSettings settings;
        WrongObject wrong;
        ASSERT_EQ(frame.Connect(&settings), S_OK);
        EXPECT_EQ(settings.references, 1);
        EXPECT_EQ(frame.Connect(&settings), S_OK);
        EXPECT_EQ(settings.references, 1);
        EXPECT_EQ(frame.Connect(&wrong), E_NOINTERFACE);
        EXPECT_EQ(settings.references, 0);
    }
}

TEST_F(PageLifetime, DisconnectingReleasesTheObjectOnce) {
    for (const CLSID& clsid : kPages) {
        PageFrame frame(clsid);
        FakeSettings settings;
        EXPECT_EQ(frame.Disconnect(), S_OK);
        ASSERT_EQ(frame.Connect(&settings), S_OK);
        EXPECT_EQ(settings.references, 1);
        EXPECT_EQ(frame.Disconnect(), S_OK);
        EXPECT_EQ(frame.Disconnect(), S_OK);
        EXPECT_EQ(settings.references, 0);
        ASSERT_EQ(frame.Connect(&settings), S_OK);
        frame.page.Reset();
        EXPECT_EQ(settings.references, 0);
    }
}

TEST_F(PageLifetime, ThePageKeepsAFilterThatItsOwnerReleases) {
    for (const CLSID& clsid : kPages) {
        PageFrame frame(clsid);
        ComPtr<IBaseFilter> filter = CreateFilter();
        const ULONG references = RefCount(filter.Get());
        ASSERT_EQ(frame.Connect(filter.Get()), S_OK);
        EXPECT_EQ(RefCount(filter.Get()), references + 1);
        ASSERT_EQ(frame.Open(), S_OK);
        filter.Reset();
        EXPECT_EQ(frame.Send(WM_TIMER, 3), TRUE);
        Type(frame.Control(IDC_WIDTH), "32");
        Click(frame.Control(IDC_ENABLE));
        Click(frame.Control(IDC_ENABLE));
        EXPECT_EQ(frame.Apply(), S_OK);
        EXPECT_EQ(frame.Close(), S_OK);
        EXPECT_EQ(frame.Disconnect(), S_OK);
        frame.page->SetPageSite(nullptr);
        frame.page.Reset();
        EXPECT_EQ(TheModule().CanUnloadNow(), S_OK);
    }
}

TEST_F(PageLifetime, ReleasedWithItsDialogOpen) {
    for (const CLSID& clsid : kPages) {
        PageFrame frame(clsid);
        FakeSettings settings;
        frame.Connect(&settings);
        ASSERT_EQ(frame.Open(), S_OK);
        const HWND dialog = frame.Dialog();
        frame.page.Reset();
        EXPECT_FALSE(IsWindow(dialog));
        EXPECT_EQ(frame.site.references, 0);
        EXPECT_EQ(settings.references, 0);
    }
}

TEST_F(PageLifetime, ReleasedByAnotherThreadWithItsDialogOpen) {
    for (const CLSID& clsid : kPages) {
        PageFrame frame(clsid);
        FakeSettings settings;
        frame.Connect(&settings);
        ASSERT_EQ(frame.Open(), S_OK);
        const HWND dialog = frame.Dialog();
        std::thread([&frame] { frame.page.Reset(); }).join();
        EXPECT_EQ(settings.references, 0);
        // The dialog reaches nobody, but its procedure must be there.
        EXPECT_EQ(TheModule().CanUnloadNow(), S_FALSE);
        SendMessageW(dialog, WM_TIMER, 3, 0);
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDC_WIDTH, EN_CHANGE), 0);
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDC_ENABLE, BN_CLICKED), 0);
        Pump();
        EXPECT_FALSE(IsWindow(dialog));
        EXPECT_EQ(TheModule().CanUnloadNow(), S_OK);
    }
}

// What is wrong with an edit is said by a window that belongs to the frame.
TEST_F(PageLifetime, ReleasedByAnotherThreadWithABalloonShown) {
    PageFrame frame(CLSID_ResamplePropertyPage);
    FakeSettings settings;
    frame.Connect(&settings);
    ASSERT_EQ(frame.Open(), S_OK);
    Type(frame.Control(IDC_WIDTH), "x");
    ASSERT_NE(Balloon(), nullptr);
    std::thread([&frame] { frame.page.Reset(); }).join();
    Pump();
    EXPECT_EQ(Balloon(), nullptr);
    EXPECT_EQ(TheModule().CanUnloadNow(), S_OK);
}

TEST_F(PageLifetime, TheFrameWindowGoesFirst) {
    for (const CLSID& clsid : kPages) {
        PageFrame frame(clsid);
        FakeSettings settings;
        frame.Connect(&settings);
        ASSERT_EQ(frame.Open(), S_OK);
        DestroyWindow(frame.window());
        EXPECT_EQ(frame.page->Deactivate(), S_OK);
        EXPECT_EQ(frame.page->Deactivate(), E_UNEXPECTED);
    }
}

TEST_F(PageLifetime, ASiteThatAppliesAtEveryNotice) {
    for (const CLSID& clsid : kPages) {
        PageFrame frame(clsid);
        FakeSettings settings;
        settings.width = 10;
        settings.height = 20;
        settings.frameRate = 25.0;
        frame.site.onNotice = [&frame] { EXPECT_EQ(frame.Apply(), S_OK); };
        frame.Connect(&settings);
        ASSERT_EQ(frame.Open(), S_OK);
        EXPECT_FALSE(frame.IsDirty());
        EXPECT_EQ(settings.width, 10);
        EXPECT_EQ(settings.height, 20);
        EXPECT_EQ(settings.frameRate, 25.0);
        EXPECT_NE(settings.calls, "");
    }
}

TEST_F(PageLifetime, Aggregation) {
    for (const CLSID& clsid : kPages) {
        WrongObject outer;
        ComPtr<IClassFactory> factory;
        ASSERT_EQ(TheModule().GetClassObject(clsid, IID_IClassFactory, factory.PutVoid()), S_OK);
        ComPtr<IUnknown> inner;
        ASSERT_EQ(factory->CreateInstance(&outer, IID_IUnknown, inner.PutVoid()), S_OK);
        const auto page = inner.As<IPropertyPage>();
        ASSERT_TRUE(page);
        EXPECT_EQ(outer.references, 1);
        void* object = nullptr;
        EXPECT_EQ(factory->CreateInstance(&outer, IID_IPropertyPage, &object), E_NOINTERFACE);
    }
}

// What the dialogs of this thread answer to WM_INITDIALOG, for as long as it lives; one at a time.
class InitAnswers {
  public:
    InitAnswers()
        : hook_(SetWindowsHookExW(WH_CALLWNDPROCRET, Note, nullptr, GetCurrentThreadId())) {
        seen.clear();
    }
    ~InitAnswers() { UnhookWindowsHookEx(hook_); }
    InitAnswers(const InitAnswers&) = delete;
    InitAnswers& operator=(const InitAnswers&) = delete;

    static inline std::vector<LRESULT> seen;

  private:
    static LRESULT CALLBACK Note(int code, WPARAM wParam, LPARAM lParam) {
        const auto& message = *reinterpret_cast<const CWPRETSTRUCT*>(lParam);
        if (code == HC_ACTION && message.message == WM_INITDIALOG) seen.push_back(message.lResult);
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    const HHOOK hook_;
};

TEST_F(PageLifetime, TheSystemSetsTheFocusOfANewDialog) {
    FakeSettings settings;
    for (const CLSID& clsid : kPages) {
        PageFrame frame(clsid);
        ASSERT_EQ(frame.Connect(&settings), S_OK);
        const InitAnswers answers;
        ASSERT_EQ(frame.Open(), S_OK);
        EXPECT_EQ(answers.seen, std::vector<LRESULT>{TRUE});
    }
}

TEST_F(PageLifetime, RoundsLeaveNothing) {
    const int rounds = Rounds(100);
    const ComPtr<IBaseFilter> filter = CreateFilter();
    const auto settings = filter.As<IVantrelSettings>(IID_IVantrelSettings);
    settings->SetFrameRate(25.0);
    const ULONG references = RefCount(filter.Get());
    PageFrame frames[] = {PageFrame(kPages[0]), PageFrame(kPages[1], 430)};
    const auto round = [&](int number, bool dropOpenPage) {
        PageFrame& frame = frames[number % 2];
        PROPPAGEINFO info = {};
        info.cb = sizeof info;
        ASSERT_EQ(frame.page->GetPageInfo(&info), S_OK);
        CoTaskMemFree(info.pszTitle);
        ASSERT_EQ(frame.Connect(filter.Get()), S_OK);
        ASSERT_EQ(frame.Open(), S_OK);
        ASSERT_EQ(frame.Send(WM_TIMER, 3), TRUE);
        if (!dropOpenPage) {
            ASSERT_EQ(frame.Close(), S_OK);
        }
        frame.page = TheModule().Create<IPropertyPage>(kPages[number % 2]);
        Pump();
        frame.site.notices.clear();
    };
    for (int i = 0; i < 10; ++i) round(i, i > 7);
    const ProcessUsage before = ProcessUsage::Now();
    for (int i = 0; i < rounds && !HasFatalFailure(); ++i) round(i, i % 10 > 7);
    const ProcessUsage more = ProcessUsage::Now() - before;
    std::cout << "  " << rounds << " rounds, more than before: " << more << "\n";
    EXPECT_EQ(more, ProcessUsage{});
    EXPECT_EQ(RefCount(filter.Get()), references);
    MSG message;
    Sleep(1100);
    EXPECT_FALSE(PeekMessageW(&message, nullptr, WM_TIMER, WM_TIMER, PM_REMOVE));
}

}  // namespace
