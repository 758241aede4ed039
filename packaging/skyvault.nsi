; The installer: for one user, without administrator's rights. packaging/make-installer.sh compiles it and gives
;   VERSION  of the program, as 1.2.3
;   SETUP    the installer to write
;   ROOT     this project's folder
;   PARTS    the folder of install.nsh, uninstall.nsh (a line for every file) and the picture side.bmp
;   SIZE     of the installed files, in KiB
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
!include MUI2.nsh
!include LogicLib.nsh
!include WinVer.nsh

!define PROGRAM "Skyvault"
!define MAKER "Brambleworks Studio"
!define ENTRY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${PROGRAM}"

Name "${PROGRAM}"
BrandingText "${PROGRAM} ${VERSION}"
OutFile "${SETUP}"
RequestExecutionLevel user
ManifestDPIAware true
; A file that cannot be written is never left out: try again, or give up.
AllowSkipFiles off
; An update goes where the program already is.
InstallDir "$LOCALAPPDATA\Programs\${PROGRAM}"
InstallDirRegKey HKCU "${ENTRY}" "InstallLocation"

VIProductVersion "${VERSION}.0"
VIFileVersion "${VERSION}.0"
VIAddVersionKey "CompanyName" "${MAKER}"
VIAddVersionKey "FileDescription" "${PROGRAM} Setup"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "${MAKER}"
VIAddVersionKey "ProductName" "${PROGRAM}"
VIAddVersionKey "ProductVersion" "${VERSION}"

!define MUI_ICON "${ROOT}/resources/skyvault.ico"
!define MUI_UNICON "${ROOT}/resources/skyvault.ico"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${PARTS}/side.bmp"
!define MUI_ABORTWARNING

!define MUI_WELCOMEPAGE_TEXT "This installs ${PROGRAM} ${VERSION} for you alone; no administrator's rights are needed.$\r$\n$\r$\nAn older version is replaced, and your settings stay.$\r$\n$\r$\nClick Next to continue."
!insertmacro MUI_PAGE_WELCOME
!define MUI_COMPONENTSPAGE_NODESC
!insertmacro MUI_PAGE_COMPONENTS
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE CheckPlace
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN "$INSTDIR\Skyvault.exe"
!define MUI_FINISHPAGE_RUN_TEXT "Start ${PROGRAM}"
!insertmacro MUI_PAGE_FINISH

!define MUI_UNCONFIRMPAGE_TEXT_TOP "${PROGRAM} will be uninstalled from the following folder. Your settings, your pictures and files of your own in that folder stay."
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE "English"

; "yes" from the first file on.
Var startedToWrite

; Gives up (exit code 2), with a message unless silent. On a page it keeps that page.
!macro GiveUp message
    MessageBox MB_OK|MB_ICONEXCLAMATION "${message}" /SD IDOK
    Abort "${message}"
!macroend

; Gives up while a program in that folder runs: its file can then be opened for reading only. A virus scanner
; or an icon being drawn has the same effect, but soon ends.
!macro CheckNotRunning folder exe
    ${If} ${FileExists} "${folder}\${exe}"
        ${For} $R1 1 15
            ClearErrors
            FileOpen $R0 "${folder}\${exe}" a
            ${IfNot} ${Errors}
                FileClose $R0
                ${Break}
            ${EndIf}
            Sleep 100
        ${Next}
        ${If} $R1 > 15
            !insertmacro GiveUp "${exe} in $\"${folder}$\" is running, or its file may not be changed. Close the program and try again."
        ${EndIf}
    ${EndIf}
!macroend

; What was installed and nothing else; folders that hold anything else stay.
!macro RemoveFiles
    ; A folder somebody is in cannot be removed.
    SetOutPath "$TEMP"
    !include "${PARTS}/uninstall.nsh"
!macroend
!macro RemoveUninstaller folder
    Delete "${folder}\Uninstall.exe"
    RMDir "${folder}"
!macroend

; All that can stand in the way is looked at before anything is changed.
Function CheckPlace
    ReadRegStr $0 HKCU "${ENTRY}" "InstallLocation"
    ${If} $0 != ""
        !insertmacro CheckNotRunning "$0" "Skyvault.exe"
        !insertmacro CheckNotRunning "$0" "skyvault-cli.exe"
    ${EndIf}
    !insertmacro CheckNotRunning "$INSTDIR" "Skyvault.exe"
    !insertmacro CheckNotRunning "$INSTDIR" "skyvault-cli.exe"
    ClearErrors
    CreateDirectory "$INSTDIR"
    GetTempFileName $R0 "$INSTDIR"
    ${If} ${Errors}
        !insertmacro GiveUp "Files cannot be written into $\"$INSTDIR$\". Choose another folder."
    ${EndIf}
    Delete $R0
    RMDir "$INSTDIR"
FunctionEnd

; Removes the installed version, so that no file stays that the new one does not have. Its uninstaller runs in
; place (_?=), so that it is waited for, and therefore leaves itself.
Function RemoveInstalled
    ReadRegStr $0 HKCU "${ENTRY}" "InstallLocation"
    ${If} $0 == ""
    ${OrIfNot} ${FileExists} "$0\Uninstall.exe"
        Return
    ${EndIf}
    DetailPrint "Removing the installed version"
    ClearErrors
    ExecWait '"$0\Uninstall.exe" /S _?=$0' $1
    ${If} ${Errors}
    ${OrIf} $1 <> 0
        !insertmacro GiveUp "The installed version in $\"$0$\" could not be removed."
    ${EndIf}
    !insertmacro RemoveUninstaller "$0"
FunctionEnd

Section "${PROGRAM}" ProgramSection
    SectionIn RO
    Call CheckPlace
    Call RemoveInstalled
    StrCpy $startedToWrite yes
    SetOutPath "$INSTDIR"
    WriteUninstaller "$INSTDIR\Uninstall.exe"
    !include "${PARTS}/install.nsh"

    CreateShortcut "$SMPROGRAMS\${PROGRAM}.lnk" "$INSTDIR\Skyvault.exe"
    WriteRegStr HKCU "${ENTRY}" "DisplayName" "${PROGRAM}"
    WriteRegStr HKCU "${ENTRY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${ENTRY}" "Publisher" "${MAKER}"
    WriteRegStr HKCU "${ENTRY}" "DisplayIcon" "$INSTDIR\Skyvault.exe,0"
    WriteRegStr HKCU "${ENTRY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${ENTRY}" "UninstallString" '"$INSTDIR\Uninstall.exe"'
    WriteRegStr HKCU "${ENTRY}" "QuietUninstallString" '"$INSTDIR\Uninstall.exe" /S'
    WriteRegDWORD HKCU "${ENTRY}" "EstimatedSize" ${SIZE}
    WriteRegDWORD HKCU "${ENTRY}" "NoModify" 1
    WriteRegDWORD HKCU "${ENTRY}" "NoRepair" 1
SectionEnd

Section /o "Shortcut on the desktop" DesktopSection
    CreateShortcut "$DESKTOP\${PROGRAM}.lnk" "$INSTDIR\Skyvault.exe"
    WriteRegDWORD HKCU "${ENTRY}" "DesktopShortcut" 1
SectionEnd

Function .onInit
    ${IfNot} ${AtLeastWin10}
        !insertmacro GiveUp "${PROGRAM} needs Windows 10 or newer."
    ${EndIf}
    ; An update keeps the choice made before.
    ReadRegDWORD $0 HKCU "${ENTRY}" "DesktopShortcut"
    ${If} $0 = 1
        SectionSetFlags ${DesktopSection} ${SF_SELECTED}
    ${EndIf}
FunctionEnd

; A full disk, say: better nothing than a part.
Function .onInstFailed
    ${If} $startedToWrite == yes
        !insertmacro RemoveFiles
        !insertmacro RemoveUninstaller "$INSTDIR"
    ${EndIf}
FunctionEnd

Section "Uninstall"
    !insertmacro CheckNotRunning "$INSTDIR" "Skyvault.exe"
    !insertmacro CheckNotRunning "$INSTDIR" "skyvault-cli.exe"

    !insertmacro RemoveFiles
    ${If} ${FileExists} "$INSTDIR\Skyvault.exe"
        !insertmacro GiveUp "$\"$INSTDIR\Skyvault.exe$\" could not be removed. Try again later."
    ${EndIf}
    !insertmacro RemoveUninstaller "$INSTDIR"
    ; The entry may be that of another folder: this one can be a copy made by hand.
    ReadRegStr $0 HKCU "${ENTRY}" "InstallLocation"
    ${IfNot} ${FileExists} "$0\Skyvault.exe"
        Delete "$SMPROGRAMS\${PROGRAM}.lnk"
        ReadRegDWORD $1 HKCU "${ENTRY}" "DesktopShortcut"
        ${If} $1 = 1
            Delete "$DESKTOP\${PROGRAM}.lnk"
        ${EndIf}
        DeleteRegKey HKCU "${ENTRY}"
    ${EndIf}
SectionEnd
