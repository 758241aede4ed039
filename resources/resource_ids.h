/* Numbers of the program's resources and dialog controls. Read by the resource compiler too: macros only. */
#pragma once

#define IDI_SKYVAULT 107
#define IDM_MAIN 109
#define IDD_ABOUT 130
#define IDD_PROGRESS 136

#define IDC_ABOUT_GUIDE 1901
#define IDC_ABOUT_COMMUNITY 1902

#define IDC_PROGRESS_TEXT 1044
#define IDC_PROGRESS_BAR 1045
