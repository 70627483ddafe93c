// Matches without recursion.

#include "host/cli/wildcard.h"

namespace tavo {
namespace {

using std::wstring_view;

constexpr wstring_view kWild = L"*?";

size_t LastPart(wstring_view path) {
    const size_t slash = path.find_last_of(L"/\\");
    return slash == wstring_view::npos ? 0 : slash + 1;
}

// After a mismatch the last * takes one character more.
bool Matches(wstring_view pattern, wstring_view name) {
    size_t p = 0;
    size_t n = 0;
    size_t star = wstring_view::npos;
    size_t taken = 0;  // where the text behind the star begins
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == L'*') {
            star = p++;
            taken = n;
        } else if (p < pattern.size() && (pattern[p] == L'?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (star != wstring_view::npos) {
            p = star + 1;
            n = ++taken;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', p) == wstring_view::npos;
}

}  // namespace

bool HasWildcard(wstring_view path) {
    return path.find_first_of(kWild, LastPart(path)) != wstring_view::npos;
}

bool HasWildcardInFolder(wstring_view path) {
    constexpr wstring_view kLongPath = L"\\\\?\\";
    const size_t begin = path.substr(0, kLongPath.size()) == kLongPath ? kLongPath.size() : 0;
    const wstring_view folder = path.substr(0, LastPart(path));
    return begin < folder.size() && folder.find_first_of(kWild, begin) != wstring_view::npos;
}

bool MatchesWildcard(wstring_view pattern, wstring_view name) {
    if (Matches(pattern, name)) return true;
    if (name.find(L'.') != wstring_view::npos) return false;
    if (pattern.ends_with(L".*")) pattern.remove_suffix(1);
    return pattern.ends_with(L'.') && Matches(pattern.substr(0, pattern.size() - 1), name);
}

}  // namespace tavo
