// Classes of the test module.
#pragma once

#include <windows.h>

namespace tavo_test {

// {5D3F1A00-77C2-4B7E-8F43-61C0AF2B9D01} and the following: a filter with setup data, and classes
// whose creation goes wrong in one way each.
inline constexpr GUID kModuleFilter = {
    0x5D3F1A00, 0x77C2, 0x4B7E, {0x8F, 0x43, 0x61, 0xC0, 0xAF, 0x2B, 0x9D, 0x01}};
inline constexpr GUID kModulePlain = {
    0x5D3F1A00, 0x77C2, 0x4B7E, {0x8F, 0x43, 0x61, 0xC0, 0xAF, 0x2B, 0x9D, 0x02}};
inline constexpr GUID kModuleNull = {
    0x5D3F1A00, 0x77C2, 0x4B7E, {0x8F, 0x43, 0x61, 0xC0, 0xAF, 0x2B, 0x9D, 0x03}};
inline constexpr GUID kModuleNullWithFailure = {
    0x5D3F1A00, 0x77C2, 0x4B7E, {0x8F, 0x43, 0x61, 0xC0, 0xAF, 0x2B, 0x9D, 0x04}};
inline constexpr GUID kModuleObjectWithFailure = {
    0x5D3F1A00, 0x77C2, 0x4B7E, {0x8F, 0x43, 0x61, 0xC0, 0xAF, 0x2B, 0x9D, 0x05}};
// Twice in the table: the first row serves.
inline constexpr GUID kModuleTwice = {
    0x5D3F1A00, 0x77C2, 0x4B7E, {0x8F, 0x43, 0x61, 0xC0, 0xAF, 0x2B, 0x9D, 0x06}};

inline constexpr wchar_t kModuleFilterName[] = L"Test module filter";
inline constexpr wchar_t kModulePlainName[] = L"Test module plain object";

// The init routines write here: "+" on loading, "-" on unloading, once for each class that has one.
inline constexpr wchar_t kInitVariable[] = L"TAVO_TEST_MODULE_INIT";

}  // namespace tavo_test
