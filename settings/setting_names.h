// The codes of the settings and their names, in the order in which lists show them. Plain data, no
// Windows: for the pages, for programs, and for whatever prints or reads a setting.

#pragma once

#include <cstdint>

#include "settings/vantrel_settings.h"

namespace tavo {

struct SettingName {
    const wchar_t* name;
    int32_t code;
};

inline constexpr SettingName kScaleMethodNames[] = {
    {L"AUTO", VantrelMethodAuto},
    {L"Nearest Neighbor AUTO", VantrelMethodNearestAuto},
    {L"Bi-Linear AUTO", VantrelMethodBilinearAuto},
    {L"Nearest Neighbor", VantrelMethodNearest},
    {L"Nearest Neighbor MMX", VantrelMethodNearestMmx},
    {L"Nearest Neighbor SSE", VantrelMethodNearestSse},
    {L"Bi-Linear", VantrelMethodBilinear},
    {L"Bi-Linear MMX", VantrelMethodBilinearMmx},
    {L"Bi-Linear SSE", VantrelMethodBilinearSse},
};

inline constexpr SettingName kPixelFormatNames[] = {
    {L"AUTO", VantrelFormatAuto},     {L"YV12", VantrelFormatYv12},
    {L"IYUV", VantrelFormatIyuv},     {L"YVU9", VantrelFormatYvu9},
    {L"YUY2", VantrelFormatYuy2},     {L"YUYV", VantrelFormatYuyv},
    {L"YVYU", VantrelFormatYvyu},     {L"UYVY", VantrelFormatUyvy},
    {L"RGB24", VantrelFormatRgb24},   {L"RGB555", VantrelFormatRgb555},
    {L"RGB565", VantrelFormatRgb565},
};

inline constexpr SettingName kVideoTypeNames[] = {
    {L"AUTO", VantrelTypeAuto},
    {L"MPEG1", VantrelTypeMpeg1},
    {L"MPEG2", VantrelTypeMpeg2},
};

}  // namespace tavo
