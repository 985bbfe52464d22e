; tarn.nsh - the installer support library (tarn.dll) for NSIS scripts
;
; For 64-bit Unicode installers: the script says "Target amd64-unicode". Everything works in the
; installer and in the uninstaller alike; no "un." forms are needed.
;
;   !define TARN_DLL "path\to\tarn.dll"   ; optional: the default is ..\bin\tarn.dll beside this file
;   !include tarn.nsh
;
; Getting the library ready, and putting it away:
;
;   ${Tarn_Init}
;       Extracts tarn.dll to $PLUGINSDIR and loads it; in .onInit and un.onInit. When that fails, a
;       message box says why (in a silent installer nothing is shown) and the installer ends with
;       exit code 2. Calling it again does nothing.
;   ${Tarn_TryInit} error
;       The same, but only reports: error is empty when the library is ready, and a sentence for the
;       user otherwise.
;   ${Tarn_LoadFrom} error "path\tarn.dll"
;       Loads a tarn.dll that is already on the disk.
;   ${Tarn_Free}
;       Unloads the library, and deletes what Tarn_Init extracted; without it the file would stay in
;       the temporary folder, because a loaded DLL cannot be deleted. Call it on every way out:
;       .onGUIEnd with a user interface, .onInstSuccess and .onInstFailed in a silent installer (and
;       their un. forms), and before Quit or Abort in .onInit. Calling it again does nothing.
;
; The functions, results first. result is 1 or 0, or "error" when the library is not loaded:
;
;   ${Tarn_FileCopy} result "source" "folder\"
;       Copies one file under its own name. The folder must exist, and must end in a backslash: the
;       name is appended to it as it stands.
;   ${Tarn_VerifyEmail} result position message trimmed "address"
;       1 when the address is accepted. Otherwise message says what is wrong (empty when the address
;       is empty) and position where, in the trimmed address: 0-based for a fault before the "@",
;       1-based for a fault after it, -1 for none.
;   ${Tarn_SelectFault} field position
;       For the page that was told so: field is the handle of an edit control, and holds the trimmed
;       address. Gives it the focus and selects the character at fault; with the position -1 the caret
;       goes to the end.
;   ${Tarn_DoFileOpenDialog} result path "initial folder" "title" "filter" "extension" "initial file"
;       Lets the user pick a file. 1 when one was picked; path is empty otherwise. Any of the inputs
;       may be "". A filter looks like "Licence files (*.lic)|*.lic|All files (*.*)|*.*||". The
;       process's current folder, which the system's dialog may change, is put back.
;   ${Tarn_PutInRunOnce} result "value name" "command line"
;       Queues a command for the current user's next log-on.
;   ${Tarn_WriteChConfigFile} result "installation folder"
;       Writes embedch\config\chrc under the folder; embedch\config must exist. When the file cannot be
;       opened, a message box says why.
;   ${Tarn_WriteChConfigFileSilently} result "installation folder"
;       The same for an installation that nobody watches, where a message box would stay for ever: the
;       file is opened for writing first, and if that fails, the result is 0. (A program that takes the
;       file in the instant after that still makes the library show its box.)
;   ${Tarn_DoWaitDlgModless} parent "title" "message"
;   ${Tarn_CloseWaitDlg}
;       Show and close the wait window, centred over the window parent ($HWNDPARENT; 0 for none).
;       Neither has a result.
;
; Which thread: a window lives on the thread that opens it, is kept painted by that thread's message
; loop, and can only be closed there. In NSIS, page callbacks and .onInit run on the thread of the
; wizard, which has a message loop; sections run on a thread of their own, which has none. So open the
; wait window in the SHOW callback of the install page, and close it in the page's LEAVE callback:
;
;   !define MUI_PAGE_CUSTOMFUNCTION_SHOW  OpenWaitWindow
;   !define MUI_PAGE_CUSTOMFUNCTION_LEAVE CloseWaitWindow
;   !insertmacro MUI_PAGE_INSTFILES
;
; The LEAVE callback runs when the sections are done, if the page closes by itself ("AutoCloseWindow
; true", the Modern UI's default when a finish page follows). A section that fails should therefore
; note the failure and return, rather than Abort, which keeps the page (and the wait window) open.
; DoFileOpenDialog belongs into page callbacks too. The other functions may be called anywhere.
;
; In a silent installer there is only one thread, and no message loop. A section may open and close the
; wait window there, with parent 0; between lengthy steps it calls
;
;   ${Tarn_PumpMessages}
;       Handles the messages that wait for the calling thread's windows, and returns.
;
; Text is converted to the process's ANSI code page, which is what the library takes: a character that
; the code page lacks becomes "?", and a path that holds one is not found. The macros keep all
; registers except the ones given for results.

!ifndef TARN_NSH_INCLUDED
!define TARN_NSH_INCLUDED

!include LogicLib.nsh
!include Util.nsh
!include "${__FILEDIR__}/tarn-fault.nsh"

!if "${NSIS_PTR_SIZE}" != 8
  !error "tarn.dll is a 64-bit library and cannot be loaded by a 32-bit installer: put 'Target amd64-unicode' at the top of the script."
!endif

!ifndef TARN_DLL
  !define TARN_DLL "${__FILEDIR__}\..\bin\tarn.dll" ; with backslashes makensis finds it on every system
!endif

Var _Tarn_Module      ; handle of the loaded library; empty or 0 when it is not loaded
Var _Tarn_Extracted   ; the file to delete in Tarn_Free; empty for none

!define Tarn_Init              `!insertmacro Tarn_Init`
!define Tarn_TryInit           `!insertmacro Tarn_TryInit`
!define Tarn_LoadFrom          `!insertmacro Tarn_LoadFrom`
!define Tarn_Free              `!insertmacro Tarn_Free`
!define Tarn_FileCopy          `!insertmacro Tarn_FileCopy`
!define Tarn_VerifyEmail       `!insertmacro Tarn_VerifyEmail`
!define Tarn_DoFileOpenDialog  `!insertmacro Tarn_DoFileOpenDialog`
!define Tarn_PutInRunOnce      `!insertmacro Tarn_PutInRunOnce`
!define Tarn_WriteChConfigFile `!insertmacro Tarn_WriteChConfigFile`
!define Tarn_WriteChConfigFileSilently `!insertmacro Tarn_WriteChConfigFileSilently`
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

!macro Tarn_LoadFrom ERROR PATH
  Push `${PATH}`
  ${CallArtificialFunction} _Tarn_LoadFrom
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

!macro Tarn_WriteChConfigFileSilently RESULT FOLDER
  Push `${FOLDER}`
  ${CallArtificialFunction} _Tarn_WriteChConfigFileSilently
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
  ${CallArtificialFunction} _Tarn_PumpMessages
!macroend

; From here on: bodies, each compiled once for the installer and once for the uninstaller. Every body
; saves the registers first and restores them last; what it leaves on the stack is the result.

; Calls the export NAME. It is looked up in the library that Tarn_Init loaded rather than named by its
; path, because the plug-in would misread a path with round brackets in it (a user's name may have
; them). The result belongs in $0. Strings go through registers, never inline: the plug-in would
; misread quotes in them.
!macro _Tarn_Call NAME ARGUMENTS
  StrCpy $0 "error"
  StrCpy $9 0
  ${If} $_Tarn_Module P<> 0
    Push "${NAME}"
    System::Call 'kernel32::GetProcAddress(p $_Tarn_Module, m s) p .r9'
  ${EndIf}
  ${If} $9 P<> 0
    System::Call '::$9${ARGUMENTS}'
  ${EndIf}
!macroend

; Puts the number of bytes that TEXT (a register, without "$") needs in the ANSI code page into $SIZE.
!macro _Tarn_AnsiSize SIZE TEXT
  System::Call 'kernel32::WideCharToMultiByte(i 0, i 0, w ${TEXT}, i -1, p 0, i 0, p 0, p 0) i .${SIZE}'
!macroend

; Writes TEXT to the buffer, at most SIZE bytes; $0 is 0 when it did not fit.
!macro _Tarn_AnsiTo BUFFER SIZE TEXT
  System::Call 'kernel32::WideCharToMultiByte(i 0, i 0, w ${TEXT}, i -1, p ${BUFFER}, i ${SIZE}, p 0, p 0) i .r0'
!macroend

!macro _Tarn_AnsiFrom TEXT BUFFER
  System::Call 'kernel32::MultiByteToWideChar(i 0, i 0, p ${BUFFER}, i -1, w .${TEXT}, i ${NSIS_MAX_STRLEN})'
!macroend

; Replaces the text in register REG (a number) by a pointer to an ANSI copy, or by 0 for an empty text.
; Changes $0, $7 and $8.
!macro _Tarn_AnsiOrNull REG
  StrCpy $7 $${REG}
  StrCpy $${REG} 0
  ${If} $7 != ""
    !insertmacro _Tarn_AnsiSize r8 r7
    System::Alloc $8
    Pop $${REG}
    !insertmacro _Tarn_AnsiTo r${REG} r8 r7
  ${EndIf}
!macroend

!macro _Tarn_TryInit
  System::Store S
  StrCpy $1 ""
  ${If} $_Tarn_Module P= 0
    InitPluginsDir
    StrCpy $_Tarn_Extracted "$PLUGINSDIR\tarn.dll"
    File "/oname=$PLUGINSDIR\tarn.dll" "${TARN_DLL}"
    ${Tarn_LoadFrom} $1 $_Tarn_Extracted
  ${EndIf}
  Push $1
  System::Store L
!macroend

!macro _Tarn_LoadFrom
  System::Store S
  Pop $1
  StrCpy $2 ""
  ${If} $_Tarn_Module P= 0
    System::Call 'kernel32::LoadLibraryW(w r1) p .r0 ?e'
    Pop $3
    StrCpy $_Tarn_Module $0
    ${If} $0 P= 0
      ${If} $3 = 193
        StrCpy $2 "The setup library cannot be used: $1 is not a 64-bit Windows library."
      ${ElseIfNot} ${FileExists} $1
        StrCpy $2 "The setup library is missing: there is no file $1. A virus scanner may have removed it."
      ${Else}
        StrCpy $2 "The setup library cannot be loaded: $1 (Windows error $3)."
      ${EndIf}
    ${EndIf}
  ${EndIf}
  Push $2
  System::Store L
!macroend

!macro _Tarn_Free
  ${If} $_Tarn_Module P<> 0
    System::Call 'kernel32::FreeLibrary(p $_Tarn_Module)'
    StrCpy $_Tarn_Module 0
  ${EndIf}
  ${If} $_Tarn_Extracted != ""
    Delete $_Tarn_Extracted
    StrCpy $_Tarn_Extracted ""
  ${EndIf}
!macroend

!macro _Tarn_FileCopy
  System::Store S
  Pop $1
  Pop $2
  !insertmacro _Tarn_Call FileCopy "(m r1, m r2) i .r0"
  Push $0
  System::Store L
!macroend

!macro _Tarn_VerifyEmail
  System::Store S
  Pop $1
  ; The library writes the trimmed address over the one given: it fits, being no longer.
  !insertmacro _Tarn_AnsiSize r2 r1
  System::Alloc $2
  Pop $3
  !insertmacro _Tarn_AnsiTo r3 r2 r1
  System::Alloc 73
  Pop $4
  StrCpy $5 -1
  !insertmacro _Tarn_Call VerifyEmail "(p r3, *i .r5, p r4) i .r0"
  !insertmacro _Tarn_AnsiFrom r1 r3
  !insertmacro _Tarn_AnsiFrom r6 r4
  System::Free $3
  System::Free $4
  Push $1
  Push $6
  Push $5
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
  System::Alloc 260
  Pop $6
  !insertmacro _Tarn_AnsiTo r6 260 r5
  ${If} $0 = 0
    System::Call '*$6(&i1 0)' ; a name that long cannot be in the dialog
  ${EndIf}
  ; An empty filter or extension is not the same to the dialog as none.
  !insertmacro _Tarn_AnsiOrNull 3
  !insertmacro _Tarn_AnsiOrNull 4
  System::Call 'kernel32::GetCurrentDirectoryW(i ${NSIS_MAX_STRLEN}, w .r7)'
  !insertmacro _Tarn_Call DoFileOpenDialog "(m r1, m r2, p r3, p r4, p r6) i .r0"
  System::Call 'kernel32::SetCurrentDirectoryW(w r7)'
  StrCpy $5 ""
  ${If} $0 = 1
    !insertmacro _Tarn_AnsiFrom r5 r6
  ${EndIf}
  System::Free $3
  System::Free $4
  System::Free $6
  Push $5
  Push $0
  System::Store L
!macroend

!macro _Tarn_PutInRunOnce
  System::Store S
  Pop $1
  Pop $2
  !insertmacro _Tarn_Call PutInRunOnce "(m r1, m r2) i .r0"
  Push $0
  System::Store L
!macroend

!macro _Tarn_WriteChConfigFile
  System::Store S
  Pop $1
  !insertmacro _Tarn_Call Write_ch_config_File "(m r1) i .r0"
  Push $0
  System::Store L
!macroend

; GENERIC_WRITE, shared with nobody, OPEN_ALWAYS: as the library opens it, and by the same name in the ANSI
; code page, but what is in it stays. A file that this makes is written by the call.
!macro _Tarn_WriteChConfigFileSilently
  System::Store S
  Pop $1
  StrCpy $2 "$1\embedch\config\chrc"
  System::Call 'kernel32::CreateFileA(m r2, i 0x40000000, i 0, p 0, i 4, i 0x80, p 0) p .r3'
  StrCpy $0 0
  ${If} $_Tarn_Module P= 0
    StrCpy $0 "error"
  ${ElseIf} $3 P<> -1
    System::Call 'kernel32::CloseHandle(p r3)'
    !insertmacro _Tarn_Call Write_ch_config_File "(m r1) i .r0"
  ${EndIf}
  Push $0
  System::Store L
!macroend

!macro _Tarn_DoWaitDlgModless
  System::Store S
  Pop $1
  Pop $2
  Pop $3
  !insertmacro _Tarn_Call DoWaitDlgModless "(p r1, m r2, m r3) i .r0"
  System::Store L
!macroend

!macro _Tarn_CloseWaitDlg
  System::Store S
  !insertmacro _Tarn_Call CloseWaitDlg "() i .r0"
  System::Store L
!macroend

!macro _Tarn_PumpMessages
  System::Store S
  System::Alloc 48 ; a MSG
  Pop $1
  ${Do}
    System::Call 'user32::PeekMessageW(p r1, p 0, i 0, i 0, i 1) i .r0'
    ${IfThen} $0 = 0 ${|} ${ExitDo} ${|}
    System::Call 'user32::TranslateMessage(p r1)'
    System::Call 'user32::DispatchMessageW(p r1)'
  ${Loop}
  System::Free $1
  System::Store L
!macroend

!endif ; TARN_NSH_INCLUDED
