// Names with * and ? in them, which the command processor of Windows leaves to programs.

#pragma once

#include <string_view>

namespace tavo {

// Whether the last part of a path has a * or a ?.
bool HasWildcard(std::wstring_view path);

// Whether a * or a ? stands in front of the last part. \\?\ in front of a path is no wildcard.
bool HasWildcardInFolder(std::wstring_view path);

// * is any text, ? one character. As is usual on Windows, "*.*" is any name, "a.*" also "a", and
// "*." any name without a dot. Letters are compared as they are.
bool MatchesWildcard(std::wstring_view pattern, std::wstring_view name);

}  // namespace tavo
