// Identifiers of the dialogs, their controls and the strings, for the sources and the resource
// compiler alike.

#pragma once

#define IDD_RESAMPLE 106
#define IDC_WIDTH 1001
#define IDC_HEIGHT 1003
#define IDC_METHOD 1012
#define IDC_MODULE_TIME 1013
#define IDC_FORMAT 1014
#define IDC_TYPE 1015
#define IDC_SYSTEM_FPS 1016

#define IDD_TIME_REGULATOR 107
#define IDC_ENABLE 1019
#define IDC_FRAME_RATE 1020
#define IDC_GENERATE_FPS 1021

#define IDC_LABEL (-1)

#define IDS_RESAMPLE_TITLE 1
#define IDS_TIME_REGULATOR_TITLE 43

// Each list has its texts in the order of its items.
#define IDS_FIRST_METHOD 10
#define IDS_FIRST_FORMAT 20
#define IDS_FIRST_TYPE 40
