// What media types need of Windows, for builds without it. Stands in for the header of the same
// name; the layouts are those of Windows, but for the size of pointers.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "guiddef.h"

using BYTE = uint8_t;
using WORD = uint16_t;
using DWORD = uint32_t;
using LONG = int32_t;
using ULONG = uint32_t;
using BOOL = int;
using HRESULT = int32_t;
using REFERENCE_TIME = int64_t;

#define WINAPI
#define TRUE 1
#define FALSE 0
#define FAILED(result) ((result) < 0)
#define SUCCEEDED(result) ((result) >= 0)

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000e);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr DWORD BI_BITFIELDS = 3;

struct RECT {
    LONG left, top, right, bottom;
};

struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth, biHeight;
    WORD biPlanes, biBitCount;
    DWORD biCompression, biSizeImage;
    LONG biXPelsPerMeter, biYPelsPerMeter;
    DWORD biClrUsed, biClrImportant;
};
static_assert(sizeof(BITMAPINFOHEADER) == 40);

struct VIDEOINFOHEADER {
    RECT rcSource, rcTarget;
    DWORD dwBitRate, dwBitErrorRate;
    REFERENCE_TIME AvgTimePerFrame;
    BITMAPINFOHEADER bmiHeader;
};
static_assert(sizeof(VIDEOINFOHEADER) == 88);

struct IUnknown {
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;
};

struct AM_MEDIA_TYPE {
    GUID majortype, subtype;
    BOOL bFixedSizeSamples, bTemporalCompression;
    ULONG lSampleSize;
    GUID formattype;
    IUnknown* pUnk;
    ULONG cbFormat;
    BYTE* pbFormat;
};

inline constexpr GUID GUID_NULL = {};
inline constexpr GUID MEDIATYPE_Video = {
    0x73646976, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
inline constexpr GUID FORMAT_VideoInfo = {
    0x05589f80, 0xc356, 0x11ce, {0xbf, 0x01, 0x00, 0xaa, 0x00, 0x55, 0x59, 0x5a}};
inline constexpr GUID FORMAT_VideoInfo2 = {
    0xf72a76a0, 0xeb0a, 0x11d0, {0xac, 0xe4, 0x00, 0x00, 0xc0, 0xcc, 0x16, 0xba}};

inline void* CoTaskMemAlloc(size_t bytes) { return std::malloc(bytes); }
inline void CoTaskMemFree(void* block) { std::free(block); }
