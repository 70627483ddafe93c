// Looks for files, and compares names as the file system does.

#include "host/cli/input_list.h"

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <tuple>

#include "host/cli/wildcard.h"
#include "host/graph/error_text.h"
#include "host/graph/quoted.h"

namespace tavo {
namespace {

namespace fs = std::filesystem;
using std::wstring;

int Compare(const wstring& a, const wstring& b) {
    return CompareStringOrdinal(a.c_str(), static_cast<int>(a.size()), b.c_str(),
                                static_cast<int>(b.size()), TRUE) -
           CSTR_EQUAL;
}

bool IsBefore(const wstring& a, const wstring& b) { return Compare(a, b) < 0; }

wstring Lower(wstring text) {
    CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

// The system also finds files by their short names, which nobody sees.
wstring Expand(const wstring& name, std::vector<wstring>& inputs) {
    const fs::path path = name;
    const wstring pattern = Lower(path.filename().wstring());
    std::vector<wstring> found;
    WIN32_FIND_DATAW entry = {};
    const HANDLE search = FindFirstFileW(name.c_str(), &entry);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            constexpr DWORD kPassedOver =
                FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
            if ((entry.dwFileAttributes & kPassedOver) != 0) continue;
            if (!MatchesWildcard(pattern, Lower(entry.cFileName))) continue;
            found.push_back((path.parent_path() / entry.cFileName).wstring());
        } while (FindNextFileW(search, &entry));
        FindClose(search);
    }
    if (found.empty()) return L"there is no file " + Quoted(name);
    std::ranges::sort(found, IsBefore);
    inputs.insert(inputs.end(), found.begin(), found.end());
    return {};
}

wstring CheckNames(const InputList& list) {
    std::vector<size_t> order(list.outputs.size());
    for (size_t n = 0; n < order.size(); ++n) order[n] = n;
    std::ranges::stable_sort(
        order, [&](size_t a, size_t b) { return IsBefore(list.outputs[a], list.outputs[b]); });
    for (size_t n = 1; n < order.size(); ++n) {
        const size_t a = order[n - 1];
        const size_t b = order[n];
        if (Compare(list.outputs[a], list.outputs[b]) != 0) continue;
        return Quoted(list.inputs[a]) + L" and " + Quoted(list.inputs[b]) + L" would both become " +
               Quoted(list.outputs[a]);
    }
    return {};
}

// What tells a file from all others, whatever its name.
using FileId = std::tuple<DWORD, DWORD, DWORD>;

bool ReadId(const wstring& path, FileId& id) {
    constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file = CreateFileW(path.c_str(), 0, kShare, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    BY_HANDLE_FILE_INFORMATION info = {};
    const bool read = GetFileInformationByHandle(file, &info) != FALSE;
    CloseHandle(file);
    id = {info.dwVolumeSerialNumber, info.nFileIndexHigh, info.nFileIndexLow};
    return read;
}

wstring CheckNoInputIsWritten(const InputList& list) {
    std::vector<FileId> ids;
    FileId id;
    for (const wstring& input : list.inputs) {
        if (ReadId(input, id)) ids.push_back(id);
    }
    std::ranges::sort(ids);
    for (const wstring& output : list.outputs) {
        if (ReadId(output, id) && std::ranges::binary_search(ids, id)) {
            return L"the output " + Quoted(output) + L" is one of the inputs";
        }
    }
    return {};
}

}  // namespace

wstring ListInputs(const std::vector<wstring>& names, const wstring& folder, InputList& list) {
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored)) {
        return L"the folder " + Quoted(folder) + L" does not exist";
    }
    for (const wstring& name : names) {
        if (!HasWildcard(name)) {
            list.inputs.push_back(name);
            continue;
        }
        const wstring error = Expand(name, list.inputs);
        if (!error.empty()) return error;
    }
    for (const wstring& input : list.inputs) {
        const wstring name = fs::path(input).stem().wstring() + L".avi";
        list.outputs.push_back((fs::path(folder) / name).wstring());
    }
    const wstring error = CheckNames(list);
    return error.empty() ? CheckNoInputIsWritten(list) : error;
}

}  // namespace tavo
