; The Windows installer, made by scripts/package-windows with makensis.
; Defines from the command line: VERSION, PROGRAM (the staged program
; folder), OUTFILE.
;
; Installs the program folder as the build has it (the three programs, the
; toolkit's DLL, and decoder\, encoder\ and DSPs\ beside them) into Program Files, a Start
; menu entry, "Convert with Quillotone Track Converter" on audio files in
; Explorer, and an uninstaller that removes all of it. The user's settings
; (the registry key and the qvt folder of the application data) stay
; unless the uninstaller is asked: the check box on its page, or
; /REMOVESETTINGS on its command line.
; A 64-bit installer, like the program it installs.
Target amd64-unicode
SetCompressor /SOLID lzma
RequestExecutionLevel admin

!define NAME "Quillotone Track Converter"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\QuillotoneTrackConverter"
!define VERB_KEY "Software\Classes\SystemFileAssociations\audio\shell\QuillotoneTrackConverter"
!define SETTINGS_KEY "Software\Harrowmere\Quillotone"

Name "${NAME} ${VERSION}"
OutFile "${OUTFILE}"
InstallDir "$PROGRAMFILES64\${NAME}"
InstallDirRegKey HKLM "${UNINSTALL_KEY}" "InstallLocation"

!include "MUI2.nsh"
!include "FileFunc.nsh"

!define MUI_ABORTWARNING
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

Section "Install"
  SetOutPath "$INSTDIR"
  File "${PROGRAM}/TrackConverter.exe"
  File "${PROGRAM}/ConvertWorker.exe"
  File "${PROGRAM}/qvt.exe"
  File "${PROGRAM}/*.dll"
  SetOutPath "$INSTDIR\decoder"
  File "${PROGRAM}/decoder/*.dll"
  SetOutPath "$INSTDIR\encoder"
  File "${PROGRAM}/encoder/*.dll"
  SetOutPath "$INSTDIR\DSPs"
  File "${PROGRAM}/DSPs/*.dll"
  SetOutPath "$INSTDIR"
  File "${PROGRAM}/VERSIONS.txt"

  ; Everyone's Start menu.
  SetShellVarContext all
  CreateShortCut "$SMPROGRAMS\${NAME}.lnk" "$INSTDIR\TrackConverter.exe"

  ; Explorer's verb on every file the system counts as audio.
  WriteRegStr HKLM "${VERB_KEY}" "" "Convert with ${NAME}"
  WriteRegStr HKLM "${VERB_KEY}" "Icon" "$INSTDIR\TrackConverter.exe"
  WriteRegStr HKLM "${VERB_KEY}" "MultiSelectModel" "Player"
  WriteRegStr HKLM "${VERB_KEY}\command" "" '"$INSTDIR\TrackConverter.exe" "%1"'

  WriteUninstaller "$INSTDIR\Uninstall.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "${NAME}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "Harrowmere"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\TrackConverter.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\Uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\Uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
  ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" $0
SectionEnd

Section "un.Program" SecProgram
  SectionIn RO
  Delete "$INSTDIR\TrackConverter.exe"
  Delete "$INSTDIR\ConvertWorker.exe"
  Delete "$INSTDIR\qvt.exe"
  Delete "$INSTDIR\libqv_toolkit.dll"
  Delete "$INSTDIR\VERSIONS.txt"
  RMDir /r "$INSTDIR\decoder"
  RMDir /r "$INSTDIR\encoder"
  RMDir /r "$INSTDIR\DSPs"
  Delete "$INSTDIR\Uninstall.exe"
  RMDir "$INSTDIR"
  SetShellVarContext all
  Delete "$SMPROGRAMS\${NAME}.lnk"
  DeleteRegKey HKLM "${VERB_KEY}"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
SectionEnd

Section /o "un.Your settings and crash records" SecSettings
  SetShellVarContext current
  DeleteRegKey HKCU "${SETTINGS_KEY}"
  DeleteRegKey /ifempty HKCU "Software\Harrowmere"
  RMDir /r "$APPDATA\qvt"
SectionEnd

; /REMOVESETTINGS selects the settings too, for a silent uninstall.
Function un.onInit
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/REMOVESETTINGS" $1
  ${IfNot} ${Errors}
    SectionSetFlags ${SecSettings} ${SF_SELECTED}
  ${EndIf}
FunctionEnd
