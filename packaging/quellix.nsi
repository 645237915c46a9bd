; The installer, for one user and without administrator rights: makensis with VERSION, PROGRAMS (the
; folder of what is installed), LISTS (file lists made of it) and OUTPUT.
; As 64-bit as what it installs.
Target amd64-unicode
SetCompressor /SOLID lzma
!include "LogicLib.nsh"
!include "MUI2.nsh"
!include "TextFunc.nsh"

!define KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Quellix"
!define RUN_KEY "Software\Microsoft\Windows\CurrentVersion\Run"

Name "Quellix"
BrandingText "Quellix ${VERSION}"
OutFile "${OUTPUT}"
RequestExecutionLevel user
InstallDir "$LOCALAPPDATA\Programs\Quellix"
InstallDirRegKey HKCU "${KEY}" "InstallLocation"
VIProductVersion "${VERSION}.0"
VIAddVersionKey "CompanyName" "The Quellix developers"
VIAddVersionKey "FileDescription" "Quellix disk cleanup and privacy, installer"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "Copyright (c) 2026 The Quellix developers, MIT License"
VIAddVersionKey "ProductName" "Quellix"
VIAddVersionKey "ProductVersion" "${VERSION}"
ShowInstDetails nevershow
ShowUninstDetails nevershow

!define MUI_ICON "${PROGRAMS}\..\quellix.ico"
!define MUI_UNICON "${PROGRAMS}\..\quellix.ico"
!define MUI_ABORTWARNING
!define MUI_COMPONENTSPAGE_NODESC
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN "$INSTDIR\quellix.exe"
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!include "${__FILEDIR__}/languages.nsh"

; A copy that runs holds its files, and may be cleaning: it is asked to close, and waited for.
!macro CloseRunning un
Function ${un}CloseRunning
  again:
  FindWindow $0 "ThunderRT6Main" "Quellix"
  ${If} $0 == 0
    Return
  ${EndIf}
  MessageBox MB_OKCANCEL|MB_ICONEXCLAMATION "$(Running)" /SD IDCANCEL IDOK close
  SetErrorLevel 1
  Abort
  close:
  SendMessage $0 ${WM_CLOSE} 0 0 /TIMEOUT=5000
  Sleep 1000
  Goto again
FunctionEnd
!macroend
!insertmacro CloseRunning ""
!insertmacro CloseRunning "un."

Function .onInit
  Call CloseRunning
FunctionEnd

Function un.onInit
  Call un.CloseRunning
FunctionEnd

; $R0 is 1 where this copy kept its settings in the user's own folder and no other copy that is still
; there does, such as one on a disc: the program lists there whose it is, a line each.
Function un.OwnsData
  StrCpy $R0 0
  StrCpy $R1 0
  ClearErrors
  FileOpen $0 "$APPDATA\Quellix\Programs.txt" r
  ${If} ${Errors}
    Return
  ${EndIf}
  next:
  ClearErrors
  FileReadUTF16LE $0 $1
  ${IfNot} ${Errors}
    ${TrimNewLines} $1 $1
    ${If} $1 == $INSTDIR
      StrCpy $R0 1
    ${ElseIf} ${FileExists} "$1\quellix.exe"
      StrCpy $R1 1
    ${EndIf}
    Goto next
  ${EndIf}
  FileClose $0
  ${If} $R1 == 1
    StrCpy $R0 0
  ${EndIf}
FunctionEnd

Section "Quellix" Program
  SectionIn RO
  SetOutPath "$INSTDIR"
  ; What a user may have changed stays at an update.
  SetOverwrite off
  !include "${LISTS}\kept.nsh"
  SetOverwrite on
  !include "${LISTS}\files.nsh"
  SetOutPath "$INSTDIR"
  WriteUninstaller "$INSTDIR\Uninstall.exe"
  CreateShortcut "$SMPROGRAMS\Quellix.lnk" "$INSTDIR\quellix.exe"
  WriteRegStr HKCU "${KEY}" "DisplayName" "Quellix"
  WriteRegStr HKCU "${KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${KEY}" "Publisher" "The Quellix developers"
  WriteRegStr HKCU "${KEY}" "DisplayIcon" "$INSTDIR\quellix.exe"
  WriteRegStr HKCU "${KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${KEY}" "UninstallString" '"$INSTDIR\Uninstall.exe"'
  WriteRegStr HKCU "${KEY}" "QuietUninstallString" '"$INSTDIR\Uninstall.exe" /S'
  WriteRegDWORD HKCU "${KEY}" "EstimatedSize" ${KILOBYTES}
  WriteRegDWORD HKCU "${KEY}" "NoModify" 1
  WriteRegDWORD HKCU "${KEY}" "NoRepair" 1
SectionEnd

; The value that the program's own options write.
Section /o "$(WithWindows)" WithWindows
  WriteRegStr HKCU "${RUN_KEY}" "Quellix" '"$INSTDIR\quellix.exe" -S'
SectionEnd

; What was installed goes, by name; what is not ours stays, and so does its folder then. Backups are
; never removed: they may be all that is left of a file.
Section "Uninstall"
  !include "${LISTS}\removed.nsh"
  Delete "$SMPROGRAMS\Quellix.lnk"
  ReadRegStr $0 HKCU "${RUN_KEY}" "Quellix"
  ${If} $0 == '"$INSTDIR\quellix.exe" -S'
    DeleteRegValue HKCU "${RUN_KEY}" "Quellix"
  ${EndIf}
  ${ForEach} $1 1 2 + 1
    StrCpy $2 "Software\Classes\*\shell"
    ${If} $1 == 2
      StrCpy $2 "Software\Classes\Directory\shell"
    ${EndIf}
    ReadRegStr $0 HKCU "$2\Quellix.Remove\command" ""
    ${If} $0 == '"$INSTDIR\quellix.exe" --remove "%1"'
      DeleteRegKey HKCU "$2\Quellix.Remove"
    ${EndIf}
  ${Next}
  DeleteRegKey HKCU "${KEY}"
  Call un.OwnsData
  StrCpy $3 "$INSTDIR"
  ${If} $R0 == 1
    StrCpy $3 "$INSTDIR$(AndIn)$APPDATA\Quellix"
  ${ElseIf} ${FileExists} "$APPDATA\Quellix\*.*"
    StrCpy $4 "$\r$\n$\r$\n$(Others)"
  ${EndIf}
  MessageBox MB_YESNO|MB_DEFBUTTON2 "$(Remove)$4" /SD IDNO IDNO kept
  !include "${LISTS}\settings.nsh"
  ${If} $R0 == 1
    !include "${LISTS}\data.nsh"
  ${EndIf}
  kept:
  Delete "$INSTDIR\Uninstall.exe"
  RMDir "$INSTDIR\Plugins"
  RMDir "$INSTDIR\Help"
  RMDir "$INSTDIR"
SectionEnd
