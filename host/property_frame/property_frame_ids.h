// Identifiers of the frame's dialog, for C++ and the resource compiler. OK and Cancel have the
// system's.

#pragma once

#define IDD_PROPERTY_FRAME 200
#define IDC_FRAME_TABS 2001
#define IDC_FRAME_PLACE 2002
#define IDC_FRAME_APPLY 2003
