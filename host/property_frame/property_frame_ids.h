// Identifiers of the frame's dialog, for the sources and the resource compiler alike. OK and Cancel
// have those of the system.

#pragma once

#define IDD_PROPERTY_FRAME 200
#define IDC_FRAME_TABS 2001
#define IDC_FRAME_PLACE 2002
#define IDC_FRAME_APPLY 2003
