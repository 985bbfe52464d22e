; tarntool.nsh - the installer support library for NSIS scripts that cannot load it: 32-bit installers, what
; makensis makes by default. The 64-bit program tarntool.exe stands between.
;
; The macros are those of tarn.nsh, which describes them, with the same names, arguments and results, so that
; a script needs another "!include" and nothing else. They need 64-bit Windows, and a Unicode installer.
;
;   !define TARNTOOL "path\to\tarntool.exe"   ; optional: the default is ..\bin\tarntool.exe beside this file
;   !include tarntool.nsh
;
; What differs:
;
;   - Tarn_LoadFrom is not there. Tarn_Init and Tarn_TryInit extract the program to $PLUGINSDIR, and start it
;     once to see whether that is possible. Tarn_Free ends the wait window, if there is one, and deletes the
;     program.
;   - "error" is the result before Tarn_Init, and also when the program cannot be started or says that it was
;     called in a wrong way.
;   - The wait window belongs to another process: it needs no messages of the installer's, may be opened and
;     closed by pages and sections alike, and goes with the installer when that ends. Tarn_PumpMessages does
;     nothing.
;   - Tarn_DoFileOpenDialog stands over $HWNDPARENT, which cannot be clicked meanwhile.
;   - Tarn_WriteChConfigFile and Tarn_WriteChConfigFileSilently never show a message box.
;   - What a call is given may have some 700 characters in all (NSIS_MAX_STRLEN).

!ifndef TARNTOOL_NSH_INCLUDED
!define TARNTOOL_NSH_INCLUDED

!include LogicLib.nsh
!include Util.nsh
!include "${__FILEDIR__}/tarn-fault.nsh"

!if "${NSIS_CHAR_SIZE}" != 2
  !error "tarntool.nsh is for Unicode installers: put 'Unicode true' at the top of the script."
!endif

!ifndef TARNTOOL
  !define TARNTOOL "${__FILEDIR__}\..\bin\tarntool.exe"
!endif

; A letter has up to three bytes of UTF-8.
!define /math _TARN_MAX_BYTES ${NSIS_MAX_STRLEN} * 3

Var _Tarn_Program   ; the extracted program; empty when it is not there
Var _Tarn_Waits     ; 1 while the wait window is open

!define Tarn_Init              `!insertmacro Tarn_Init`
!define Tarn_TryInit           `!insertmacro Tarn_TryInit`
!define Tarn_Free              `!insertmacro Tarn_Free`
!define Tarn_FileCopy          `!insertmacro Tarn_FileCopy`
!define Tarn_VerifyEmail       `!insertmacro Tarn_VerifyEmail`
!define Tarn_DoFileOpenDialog  `!insertmacro Tarn_DoFileOpenDialog`
!define Tarn_PutInRunOnce      `!insertmacro Tarn_PutInRunOnce`
!define Tarn_WriteChConfigFile `!insertmacro Tarn_WriteChConfigFile`
!define Tarn_WriteChConfigFileSilently `!insertmacro Tarn_WriteChConfigFile`
!define Tarn_DoWaitDlgModless  `!insertmacro Tarn_DoWaitDlgModless`
!define Tarn_CloseWaitDlg      `!insertmacro Tarn_CloseWaitDlg`
!define Tarn_PumpMessages      `!insertmacro Tarn_PumpMessages`

; Arguments are put between back quotes, so that a command line may hold quotes of its own.

!macro Tarn_Init
  Push $0
  ${Tarn_TryInit} $0
  ${If} $0 != ""
    MessageBox MB_OK|MB_ICONSTOP "$0" /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndIf}
  Pop $0
!macroend

!macro Tarn_TryInit ERROR
  ${CallArtificialFunction} _Tarn_TryInit
  Pop ${ERROR}
!macroend

!macro Tarn_Free
  ${CallArtificialFunction} _Tarn_Free
!macroend

!macro Tarn_FileCopy RESULT SOURCE FOLDER
  Push `${FOLDER}`
  Push `${SOURCE}`
  ${CallArtificialFunction} _Tarn_FileCopy
  Pop ${RESULT}
!macroend

!macro Tarn_VerifyEmail RESULT POSITION MESSAGE TRIMMED ADDRESS
  Push `${ADDRESS}`
  ${CallArtificialFunction} _Tarn_VerifyEmail
  Pop ${RESULT}
  Pop ${POSITION}
  Pop ${MESSAGE}
  Pop ${TRIMMED}
!macroend

!macro Tarn_DoFileOpenDialog RESULT PATH FOLDER TITLE FILTER EXTENSION FILE
  Push `${FILE}`
  Push `${EXTENSION}`
  Push `${FILTER}`
  Push `${TITLE}`
  Push `${FOLDER}`
  ${CallArtificialFunction} _Tarn_DoFileOpenDialog
  Pop ${RESULT}
  Pop ${PATH}
!macroend

!macro Tarn_PutInRunOnce RESULT NAME COMMAND
  Push `${COMMAND}`
  Push `${NAME}`
  ${CallArtificialFunction} _Tarn_PutInRunOnce
  Pop ${RESULT}
!macroend

!macro Tarn_WriteChConfigFile RESULT FOLDER
  Push `${FOLDER}`
  ${CallArtificialFunction} _Tarn_WriteChConfigFile
  Pop ${RESULT}
!macroend

!macro Tarn_DoWaitDlgModless PARENT TITLE MESSAGE
  Push `${MESSAGE}`
  Push `${TITLE}`
  Push `${PARENT}`
  ${CallArtificialFunction} _Tarn_DoWaitDlgModless
!macroend

!macro Tarn_CloseWaitDlg
  ${CallArtificialFunction} _Tarn_CloseWaitDlg
!macroend

!macro Tarn_PumpMessages
!macroend

; From here on: bodies, each compiled once for the installer and once for the uninstaller. Every body
; saves the registers first and restores them last; what it leaves on the stack is the result.

; Puts $REG, as one argument of a command line, back into it. Changes $8 and $9.
!macro _Tarn_Quote REG
  StrCpy $9 ""
  ${DoWhile} $${REG} != ""
    StrCpy $8 $${REG} 1
    StrCpy $${REG} $${REG} "" 1
    ${If} $8 == '"'
      StrCpy $8 '""'
    ${EndIf}
    StrCpy $9 "$9$8"
  ${Loop}
  StrCpy $${REG} '"$9"'
!macroend

; Runs the program: its exit code goes to $0, "error" if there is none.
!macro _Tarn_Run ARGUMENTS
  StrCpy $0 "error"
  ${If} $_Tarn_Program != ""
    ClearErrors
    ExecWait '"$_Tarn_Program" --out "$_Tarn_Program.txt" ${ARGUMENTS}' $0
    ${If} ${Errors}
    ${OrIf} $0 = 100 ; wrong arguments
    ${OrIf} $0 = 107 ; a failure of the system
      StrCpy $0 "error"
    ${EndIf}
  ${EndIf}
!macroend

; Turns the exit code in $0 into a result.
!macro _Tarn_Succeeded
  ${If} $0 != "error"
    ${If} $0 = 0
      StrCpy $0 1
    ${Else}
      StrCpy $0 0
    ${EndIf}
  ${EndIf}
!macroend

; What the last run has said, UTF-8, goes to $9. Changes $6, $7 and $8.
!macro _Tarn_Read
  StrCpy $9 ""
  System::Call 'kernel32::CreateFileW(w "$_Tarn_Program.txt", i 0x80000000, i 1, p 0, i 3, i 0, p 0) p .r6'
  ${If} $6 P<> -1
    System::Alloc ${_TARN_MAX_BYTES}
    Pop $7
    System::Call 'kernel32::ReadFile(p r6, p r7, i ${_TARN_MAX_BYTES}, *i .r8, p 0)'
    System::Call 'kernel32::MultiByteToWideChar(i 65001, i 0, p r7, i r8, w .r9, i ${NSIS_MAX_STRLEN})'
    System::Free $7
    System::Call 'kernel32::CloseHandle(p r6)'
    Delete "$_Tarn_Program.txt"
  ${EndIf}
!macroend

; Moves the first line of $9 to REG. Changes $8.
!macro _Tarn_Line REG
  StrCpy $${REG} ""
  ${Do}
    StrCpy $8 $9 1
    ${IfThen} $8 == "" ${|} ${ExitDo} ${|}
    StrCpy $9 $9 "" 1
    ${IfThen} $8 == "$\n" ${|} ${ExitDo} ${|}
    ${If} $8 != "$\r"
      StrCpy $${REG} "$${REG}$8"
    ${EndIf}
  ${Loop}
!macroend

!macro _Tarn_TryInit
  System::Store S
  StrCpy $1 ""
  ${If} $_Tarn_Program == ""
    InitPluginsDir
    File "/oname=$PLUGINSDIR\tarntool.exe" "${TARNTOOL}"
    StrCpy $_Tarn_Program "$PLUGINSDIR\tarntool.exe"
    !insertmacro _Tarn_Run "version"
    ${If} $0 != 0
      StrCpy $1 "The setup program cannot be started: $_Tarn_Program. It needs 64-bit Windows, and a virus scanner that leaves it alone."
      Delete $_Tarn_Program
      StrCpy $_Tarn_Program ""
    ${EndIf}
  ${EndIf}
  Push $1
  System::Store L
!macroend

!macro _Tarn_Free
  ${Tarn_CloseWaitDlg}
  ${If} $_Tarn_Program != ""
    Delete "$_Tarn_Program.txt"
    Delete $_Tarn_Program
    StrCpy $_Tarn_Program ""
  ${EndIf}
!macroend

!macro _Tarn_FileCopy
  System::Store S
  Pop $1
  Pop $2
  !insertmacro _Tarn_Quote 1
  !insertmacro _Tarn_Quote 2
  !insertmacro _Tarn_Run "copy $2 $1"
  !insertmacro _Tarn_Succeeded
  Push $0
  System::Store L
!macroend

!macro _Tarn_VerifyEmail
  System::Store S
  Pop $1
  StrCpy $5 $1
  StrCpy $3 -1
  StrCpy $4 ""
  !insertmacro _Tarn_Quote 1
  !insertmacro _Tarn_Run "check -- $1"
  ${If} $0 != "error"
    !insertmacro _Tarn_Read
    !insertmacro _Tarn_Line 0
    !insertmacro _Tarn_Line 3
    !insertmacro _Tarn_Line 4
    !insertmacro _Tarn_Line 5
  ${EndIf}
  Push $5
  Push $4
  Push $3
  Push $0
  System::Store L
!macroend

!macro _Tarn_DoFileOpenDialog
  System::Store S
  Pop $1 ; initial folder
  Pop $2 ; title
  Pop $3 ; filter
  Pop $4 ; default extension
  Pop $5 ; initial file
  StrCpy $6 ""
  ${If} $HWNDPARENT <> 0
    StrCpy $6 "--parent $HWNDPARENT"
  ${EndIf}
  !insertmacro _Tarn_Option 1 6 folder
  !insertmacro _Tarn_Option 2 6 title
  !insertmacro _Tarn_Option 3 6 filter
  !insertmacro _Tarn_Option 4 6 extension
  !insertmacro _Tarn_Option 5 6 file
  !insertmacro _Tarn_Run "open $6"
  StrCpy $5 ""
  ${If} $0 != "error"
    ${If} $0 = 0
      !insertmacro _Tarn_Read
      !insertmacro _Tarn_Line 5
      StrCpy $0 1
    ${Else}
      StrCpy $0 0
    ${EndIf}
  ${EndIf}
  Push $5
  Push $0
  System::Store L
!macroend

; Adds --NAME and the text in REG to the arguments in TO; nothing for an empty text.
!macro _Tarn_Option REG TO NAME
  ${If} $${REG} != ""
    !insertmacro _Tarn_Quote ${REG}
    StrCpy $${TO} "$${TO} --${NAME} $${REG}"
  ${EndIf}
!macroend

; Behind "--" the command stands as it is.
!macro _Tarn_PutInRunOnce
  System::Store S
  Pop $1
  Pop $2
  !insertmacro _Tarn_Quote 1
  !insertmacro _Tarn_Run "runonce $1 -- $2"
  !insertmacro _Tarn_Succeeded
  Push $0
  System::Store L
!macroend

!macro _Tarn_WriteChConfigFile
  System::Store S
  Pop $1
  !insertmacro _Tarn_Quote 1
  !insertmacro _Tarn_Run "config --quiet $1"
  !insertmacro _Tarn_Succeeded
  Push $0
  System::Store L
!macroend

; The window is known by the installer's process.
!macro _Tarn_WaitName REG
  System::Call 'kernel32::GetCurrentProcessId() i .${REG}'
!macroend

!macro _Tarn_DoWaitDlgModless
  System::Store S
  Pop $1
  Pop $2
  Pop $3
  !insertmacro _Tarn_WaitName r5
  StrCpy $4 "--id nsis-$5"
  ${If} $1 <> 0
    StrCpy $4 "$4 --parent $1"
  ${EndIf}
  !insertmacro _Tarn_Option 2 4 title
  !insertmacro _Tarn_Option 3 4 message
  !insertmacro _Tarn_Run "wait $4"
  ${If} $0 == 0
    StrCpy $_Tarn_Waits 1
  ${EndIf}
  System::Store L
!macroend

!macro _Tarn_CloseWaitDlg
  System::Store S
  ${If} $_Tarn_Waits = 1
    StrCpy $_Tarn_Waits 0
    !insertmacro _Tarn_WaitName r5
    !insertmacro _Tarn_Run "done --id nsis-$5"
  ${EndIf}
  System::Store L
!macroend

!endif ; TARNTOOL_NSH_INCLUDED
