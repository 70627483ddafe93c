// Every control of both dialogs: class, identifier, style, text and place, in the template's order
// and in the window that comes of it. Needs a display.
#include <algorithm>

#include "pages/resource_ids.h"
#include "tests/pages/support/dialog_measure.h"
#include "tests/pages/support/dialog_template.h"
#include "tests/pages/support/page_frame.h"

using namespace tavo_test;

namespace {

constexpr LONG kLabelRight = WS_CHILD | WS_VISIBLE | WS_GROUP | SS_RIGHT | SS_CENTERIMAGE;
constexpr LONG kLabelLeft = WS_CHILD | WS_VISIBLE | WS_GROUP | SS_LEFT | SS_CENTERIMAGE;
constexpr LONG kFigure = WS_CHILD | WS_VISIBLE | WS_GROUP | SS_RIGHT;
constexpr LONG kEdit = WS_CHILD | WS_VISIBLE | WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL;
constexpr LONG kList = WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_TABSTOP | CBS_DROPDOWNLIST;
constexpr LONG kGroupBox = WS_CHILD | WS_VISIBLE | BS_GROUPBOX;
constexpr LONG kCheckBox = WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_AUTOCHECKBOX;
constexpr int kNoId = -1;

struct Expected {
    int id;
    const wchar_t* className;
    LONG style;
    const wchar_t* text;
    int x, y, width, height;  // dialog units
};

constexpr Expected kResample[] = {
    {kNoId, L"STATIC", kLabelRight, L"Width:", 17, 7, 27, 11},
    {1001, L"EDIT", kEdit, L"", 52, 7, 57, 13},
    {kNoId, L"STATIC", kLabelRight, L"Height:", 17, 26, 27, 11},
    {1003, L"EDIT", kEdit | ES_NUMBER, L"", 52, 25, 57, 14},
    {kNoId, L"STATIC", kLabelRight, L"Method:", 17, 44, 27, 11},
    {1012, L"COMBOBOX", kList, L"", 53, 44, 90, 34},
    {kNoId, L"STATIC", kLabelRight, L"Type:", 111, 7, 29, 11},
    {1014, L"COMBOBOX", kList, L"", 142, 7, 56, 30},
    {kNoId, L"STATIC", kLabelRight, L"Format:", 110, 26, 30, 13},
    {1015, L"COMBOBOX", kList, L"", 142, 25, 56, 30},
    {kNoId, L"BUTTON", kGroupBox, L"Performance", 7, 68, 123, 41},
    {kNoId, L"STATIC", kLabelRight, L"Module:", 14, 76, 30, 12},
    {1013, L"STATIC", kFigure, L"0", 53, 76, 55, 12},
    {kNoId, L"STATIC", kLabelLeft, L"ms", 113, 78, 9, 8},
    {kNoId, L"STATIC", kLabelRight, L"System:", 13, 91, 31, 12},
    {1016, L"STATIC", kFigure, L"0", 53, 91, 55, 12},
    {kNoId, L"STATIC", kLabelLeft, L"fps", 113, 91, 9, 8},
};

constexpr Expected kTimeRegulator[] = {
    {1019, L"BUTTON", kCheckBox, L"Enable Time Regulator", 7, 7, 81, 10},
    {kNoId, L"STATIC", kLabelLeft, L"Frame Rate:", 15, 25, 41, 11},
    {1020, L"EDIT", kEdit, L"", 72, 24, 59, 13},
    {kNoId, L"BUTTON", kGroupBox, L"Performance", 7, 68, 123, 41},
    {kNoId, L"STATIC", kLabelLeft, L"Generate:", 15, 78, 66, 12},
    {1021, L"STATIC", kFigure, L"0", 15, 90, 55, 12},
    {kNoId, L"STATIC", kLabelLeft, L"fps", 75, 92, 9, 8},
};

class DialogLayout : public PagesTest {
  protected:
    template <size_t kCount>
    void CheckTemplate(int id, const Expected (&expected)[kCount]) {
        const DialogTemplate dialog = ReadDialogTemplate(TheModule().handle(), id);
        EXPECT_EQ(dialog.width, 205);
        EXPECT_EQ(dialog.height, 116);
        EXPECT_EQ(dialog.pointSize, 8);
        EXPECT_EQ(dialog.font, L"MS Sans Serif");
        EXPECT_TRUE(dialog.style & WS_CHILD);
        EXPECT_FALSE(dialog.style & WS_VISIBLE);
        ASSERT_EQ(dialog.items.size(), kCount);
        for (size_t i = 0; i < kCount; ++i) {
            SCOPED_TRACE(i);
            const TemplateItem& item = dialog.items[i];
            EXPECT_EQ(item.id, expected[i].id);
            EXPECT_EQ(item.className, expected[i].className);
            EXPECT_EQ(item.style, static_cast<DWORD>(expected[i].style));
            EXPECT_EQ(item.exStyle, 0u);
            EXPECT_EQ(item.text, expected[i].text);
            EXPECT_EQ((std::vector<int>{item.x, item.y, item.width, item.height}),
                      (std::vector<int>{expected[i].x, expected[i].y, expected[i].width,
                                        expected[i].height}));
        }
    }

    template <size_t kCount>
    void CheckWindows(REFCLSID clsid, const Expected (&expected)[kCount]) {
        PageFrame frame(clsid);
        FakeSettings settings;
        ASSERT_EQ(frame.Connect(&settings), S_OK);
        ASSERT_EQ(frame.Open(), S_OK);
        const SIZE units = BaseUnits(frame.Dialog());
        // In the order in which they were made.
        HWND control = GetWindow(frame.Dialog(), GW_CHILD);
        for (size_t i = 0; i < kCount; ++i, control = GetWindow(control, GW_HWNDNEXT)) {
            SCOPED_TRACE(i);
            ASSERT_NE(control, nullptr);
            CheckWindow(control, expected[i], units, frame.Dialog());
        }
        EXPECT_EQ(control, nullptr);
    }

    void CheckWindow(HWND control, const Expected& expected, SIZE units, HWND dialog) {
        EXPECT_EQ(GetDlgCtrlID(control), expected.id);
        EXPECT_EQ(ClassOf(control), expected.className);
        EXPECT_TRUE(IsWindowVisible(control));
        // An edit may draw its border as an edge.
        LONG style = GetWindowLongW(control, GWL_STYLE);
        if (expected.style & WS_BORDER) {
            EXPECT_TRUE((style & WS_BORDER) ||
                        (GetWindowLongW(control, GWL_EXSTYLE) & WS_EX_CLIENTEDGE));
            style |= WS_BORDER;
        }
        // A list hands its scroll bar on to what it drops; the rate is disabled with the regulator.
        const LONG scroll = expected.style & WS_VSCROLL;
        const LONG ownDoing =
            WS_DISABLED | WS_CLIPSIBLINGS | (expected.style == kList ? CBS_HASSTRINGS : 0);
        EXPECT_EQ((style & ~ownDoing) | scroll, expected.style);
        if (ClassOf(control) == L"STATIC" || ClassOf(control) == L"BUTTON") {
            EXPECT_EQ(TextOf(control), expected.text);
        }
        RECT place = InPixels(units, expected.x, expected.y, expected.width, expected.height);
        // In a font wider than the dialog's a text gets more room, but no text moves.
        if (expected.style == kLabelLeft || expected.style == kCheckBox) {
            place.right = std::max(place.right, TextWidth(control));
        }
        RECT now = PlaceOf(control, dialog);
        // Closed, a list is as high as its font wants it.
        if (expected.style == kList) now.bottom = place.bottom;
        EXPECT_EQ(Numbers(now), Numbers(place));
    }

    static std::vector<int> TabOrder(HWND dialog) {
        std::vector<int> ids;
        const HWND first = GetNextDlgTabItem(dialog, nullptr, FALSE);
        HWND at = first;
        do {
            ids.push_back(GetDlgCtrlID(at));
            at = GetNextDlgTabItem(dialog, at, FALSE);
        } while (at != first && ids.size() < 20);
        return ids;
    }
};

TEST_F(DialogLayout, Templates) {
    CheckTemplate(106, kResample);
    CheckTemplate(107, kTimeRegulator);
}

TEST_F(DialogLayout, Windows) {
    CheckWindows(CLSID_ResamplePropertyPage, kResample);
    CheckWindows(CLSID_TimeRegulatorPropertyPage, kTimeRegulator);
}

TEST_F(DialogLayout, NoTextIsCutOff) {
    for (const CLSID& clsid : {CLSID_ResamplePropertyPage, CLSID_TimeRegulatorPropertyPage}) {
        PageFrame frame(clsid);
        FakeSettings settings;
        ASSERT_EQ(frame.Connect(&settings), S_OK);
        ASSERT_EQ(frame.Open(), S_OK);
        for (HWND control = GetWindow(frame.Dialog(), GW_CHILD); control;
             control = GetWindow(control, GW_HWNDNEXT)) {
            if (ClassOf(control) != L"STATIC" && ClassOf(control) != L"BUTTON") continue;
            RECT client = {};
            GetClientRect(control, &client);
            EXPECT_GE(client.right, TextWidth(control)) << GetDlgCtrlID(control);
        }
    }
}

TEST_F(DialogLayout, FontSizeAndStyleOfTheDialogs) {
    for (const CLSID& clsid : {CLSID_ResamplePropertyPage, CLSID_TimeRegulatorPropertyPage}) {
        PageFrame frame(clsid);
        FakeSettings settings;
        PROPPAGEINFO info = {};
        info.cb = sizeof info;
        ASSERT_EQ(frame.page->GetPageInfo(&info), S_OK);
        ASSERT_EQ(frame.Connect(&settings), S_OK);
        ASSERT_EQ(frame.Open(), S_OK);

        LOGFONTW font = {};
        GetObjectW(reinterpret_cast<HFONT>(SendMessageW(frame.Dialog(), WM_GETFONT, 0, 0)),
                   sizeof font, &font);
        EXPECT_STREQ(font.lfFaceName, L"MS Sans Serif");
        const HDC dc = GetDC(nullptr);
        EXPECT_EQ(font.lfHeight, -MulDiv(8, GetDeviceCaps(dc, LOGPIXELSY), 72));
        ReleaseDC(nullptr, dc);

        const RECT size = InPixels(BaseUnits(frame.Dialog()), 0, 0, 205, 116);
        EXPECT_EQ(info.size.cx, size.right);
        EXPECT_EQ(info.size.cy, size.bottom);
        const LONG style = GetWindowLongW(frame.Dialog(), GWL_STYLE);
        EXPECT_TRUE(style & WS_CHILD);
        EXPECT_FALSE(style & (WS_POPUP | WS_BORDER | WS_DLGFRAME));
        EXPECT_STREQ(info.pszTitle, clsid == CLSID_ResamplePropertyPage
                                        ? L"Resampling Properties"
                                        : L"Time Regulator Properties");
        CoTaskMemFree(info.pszTitle);
    }
}

TEST_F(DialogLayout, TheTabKeyGoesFromTopToBottom) {
    FakeSettings settings;
    settings.frameRate = 25.0;
    {
        PageFrame frame(CLSID_ResamplePropertyPage);
        frame.Connect(&settings);
        ASSERT_EQ(frame.Open(), S_OK);
        EXPECT_EQ(TabOrder(frame.Dialog()), (std::vector<int>{1001, 1003, 1012, 1014, 1015}));
        // A frame that walks over its own controls finds the way in.
        EXPECT_TRUE(GetWindowLongW(frame.Dialog(), GWL_EXSTYLE) & WS_EX_CONTROLPARENT);
    }
    PageFrame frame(CLSID_TimeRegulatorPropertyPage);
    frame.Connect(&settings);
    ASSERT_EQ(frame.Open(), S_OK);
    EXPECT_EQ(TabOrder(frame.Dialog()), (std::vector<int>{1019, 1020}));
    EXPECT_TRUE(GetWindowLongW(frame.Dialog(), GWL_EXSTYLE) & WS_EX_CONTROLPARENT);
}

// The sizes that lists are asked to take on while the dialog comes up.
std::vector<std::pair<int, WINDOWPOS>> askedOfLists;

LRESULT CALLBACK NoteSizes(int code, WPARAM wParam, LPARAM lParam) {
    const auto& call = *reinterpret_cast<const CWPSTRUCT*>(lParam);
    if (code == HC_ACTION && call.message == WM_WINDOWPOSCHANGING &&
        ClassOf(call.hwnd) == L"COMBOBOX") {
        askedOfLists.emplace_back(GetDlgCtrlID(call.hwnd),
                                  *reinterpret_cast<const WINDOWPOS*>(call.lParam));
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

TEST_F(DialogLayout, ListsDropFourTimesTheirHeight) {
    PageFrame frame(CLSID_ResamplePropertyPage);
    FakeSettings settings;
    askedOfLists.clear();
    const HHOOK hook = SetWindowsHookExW(WH_CALLWNDPROC, NoteSizes, nullptr, GetCurrentThreadId());
    frame.Connect(&settings);
    ASSERT_EQ(frame.Open(), S_OK);
    UnhookWindowsHookEx(hook);
    for (const int id : {IDC_METHOD, IDC_FORMAT, IDC_TYPE}) {
        const RECT closed = PlaceOf(frame.Control(id), frame.Dialog());
        EXPECT_GT(closed.bottom, 10) << id;
        EXPECT_EQ(std::count_if(askedOfLists.begin(), askedOfLists.end(),
                                [&](const auto& asked) {
                                    const WINDOWPOS& size = asked.second;
                                    return asked.first == id && (size.flags & SWP_NOMOVE) &&
                                           !(size.flags & SWP_NOSIZE) && size.cx == closed.right &&
                                           size.cy == 4 * closed.bottom;
                                }),
                  1)
            << id;
        // Several rows show when it drops.
        SendMessageW(frame.Control(id), CB_SHOWDROPDOWN, TRUE, 0);
        COMBOBOXINFO info = {};
        info.cbSize = sizeof info;
        GetComboBoxInfo(frame.Control(id), &info);
        RECT list = {};
        GetClientRect(info.hwndList, &list);
        const LRESULT row = SendMessageW(info.hwndList, LB_GETITEMHEIGHT, 0, 0);
        EXPECT_GE(list.bottom, 3 * row) << id;
        SendMessageW(frame.Control(id), CB_SHOWDROPDOWN, FALSE, 0);
    }
}

TEST_F(DialogLayout, Strings) {
    const HMODULE module = TheModule().handle();
    const std::pair<UINT, const wchar_t*> strings[] = {
        {1, L"Resampling Properties"},
        {10, L"AUTO"},
        {11, L"Nearest Neighbor AUTO"},
        {12, L"Bi-Linear AUTO"},
        {13, L"Nearest Neighbor"},
        {14, L"Nearest Neighbor MMX"},
        {15, L"Nearest Neighbor SSE"},
        {16, L"Bi-Linear"},
        {17, L"Bi-Linear MMX"},
        {18, L"Bi-Linear SSE"},
        {20, L"AUTO"},
        {21, L"YV12"},
        {22, L"IYUV"},
        {23, L"YVU9"},
        {24, L"YUY2"},
        {25, L"YUYV"},
        {26, L"YVYU"},
        {27, L"UYVY"},
        {28, L"RGB24"},
        {29, L"RGB555"},
        {30, L"RGB565"},
        {40, L"AUTO"},
        {41, L"MPEG1"},
        {42, L"MPEG2"},
        {43, L"Time Regulator Properties"},
    };
    for (const auto& [id, expected] : strings) {
        wchar_t text[60] = {};
        EXPECT_GT(LoadStringW(module, id, text, 60), 0) << id;
        EXPECT_STREQ(text, expected) << id;
    }
}

}  // namespace
