/* Numbers of the program's resources and dialog controls. Read by the resource compiler too: macros only. */
#pragma once

#define IDI_SKYVAULT 107
#define IDM_MAIN 109
#define IDD_ABOUT 130
#define IDD_BATCH 133
#define IDD_PROGRESS 136

#define IDC_PROGRESS_TEXT 1044
#define IDC_PROGRESS_BAR 1045

#define IDC_BATCH_PROGRESS 1009
#define IDC_BATCH_SOURCE 1010
#define IDC_BATCH_SOURCE_LAYOUT 1011
#define IDC_BATCH_DESTINATION 1013
#define IDC_BATCH_DESTINATION_LAYOUT 1014
#define IDC_BATCH_STATUS 1015
#define IDC_BATCH_EXTENSION 1016
#define IDC_BATCH_SUBFOLDERS 1017
#define IDC_BATCH_BROWSE_SOURCE 1046
#define IDC_BATCH_BROWSE_DESTINATION 1047

/* Labels: controls that nobody asks for. */
#ifndef IDC_STATIC
#define IDC_STATIC -1
#endif
