// The dialog resources of the module as they stand in its file: what a window makes of its style
// and size does not show here.
//
//   const DialogTemplate dialog = ReadDialogTemplate(TheModule().handle(), 106);
//   EXPECT_EQ(dialog.items.at(1).id, 1001);
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace tavo_test {

struct TemplateItem {
    int id;
    std::wstring className;
    std::wstring text;
    DWORD style;
    DWORD exStyle;
    int x, y, width, height;  // dialog units
};

struct DialogTemplate {
    DWORD style = 0;
    int width = 0;  // dialog units
    int height = 0;
    int pointSize = 0;
    std::wstring font;
    std::vector<TemplateItem> items;
};

// Extended templates only; empty for any other.
DialogTemplate ReadDialogTemplate(HMODULE module, int id);

}  // namespace tavo_test
