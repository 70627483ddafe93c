// Patterns and names.

#include "host/cli/wildcard.h"

#include <gtest/gtest.h>

#include <string>

namespace tavo {
namespace {

TEST(Wildcard, Matches) {
    const std::pair<const wchar_t*, const wchar_t*> good[] = {
        {L"*", L""},         {L"*", L"a.b"},   {L"*.mp4", L"x.mp4"},
        {L"*.mp4", L".mp4"}, {L"a?c", L"abc"}, {L"*a*b*", L"xaxxbx"},
        {L"*.*", L"plain"},  {L"a.*", L"a"},   {L"a.*", L"a.mp4"},
        {L"*.", L"plain"},   {L"a", L"a"},     {L"*ab*ab", L"abaabab"},
        {L"**b", L"ab"},     {L"?*", L"a"},    {L"*_2?.avi", L"c_2_21.avi"},
    };
    for (const auto& [pattern, name] : good) {
        EXPECT_TRUE(MatchesWildcard(pattern, name)) << pattern << " " << name;
    }
    // A longer extension matches on Windows by the short name of the file.
    const std::pair<const wchar_t*, const wchar_t*> bad[] = {
        {L"*.mp4", L"x.mp4x"}, {L"*.htm", L"x.html"}, {L"?", L""},          {L"a?", L"a"},
        {L"*.", L"a.b"},       {L"a.*", L"b"},        {L"", L"a"},          {L"a", L""},
        {L"*a", L"ab"},        {L"a*b", L"ac"},       {L"*.*x", L"plainx"},
    };
    for (const auto& [pattern, name] : bad) {
        EXPECT_FALSE(MatchesWildcard(pattern, name)) << pattern << " " << name;
    }
}

// Many stars take no exponential time.
TEST(Wildcard, MatchesQuickly) {
    std::wstring pattern;
    for (int n = 0; n < 100; ++n) pattern += L"a*";
    EXPECT_FALSE(MatchesWildcard(pattern + L"b", std::wstring(1000, L'a')));
}

TEST(Wildcard, OnlyTheLastPartMayHaveThem) {
    for (const wchar_t* path : {L"*.mp4", L"c:\\a\\?.mp4", L"a/b*", L"\\\\?\\c:\\*.avi"}) {
        EXPECT_TRUE(HasWildcard(path)) << path;
        EXPECT_FALSE(HasWildcardInFolder(path)) << path;
    }
    for (const wchar_t* path : {L"", L"a.mp4", L"\\\\?\\c:\\a.mp4", L"*\\"}) {
        EXPECT_FALSE(HasWildcard(path)) << path;
    }
    for (const wchar_t* path : {L"a*\\b.avi", L"?/x", L"\\\\?\\c:\\*\\b", L"*\\*"}) {
        EXPECT_TRUE(HasWildcardInFolder(path)) << path;
    }
}

}  // namespace
}  // namespace tavo
