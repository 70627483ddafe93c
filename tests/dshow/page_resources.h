// Resource identifiers of the test page.
#pragma once

#define IDS_PAGE_TITLE 201
#define IDD_PAGE 202
#define IDC_EDIT 203
#define IDC_BUTTON 204
