; minimal.nsi - the least that an installer with tarn.dll needs
;
;   makensis minimal.nsi
;   minimal-setup.exe                                  with a user interface
;   minimal-setup.exe /S /EMAIL=address [/D=folder]    without; exit code 3: the address is refused,
;                                                      4: files cannot be written
;
; It installs itself: this script.

Target amd64-unicode
Unicode true
Name "Minimal"
OutFile "minimal-setup.exe"
InstallDir "$LOCALAPPDATA\Programs\Minimal"
RequestExecutionLevel user

!include FileFunc.nsh
!include LogicLib.nsh
!include "..\..\nsis\tarn.nsh"

Page directory
Page instfiles "" OpenWaitWindow CloseWaitWindow
AutoCloseWindow true

Function .onInit
  ${Tarn_Init}
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/EMAIL=" $1
  ${If} ${Errors}
  ${AndIfNot} ${Silent}
    Return
  ${EndIf}
  ${Tarn_VerifyEmail} $2 $3 $4 $5 $1
  ${If} $2 != 1
    MessageBox MB_OK|MB_ICONSTOP "The e-mail address $5 is refused. $4" /SD IDOK
    ${Tarn_Free}
    SetErrorLevel 3
    Quit
  ${EndIf}
FunctionEnd

; The wait window belongs to the wizard's thread; a section has another one.
Function OpenWaitWindow
  ${Tarn_DoWaitDlgModless} $HWNDPARENT "Please wait" "Minimal is being installed."
FunctionEnd

Function CloseWaitWindow
  ${Tarn_CloseWaitDlg}
FunctionEnd

Section
  InitPluginsDir
  File "/oname=$PLUGINSDIR\minimal.nsi" "${__FILE__}"
  CreateDirectory "$INSTDIR\embedch\config"
  ${Tarn_FileCopy} $0 "$PLUGINSDIR\minimal.nsi" "$INSTDIR\"
  ${If} $0 = 1
    ; Where it cannot open its file, the library shows a message box, also in a silent installer.
    ClearErrors
    FileOpen $1 "$INSTDIR\embedch\config\chrc" a
    ${If} ${Errors}
      StrCpy $0 0
    ${Else}
      FileClose $1
      ${Tarn_WriteChConfigFile} $0 "$INSTDIR"
    ${EndIf}
  ${EndIf}
  ${If} $0 != 1
    MessageBox MB_OK|MB_ICONSTOP "Files in $INSTDIR cannot be written." /SD IDOK
    SetErrorLevel 4
  ${EndIf}
  WriteUninstaller "$INSTDIR\uninstall.exe"
SectionEnd

Section Uninstall
  Delete "$INSTDIR\minimal.nsi"
  Delete "$INSTDIR\embedch\config\chrc"
  RMDir "$INSTDIR\embedch\config"
  RMDir "$INSTDIR\embedch"
  ; What runs is a copy, and the program that made it may not have come to its end yet.
  ${ForEach} $0 1 100 + 1
    Delete "$INSTDIR\uninstall.exe"
    ${IfNot} ${FileExists} "$INSTDIR\uninstall.exe"
      ${Break}
    ${EndIf}
    Sleep 50
  ${Next}
  RMDir "$INSTDIR"
SectionEnd

Function .onGUIEnd
  ${Tarn_Free}
FunctionEnd

Function .onInstSuccess
  ${If} ${Silent}
    ${Tarn_Free}
  ${EndIf}
FunctionEnd

Function .onInstFailed
  ${If} ${Silent}
    ${Tarn_Free}
  ${EndIf}
FunctionEnd
