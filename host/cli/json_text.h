// A JSON object as one line of text.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavo {

// Members keep their order. Names are ASCII. Texts may hold anything: half of a surrogate pair,
// which UTF-8 cannot hold, is written as an escape. Numbers do not depend on the locale, and read
// back as the same value; those that are not finite become null.
class JsonObject {
  public:
    JsonObject& Text(std::wstring_view name, std::wstring_view value);
    JsonObject& Texts(std::wstring_view name, const std::vector<std::wstring>& values);
    JsonObject& Count(std::wstring_view name, uint64_t value);
    JsonObject& Number(std::wstring_view name, double value);
    JsonObject& Flag(std::wstring_view name, bool value);
    JsonObject& Null(std::wstring_view name);
    JsonObject& Object(std::wstring_view name, const JsonObject& value);

    // Without a line end.
    std::wstring Line() const { return L"{" + members_ + L"}"; }

  private:
    JsonObject& Member(std::wstring_view name, std::wstring_view value);

    std::wstring members_;
};

}  // namespace tavo
