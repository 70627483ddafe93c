// JSON as programs read it.

#include "host/cli/json_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace tavo {
namespace {

TEST(JsonText, Members) {
    EXPECT_EQ(JsonObject().Line(), L"{}");
    JsonObject inner;
    inner.Count(L"n", UINT64_MAX);
    JsonObject object;
    object.Text(L"a", L"b").Texts(L"c", {L"d", L"e"}).Texts(L"f", {}).Flag(L"g", true);
    object.Flag(L"h", false).Null(L"i").Object(L"j", inner);
    EXPECT_EQ(object.Line(),
              L"{\"a\":\"b\",\"c\":[\"d\",\"e\"],\"f\":[],\"g\":true,\"h\":false,\"i\":null,"
              L"\"j\":{\"n\":18446744073709551615}}");
}

TEST(JsonText, Numbers) {
    const auto text = [](double value) { return JsonObject().Number(L"n", value).Line(); };
    EXPECT_EQ(text(0), L"{\"n\":0}");
    EXPECT_EQ(text(29.97), L"{\"n\":29.97}");
    EXPECT_EQ(text(1.0 / 3), L"{\"n\":0.3333333333333333}");
    EXPECT_EQ(text(-1e-7), L"{\"n\":-1e-07}");
    EXPECT_EQ(text(-std::numeric_limits<double>::max()), L"{\"n\":-1.7976931348623157e+308}");
    EXPECT_EQ(text(std::numeric_limits<double>::infinity()), L"{\"n\":null}");
    EXPECT_EQ(text(std::numeric_limits<double>::quiet_NaN()), L"{\"n\":null}");
}

TEST(JsonText, Escapes) {
    const auto text = [](std::wstring_view value) { return JsonObject().Text(L"t", value).Line(); };
    EXPECT_EQ(text(L"C:\\a \"b\""), L"{\"t\":\"C:\\\\a \\\"b\\\"\"}");
    EXPECT_EQ(text(L"\n\t\x1f\x7f"), L"{\"t\":\"\\u000a\\u0009\\u001f\\u007f\"}");
    EXPECT_EQ(text(std::wstring_view(L"\0", 1)), L"{\"t\":\"\\u0000\"}");
    EXPECT_EQ(text(L"\u00FC\u4E2D"), L"{\"t\":\"\u00FC\u4E2D\"}");
    const wchar_t high = 0xD83D;
    const wchar_t low = 0xDE00;
    const std::wstring pair = {high, low};
    EXPECT_EQ(text(pair), L"{\"t\":\"" + pair + L"\"}");
    EXPECT_EQ(text({&high, 1}), L"{\"t\":\"\\ud83d\"}");
    EXPECT_EQ(text(std::wstring{low, high, high, low}), L"{\"t\":\"\\ude00\\ud83d" + pair + L"\"}");
}

}  // namespace
}  // namespace tavo
