; macros.nsi - calls every macro of tarn.nsh, in the installer and in the uninstaller, and prints what
; they return. Defines: OUT_FILE; TARN_DLL, or TARNTOOL for those of tarntool.nsh; X86 for a 32-bit installer;
; INIT_ONLY for what happens where the library cannot be used.

!ifndef X86
  Target amd64-unicode
!endif
Unicode true
Name "Macros"
OutFile "${OUT_FILE}"
InstallDir "C:\Macros"
RequestExecutionLevel user
AutoCloseWindow true

!include FileFunc.nsh
!include LogicLib.nsh
!ifdef TARNTOOL
  !include "../../nsis/tarntool.nsh"
  !define LIBRARY "tarntool.exe"
  !define LETTERS 500 ; of an address: less than fits into a command line of NSIS_MAX_STRLEN
!else
  !include "../../nsis/tarn.nsh"
  !define LIBRARY "tarn.dll"
  !define LETTERS 1000
!endif

Page instfiles
!ifndef INIT_ONLY
  UninstPage instfiles
!endif

!ifndef INIT_ONLY
  Var Output
  Var Line
!endif
!define Print "!insertmacro Print"
!macro Print TEXT
  FileWrite $Output `${TEXT}$\n`
!macroend

!macro SetRegisters
  StrCpy $0 a0
  StrCpy $1 a1
  StrCpy $2 a2
  StrCpy $3 a3
  StrCpy $4 a4
  StrCpy $5 a5
  StrCpy $6 a6
  StrCpy $7 a7
  StrCpy $8 a8
  StrCpy $9 a9
  StrCpy $R0 b0
  StrCpy $R1 b1
  StrCpy $R9 b9
  Push bottom
!macroend

; All but $R0 to $R3, which the calls were given for their results; and the stack.
!macro PrintRegisters
  StrCpy $Line "$0 $1 $2 $3 $4 $5 $6 $7 $8 $9 $R9"
  Pop $R9
  ${Print} "kept: $Line $R9"
!macroend

!macro Calls
  !insertmacro SetRegisters
  ${Tarn_FileCopy} $R0 "$EXEPATH" "$INSTDIR\"
  ${Print} "before Tarn_Init: $R0"
  ${Tarn_VerifyEmail} $R0 $R1 $R2 $R3 "user@example.com"
  ${Print} "before Tarn_Init: $R0 $R1 [$R2] [$R3]"
  ${Tarn_DoFileOpenDialog} $R0 $R1 "" "" "" "" ""
  ${Print} "before Tarn_Init: $R0 [$R1]"
  ${Tarn_PutInRunOnce} $R0 "TarnMacros" "nothing"
  ${Print} "before Tarn_Init: $R0"
  ${Tarn_WriteChConfigFile} $R0 "$INSTDIR"
  ${Print} "before Tarn_Init: $R0"
  ${Tarn_WriteChConfigFileSilently} $R0 "$INSTDIR"
  ${Print} "before Tarn_Init: $R0"
  ${Tarn_DoWaitDlgModless} 0 "title" "text"
  ${Tarn_CloseWaitDlg}
  ${Tarn_Free}

!ifndef TARNTOOL
  ${Tarn_LoadFrom} $R0 "C:\no such (folder)\tarn.dll"
  ${Print} "missing: $R0"
  File "/oname=$INSTDIR\x86.dll" "${NSISDIR}\Plugins\x86-unicode\System.dll"
  ${Tarn_LoadFrom} $R0 "$INSTDIR\x86.dll"
  ${Print} "32-bit: $R0"
  Delete "$INSTDIR\x86.dll"
!endif

  ${Tarn_Init}
  ${Tarn_TryInit} $R0
  ${Print} "second Tarn_Init: [$R0]"

  ${Tarn_VerifyEmail} $R0 $R1 $R2 $R3 "  user.name@example.com  "
  ${Print} "$R0 $R1 [$R2] [$R3]"
  ${Tarn_VerifyEmail} $R3 $R2 $R1 $R0 "us er@example.com"
  ${Print} "$R3 $R2 [$R1] [$R0]"
  ${Tarn_VerifyEmail} $R0 $R1 $R2 $R3 "user@exa mple.com"
  ${Print} "$R0 $R1 [$R2] [$R3]"
  ${Tarn_VerifyEmail} $R0 $R1 $R2 $R3 "   "
  ${Print} "$R0 $R1 [$R2] [$R3]"
  ${Tarn_VerifyEmail} $R0 $R1 $R2 $R3 `"quoted'@example.com`
  ${Print} `$R0 $R1 [$R2] [$R3]`
  StrCpy $Line "@b.c"
  ${Do}
    StrCpy $Line "a$Line"
    StrLen $R0 $Line
  ${LoopUntil} $R0 = ${LETTERS}
  ${Tarn_VerifyEmail} $R0 $R1 $R2 $R3 "$Line"
  StrLen $R3 $R3
  ${Print} "$R0 $R1 [$R2] $R3 characters"

  File "/oname=$PLUGINSDIR\some file.txt" "${__FILE__}"
  ${Tarn_FileCopy} $R0 "$PLUGINSDIR\some file.txt" "$INSTDIR\"
  ${Print} "copied: $R0"
  ${If} ${FileExists} "$INSTDIR\some file.txt"
    ${Print} "under its own name"
  ${EndIf}
  Delete "$INSTDIR\some file.txt"
  ${Tarn_FileCopy} $R0 "C:\no such file" "$INSTDIR\"
  ${Print} "copied: $R0"
  CreateDirectory "$INSTDIR\embedch\config"
  ${Tarn_WriteChConfigFile} $R0 "$INSTDIR\"
  ${Print} "chrc: $R0"
  ; Nobody is there to close a message box.
  FileOpen $R1 "$INSTDIR\embedch\config\chrc" a
  ${Tarn_WriteChConfigFileSilently} $R0 "$INSTDIR"
  FileClose $R1
  ${Print} "chrc in use: $R0"
  Delete "$INSTDIR\embedch\config\chrc"
  ${Tarn_WriteChConfigFileSilently} $R0 "$INSTDIR"
  ${Print} "chrc, silently: $R0"
  System::Call 'kernel32::GetCompressedFileSizeW(w "$INSTDIR\embedch\config\chrc", p 0) i .R1'
  ${If} $R1 < 1000
    ${Print} "it is empty"
  ${EndIf}
  Delete "$INSTDIR\embedch\config\chrc"
  ${Tarn_WriteChConfigFileSilently} $R0 "$INSTDIR\none"
  ${Print} "no folder: $R0"
  RMDir "$INSTDIR\embedch\config"
  RMDir "$INSTDIR\embedch"
  ${Tarn_PutInRunOnce} $R0 "TarnMacros" '"%SystemRoot%\it$\'s.exe" $\`x$\` "a b"'
  ReadRegStr $R1 HKCU "Software\Microsoft\Windows\CurrentVersion\RunOnce" "TarnMacros"
  DeleteRegValue HKCU "Software\Microsoft\Windows\CurrentVersion\RunOnce" "TarnMacros"
  FileWrite $Output "queued: $R0 "
  FileWrite $Output $R1
  FileWrite $Output "$\n"

  ${Tarn_DoWaitDlgModless} 0 "Macros wait" "text"
  ${Tarn_PumpMessages}
  FindWindow $R0 "" "Macros wait"
  System::Call 'user32::IsWindowVisible(p R0) i .R1'
  ${Tarn_CloseWaitDlg}
  ${Tarn_PumpMessages}
  System::Call 'user32::IsWindow(p R0) i .R2'
  ${Print} "wait window: visible $R1, afterwards $R2"

  ${Tarn_Free}
  ${Tarn_Free}
  ${If} ${FileExists} "$PLUGINSDIR\${LIBRARY}"
  ${OrIf} ${FileExists} "$PLUGINSDIR\${LIBRARY}.*"
    ${Print} "${LIBRARY} is still there"
  ${EndIf}
  ${Tarn_FileCopy} $R0 "$EXEPATH" "$INSTDIR\"
  ${Print} "after Tarn_Free: $R0"
  ${Tarn_Init}
  ${Tarn_VerifyEmail} $R0 $R1 $R2 $R3 "user@example.com"
  ${Print} "again: $R0"
  ${Tarn_Free}
  !insertmacro PrintRegisters
!macroend

; With two bytes for each letter, the second of which looks like a backslash: buffers counted in
; letters would be too small.
!macro DoubleByteCalls
  StrCpy $Line ""
  ${Do}
    StrCpy $Line "${U+8868}$Line"
    StrLen $R0 $Line
  ${LoopUntil} $R0 = 80
  ${Tarn_Init}
  File "/oname=$PLUGINSDIR\$Line.txt" "${__FILE__}"
  ${Tarn_FileCopy} $R0 "$PLUGINSDIR\$Line.txt" "$INSTDIR\"
  ${Print} "copied: $R0"
  ${If} ${FileExists} "$INSTDIR\$Line.txt"
    ${Print} "under its own name"
  ${EndIf}
  Delete "$INSTDIR\$Line.txt"
  ${Do}
    StrCpy $Line "a$Line${U+8868}"
    StrLen $R0 $Line
  ${LoopUntil} $R0 = ${LETTERS}
  ${Tarn_VerifyEmail} $R0 $R1 $R2 $R3 "  $Line  "
  ${Print} "$R0 $R1 [$R2]"
  ${If} $R3 == $Line
    ${Print} "the same ${LETTERS} letters"
  ${EndIf}
  ${Tarn_Free}
!macroend

!ifdef INIT_ONLY
; Where it belongs: its message box on the wizard's own thread.
Function .onInit
  ${Tarn_Init}
  ${Tarn_Free}
FunctionEnd

Section
SectionEnd
!else
Section
  System::Call 'kernel32::GetStdHandle(i -11) p .s'
  Pop $Output
  SetOutPath "$INSTDIR"
  ${GetParameters} $R0
  ClearErrors
  ${GetOptions} $R0 "/DOUBLE_BYTE" $R1
  ${IfNot} ${Errors}
    !insertmacro DoubleByteCalls
    Return
  ${EndIf}
  !insertmacro Calls
  SetOutPath "$TEMP"
  WriteUninstaller "$INSTDIR\uninstall.exe"
SectionEnd

Section Uninstall
  System::Call 'kernel32::GetStdHandle(i -11) p .s'
  Pop $Output
  !insertmacro Calls
SectionEnd
!endif
