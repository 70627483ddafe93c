// Walks over the words of an extended dialog template.
#include "tests/pages/support/dialog_template.h"

namespace tavo_test {

namespace {

class Words {
  public:
    explicit Words(const void* data) : at_(static_cast<const WORD*>(data)), start_(at_) {}

    WORD Word() { return *at_++; }
    int Short() { return static_cast<SHORT>(Word()); }
    DWORD Long() {
        const DWORD low = Word();
        return low | static_cast<DWORD>(Word()) << 16;
    }
    // A string, or an ordinal as "#n".
    std::wstring Name() {
        if (*at_ == 0xFFFF) {
            ++at_;
            return L"#" + std::to_wstring(Word());
        }
        std::wstring text;
        while (const WORD c = Word()) text += static_cast<wchar_t>(c);
        return text;
    }
    void AlignToLong() {
        if ((at_ - start_) % 2) ++at_;
    }
    void Skip(size_t bytes) { at_ += (bytes + 1) / 2; }

  private:
    const WORD* at_;
    const WORD* start_;
};

// In capitals, as nobody minds the case of a class.
std::wstring ClassName(std::wstring name) {
    if (name == L"#128") return L"BUTTON";
    if (name == L"#129") return L"EDIT";
    if (name == L"#130") return L"STATIC";
    if (name == L"#133") return L"COMBOBOX";
    CharUpperW(name.data());
    return name;
}

TemplateItem ReadItem(Words& words) {
    TemplateItem item = {};
    words.AlignToLong();
    words.Long();  // help
    item.exStyle = words.Long();
    item.style = words.Long();
    item.x = words.Short();
    item.y = words.Short();
    item.width = words.Short();
    item.height = words.Short();
    item.id = static_cast<int>(words.Long());
    item.className = ClassName(words.Name());
    item.text = words.Name();
    words.Skip(words.Word());  // creation data
    return item;
}

}  // namespace

DialogTemplate ReadDialogTemplate(HMODULE module, int id) {
    DialogTemplate dialog;
    const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(id), RT_DIALOG);
    if (!resource) return dialog;
    Words words(LockResource(LoadResource(module, resource)));
    if (words.Word() != 1 || words.Word() != 0xFFFF) return dialog;
    words.Long();  // help
    words.Long();  // extended style
    dialog.style = words.Long();
    const int count = words.Word();
    words.Long();  // position
    dialog.width = words.Short();
    dialog.height = words.Short();
    words.Name();  // menu
    words.Name();  // class
    words.Name();  // title
    if (dialog.style & DS_SETFONT) {
        dialog.pointSize = words.Word();
        words.Long();  // weight, slant and character set
        dialog.font = words.Name();
    }
    for (int i = 0; i < count; ++i) dialog.items.push_back(ReadItem(words));
    return dialog;
}

}  // namespace tavo_test
