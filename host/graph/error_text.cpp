// Own texts for the most common codes, the platform's for the others.

#include "host/graph/error_text.h"

#include <errors.h>
#include <vfwmsgs.h>

#include <array>
#include <cwchar>

#include "host/system/system_library.h"

namespace tavo {
namespace {

struct CodeText {
    HRESULT code;
    const wchar_t* text;
};

const CodeText kTexts[] = {
    {VFW_E_CANNOT_CONNECT, L"no combination of filters leads there"},
    {VFW_E_CANNOT_RENDER, L"no combination of filters can play it"},
    {VFW_E_NO_ACCEPTABLE_TYPES, L"no format suits both sides"},
    {VFW_E_TYPE_NOT_ACCEPTED, L"the format is not accepted"},
    {VFW_E_INVALIDMEDIATYPE, L"the format is not valid"},
    {VFW_E_UNKNOWN_FILE_TYPE, L"the kind of file is not known"},
    {VFW_E_UNSUPPORTED_STREAM, L"the contents are not known"},
    {VFW_E_CANNOT_LOAD_SOURCE_FILTER, L"its source filter cannot be loaded"},
    {VFW_E_INVALID_FILE_FORMAT, L"the file is damaged, or not what its name says"},
    {VFW_E_NO_DECOMPRESSOR, L"there is no decoder for it"},
    {VFW_E_NOT_FOUND, L"not found"},
    {VFW_E_SIZENOTSET, L"the size of the buffers is not settled"},
    {VFW_E_NO_ALLOCATOR, L"there is no memory allocator"},
    {VFW_E_BUFFER_OVERFLOW, L"a buffer is smaller than its frame"},
    {VFW_E_RUNTIME_ERROR, L"an error while running"},
    {REGDB_E_CLASSNOTREG, L"it is not registered"},
    {CLASS_E_CLASSNOTAVAILABLE, L"it is not in this module"},
    {E_NOINTERFACE, L"it lacks an interface"},
    {E_OUTOFMEMORY, L"out of memory"},
};

std::wstring WithoutLineEnd(std::wstring text) {
    while (!text.empty() && (text.back() <= L' ' || text.back() == L'.')) text.pop_back();
    return text;
}

std::wstring SystemText(DWORD code) {
    std::array<wchar_t, 512> buffer{};
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0,
                   buffer.data(), static_cast<DWORD>(buffer.size()), nullptr);
    return WithoutLineEnd(buffer.data());
}

// Some platforms only give the number.
std::wstring DirectShowText(HRESULT hr) {
    std::array<wchar_t, MAX_ERROR_TEXT_LEN> buffer{};
    using GetErrorText = DWORD(WINAPI*)(HRESULT, WCHAR*, DWORD);
    const auto getText = SystemFunction<GetErrorText>(L"quartz.dll", "AMGetErrorTextW");
    if (getText == nullptr) return {};
    if (getText(hr, buffer.data(), static_cast<DWORD>(buffer.size())) == 0) return {};
    std::wstring text = WithoutLineEnd(buffer.data());
    return text.find(L"0x") == std::wstring::npos ? text : std::wstring();
}

std::wstring Describe(HRESULT hr) {
    for (const CodeText& row : kTexts) {
        if (row.code == hr) return row.text;
    }
    std::wstring text = DirectShowText(hr);
    return text.empty() ? SystemText(static_cast<DWORD>(hr)) : text;
}

}  // namespace

std::wstring ErrorText(HRESULT hr) {
    std::array<wchar_t, 16> number{};
    swprintf(number.data(), number.size(), L"0x%08lX", static_cast<unsigned long>(hr));
    const std::wstring words = Describe(hr);
    if (words.empty()) return std::wstring(L"error ") + number.data();
    return words + L" (" + number.data() + L")";
}

std::wstring SystemErrorText(DWORD error) {
    const std::wstring words = SystemText(error);
    return (words.empty() ? L"error" : words) + L" (" + std::to_wstring(error) + L")";
}

const wchar_t* IoText(IoResult result) {
    switch (result) {
        case IoResult::Ok: return L"no error";
        case IoResult::NotFound: return L"the folder or the file does not exist";
        case IoResult::AccessDenied: return L"access is denied";
        case IoResult::InUse: return L"another program is using it";
        case IoResult::DiskFull: return L"the disk is full";
        case IoResult::TooLarge: return L"it became larger than a file can be";
        case IoResult::ShortRead: return L"it ends too early";
        case IoResult::Failed: break;
    }
    return L"the device reports an error";
}

}  // namespace tavo
