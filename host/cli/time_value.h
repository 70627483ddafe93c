// Times on the command line.

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tavo {

// Seconds, or H:MM:SS or M:SS, all with up to seven decimals: "90.5", "1:30.5", "0:01:30.5". Below
// 100,000 hours, in units of 100 ns, exact. Nothing for anything else.
std::optional<int64_t> ParseTime(std::wstring_view text);

}  // namespace tavo
