// The property pages on the filter: opened, typed into, applied and closed at any time.
#include "pages/resource_ids.h"
#include "tests/filter/random/sequence.h"

namespace tavo_test {

namespace {

PageFrame* OnePage(Sequence& s) {
    return s.pages.empty()
               ? nullptr
               : s.pages[static_cast<size_t>(s.dice.Below(static_cast<int>(s.pages.size())))].get();
}

void Open(Sequence& s) {
    if (s.pages.size() >= 2) return;
    s.pages.push_back(std::make_unique<PageFrame>(
        s.dice.OneIn(2) ? CLSID_ResamplePropertyPage : CLSID_TimeRegulatorPropertyPage));
    PageFrame& page = *s.pages.back();
    if (!s.dice.OneIn(8)) {
        s.Call("SetObjects", {S_OK}, [&] { return page.Connect(s.filter.Get()); });
    }
    const HRESULT opened =
        s.Call("Activate", {S_OK, E_UNEXPECTED, E_OUTOFMEMORY}, [&] { return page.Open(); });
    s.Check(SUCCEEDED(opened) == (page.Dialog() != nullptr), "a dialog exactly with success");
    Sequence::totals.pages += SUCCEEDED(opened);
}

void Close(Sequence& s) {
    if (s.pages.empty()) return;
    PageFrame& page = *s.pages.back();
    switch (s.dice.Below(4)) {
        case 0: page.page.Reset(); break;  // with its dialog open
        case 1:
            DestroyWindow(page.window());
            page.page->Deactivate();
            break;
        default: s.Call("Deactivate", {S_OK, E_UNEXPECTED}, [&] { return page.Close(); }); break;
    }
    s.pages.pop_back();
}

void Edit(Sequence& s) {
    PageFrame* const page = OnePage(s);
    if (!page || !page->Dialog()) return;
    const char* const text = s.dice.Of({"64", "0", "", "x", "-7", "30", "29.97", "99999999999",
                                        "1e7", "2147483647", "48", "32", "24"});
    const int edit = s.dice.Of({IDC_WIDTH, IDC_HEIGHT, IDC_FRAME_RATE});
    const int list = s.dice.Of({IDC_METHOD, IDC_FORMAT, IDC_TYPE});
    const int item = s.dice.Below(12) - 1;
    s.Call("edit", {S_OK}, [&] {
        SetDlgItemTextA(page->Dialog(), edit, text);
        if (page->Control(IDC_ENABLE) && s.dice.OneIn(3)) {
            SendMessageW(page->Control(IDC_ENABLE), BM_CLICK, 0, 0);
        } else if (page->Control(list) && s.dice.OneIn(3)) {
            SendMessageW(page->Control(list), CB_SETCURSEL, static_cast<WPARAM>(item), 0);
            page->Send(WM_COMMAND, static_cast<WPARAM>(MAKELONG(list, CBN_SELCHANGE)));
        }
        return S_OK;
    });
}

void Apply(Sequence& s) {
    PageFrame* const page = OnePage(s);
    if (!page) return;
    s.graph.reconnects =
        static_cast<Reconnects>(s.dice.Below(static_cast<int>(Reconnects::kCount)));
    s.Call(
        "Apply", {S_OK, E_UNEXPECTED}, [&] { return page->Apply(); },
        kMayChangeSettings | kMaySettleSize);
}

void Look(Sequence& s) {
    PageFrame* const page = OnePage(s);
    if (!page) return;
    PROPPAGEINFO info = {};
    info.cb = sizeof info;
    const HRESULT told =
        s.Call("GetPageInfo", {S_OK}, [&] { return page->page->GetPageInfo(&info); });
    s.Check((info.pszTitle != nullptr) == SUCCEEDED(told), "a title exactly with success");
    CoTaskMemFree(info.pszTitle);
    const RECT rect = {s.dice.Below(50), 10, s.dice.Below(400) - 50, s.dice.Below(300)};
    s.Call("Move", {S_OK, E_UNEXPECTED}, [&] { return page->page->Move(&rect); });
    const UINT show = s.dice.Of<UINT>({SW_SHOW, SW_HIDE, SW_SHOWNORMAL, 77});
    s.Call("Show", {S_OK, E_UNEXPECTED, E_INVALIDARG}, [&] { return page->page->Show(show); });
    s.Call("Help", {E_NOTIMPL}, [&] { return page->page->Help(nullptr); });
    s.Call("IsPageDirty", {S_OK, S_FALSE}, [&] { return page->page->IsPageDirty(); });
    if (page->Dialog()) {
        s.Call("timer", {TRUE}, [&] { return static_cast<HRESULT>(page->Send(WM_TIMER, 3)); });
    }
    Pump();
}

constexpr Act kActs[] = {{"open a page", 6, Open},
                         {"close a page", 3, Close},
                         {"edit", 8, Edit},
                         {"apply a page", 8, Apply},
                         {"look at a page", 3, Look}};

}  // namespace

std::span<const Act> PageActs() { return kActs; }

}  // namespace tavo_test
