; wizard.nsi - installs the sample product with the help of tarn.dll
;
;   makensis wizard.nsi     makes lakeside-setup.exe beside this file
;
; Defines, all optional in the kit: X86          makes a 32-bit installer, which works through tarntool.exe
;                                   PRODUCT_DIR  the folder that samples/product/make.sh filled
;                                   OUT_FILE     the installer to make
;                                   TARN_DLL, TARNTOOL  see tarn.nsh and tarntool.nsh
;
; With nobody at the keyboard:
;
;   lakeside-setup.exe /S | /PASSIVE  /EMAIL=address  [options]  [/D=folder]
;
;   /S              shows nothing at all
;   /PASSIVE        shows the progress and asks nothing
;   /EMAIL=         the user's e-mail address; required
;   /LICENCE=       a licence file to install
;   /LOG=           writes what happens to this file; it goes to the standard output in any case
;   /PAUSE=ms       keeps the wait window that long after the last file (for looking at it)
;   /D=             the folder to install into
;
;   uninstall.exe [/S]  [/PAUSE=ms]
;
; Exit codes: 0 installed; 1 cancelled by the user; 2 the setup library cannot be used; 3 the e-mail
; address or the licence file was refused, nothing was installed; 4 installing failed, what had been
; installed was removed again (but nothing where the product had been installed before).

!ifdef X86
  Target x86-unicode
!else
  Target amd64-unicode
!endif
Unicode true

!define NAME "Lakeside Workbench"
!define VERSION "1.2"
!define RUN_ONCE_KEY "Software\Microsoft\Windows\CurrentVersion\RunOnce"
!define RUN_ONCE_VALUE "LakesideWelcome"
!define CHOOSE_LICENCE "Choose the licence file" ; the title of the Open dialog
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Lakeside"
!define EARLIER_MAY_BE_INCOMPLETE "The earlier installation may be incomplete; run Setup again."

!ifndef PRODUCT_DIR
  !define PRODUCT_DIR "..\product"
!endif
!if ! /FileExists "${PRODUCT_DIR}/product.nsh"
  !error "There is no product in ${PRODUCT_DIR}: samples/product/make.sh makes it, the kit has it ready."
!endif
!ifndef OUT_FILE
  !define OUT_FILE "lakeside-setup.exe"
!endif

Name "${NAME}"
OutFile "${OUT_FILE}"
InstallDir "$LOCALAPPDATA\Programs\${NAME}"
RequestExecutionLevel user
SetCompressor /SOLID lzma
BrandingText "${NAME} ${VERSION}"
ShowInstDetails nevershow ; the wait window would cover them
ShowUninstDetails nevershow

!include MUI2.nsh
!include FileFunc.nsh
!ifdef X86
  !include "..\..\nsis\tarntool.nsh"
!else
  !include "..\..\nsis\tarn.nsh"
!endif
!include "${PRODUCT_DIR}/product.nsh"

Var Unattended     ; 1 when no question may be asked: /S or /PASSIVE
Var Email
Var Licence        ; path of the licence file, or empty
Var Pause          ; milliseconds
Var StandardOutput ; file handles; empty for none
Var Log
Var Failure        ; why installing failed, for the user; empty while all is well
Var Earlier        ; 1 when the product was in $INSTDIR before

Var EmailField
Var EmailMessage
Var LicenceField
Var LicenceMessage

;-------------------------------------------------------------------------------------------------
; Pages

; Drawn by art/make.sh
!define MUI_ICON "art\setup.ico"
!define MUI_UNICON "art\remove.ico"
!define MUI_WELCOMEFINISHPAGE_BITMAP "art\side.bmp"
!define MUI_UNWELCOMEFINISHPAGE_BITMAP "art\side.bmp"
!define MUI_HEADERIMAGE
!define MUI_HEADERIMAGE_RIGHT
!define MUI_HEADERIMAGE_BITMAP "art\header.bmp"
!define MUI_HEADERIMAGE_UNBITMAP "art\header.bmp"
!define MUI_ABORTWARNING

!define MUI_WELCOMEPAGE_TEXT "This installs ${NAME} ${VERSION} on your computer, for your own account.$\r$\n$\r$\nYou will be asked for your e-mail address, for a licence file if you have one, and for a folder.$\r$\n$\r$\n$_CLICK"
!define MUI_FINISHPAGE_TEXT "${NAME} has been installed.$\r$\n$\r$\nIt will show you around at your next log-on."

!define MUI_PAGE_CUSTOMFUNCTION_PRE SkipWhenUnattended
!insertmacro MUI_PAGE_WELCOME
Page custom EmailPage EmailPageLeave
Page custom LicencePage LicencePageLeave
!define MUI_PAGE_CUSTOMFUNCTION_PRE SkipWhenUnattended
!insertmacro MUI_PAGE_DIRECTORY
; The wait window says "please wait"; the page behind it says what for.
!define MUI_PAGE_HEADER_SUBTEXT "${NAME} is being installed on your computer."
!define MUI_PAGE_CUSTOMFUNCTION_SHOW OpenWaitWindow
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE CloseWaitWindow
!insertmacro MUI_PAGE_INSTFILES
!define MUI_PAGE_CUSTOMFUNCTION_PRE SkipWhenUnattended
!insertmacro MUI_PAGE_FINISH

!insertmacro MUI_UNPAGE_CONFIRM
!define MUI_PAGE_HEADER_SUBTEXT "${NAME} is being removed from your computer."
!define MUI_PAGE_CUSTOMFUNCTION_SHOW un.OpenWaitWindow
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE un.CloseWaitWindow
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_UNPAGE_FINISH

!insertmacro MUI_LANGUAGE "English"

;-------------------------------------------------------------------------------------------------
; Start and end

; Tells the log and the standard output, which the caller of an unattended run reads.
!define Say "!insertmacro Say"
!macro Say TEXT
  ${If} $StandardOutput != ""
    FileWrite $StandardOutput `${TEXT}$\r$\n`
  ${EndIf}
  ${If} $Log != ""
    FileWrite $Log `${TEXT}$\r$\n`
  ${EndIf}
!macroend

!macro Option NAME VARIABLE
  StrLen $7 "${NAME}"
  StrCpy $8 $5 $7
  ${If} $8 == "${NAME}"
    StrCpy ${VARIABLE} $5 "" $7
  ${EndIf}
!macroend

Function .onInit
  StrCpy $Unattended 0
  ${If} ${Silent}
    StrCpy $Unattended 1
  ${EndIf}
  Call ReadOptions
  ${If} $Unattended = 1
    System::Call 'kernel32::GetStdHandle(i -11) p .r0'
    ${If} $0 P> 0
      StrCpy $StandardOutput $0
    ${EndIf}
  ${EndIf}

  ${Tarn_TryInit} $0
  ${If} $0 != ""
    ${Say} "$0"
    ${If} $Unattended = 0
      MessageBox MB_OK|MB_ICONSTOP "$0"
    ${EndIf}
    SetErrorLevel 2
    Call CloseAll
    Quit
  ${EndIf}

  ${If} $Unattended = 1
    Call CheckOptions
  ${EndIf}
FunctionEnd

; The system splits the command line, so that quotes may stand around a value or a whole option.
Function ReadOptions
  StrCpy $0 $CMDLINE
  System::Call 'shell32::CommandLineToArgvW(w r0, *i .r1) p .r2'
  StrCpy $3 $2
  ${ForEach} $4 2 $1 + 1
    IntPtrOp $3 $3 + ${NSIS_PTR_SIZE}
    System::Call '*$3(w .r5)'
    !insertmacro Option "/EMAIL=" $Email
    !insertmacro Option "/LICENCE=" $Licence
    !insertmacro Option "/PAUSE=" $Pause
    !insertmacro Option "/LOG=" $6
    !insertmacro Option "/D=" $INSTDIR ; NSIS itself takes it only without quotes
    ${If} $5 == "/PASSIVE"
      StrCpy $Unattended 1
    ${EndIf}
  ${Next}
  System::Call 'kernel32::LocalFree(p r2)'
  ${If} $6 != ""
    FileOpen $Log $6 w
  ${EndIf}
FunctionEnd

Function CheckOptions
  ${Tarn_VerifyEmail} $0 $1 $2 $3 "$Email"
  ${If} $0 != 1
    ${If} $2 == ""
      StrCpy $2 "No e-mail address (/EMAIL=)."
    ${EndIf}
    ${Say} `The e-mail address "$3" is refused.`
    ${Say} "  message:  $2"
    ${Say} "  position: $1"
    SetErrorLevel 3
    Call CloseAll
    Quit
  ${EndIf}
  StrCpy $Email $3
  Call CheckLicence
  ${If} $0 != 1
    ${Say} "There is no licence file $Licence."
    SetErrorLevel 3
    Call CloseAll
    Quit
  ${EndIf}
FunctionEnd

; $0 is 1 when $Licence is empty or names a file. Its path is then a full one: the section has another
; current folder.
Function CheckLicence
  StrCpy $0 1
  ${If} $Licence != ""
    StrCpy $1 $Licence
    System::Call 'kernel32::GetFileAttributesW(w r1) i .r0'
    IntOp $0 $0 & 16 ; the bit of a folder; set, too, when there is nothing (-1)
    ${If} $0 = 0
      GetFullPathName $Licence $Licence
      StrCpy $0 1
    ${Else}
      StrCpy $0 0
    ${EndIf}
  ${EndIf}
FunctionEnd

Function CloseAll
  ${Tarn_Free}
  ${If} $Log != ""
    FileClose $Log
    StrCpy $Log ""
  ${EndIf}
FunctionEnd

; With a user interface this is the one way out; a silent run has the other two.
Function .onGUIEnd
  Call CloseAll
FunctionEnd

Function .onInstSuccess
  ${If} ${Silent}
    Call CloseAll
  ${EndIf}
FunctionEnd

Function .onInstFailed
  ${If} ${Silent}
    Call CloseAll
  ${EndIf}
FunctionEnd

Function SkipWhenUnattended
  ${If} $Unattended = 1
    Abort
  ${EndIf}
FunctionEnd

;-------------------------------------------------------------------------------------------------
; E-mail page

Function EmailPage
  Call SkipWhenUnattended
  !insertmacro MUI_HEADER_TEXT "E-mail Address" "Whose copy of ${NAME} is this?"
  nsDialogs::Create 1018
  Pop $0
  ${NSD_CreateLabel} 0 0 100% 20u "Your address is stored with the program, so that support can tell whose copy it is. It stays on this computer."
  Pop $0
  ${NSD_CreateLabel} 0 34u 100% 10u "&E-mail address:"
  Pop $0
  ${NSD_CreateText} 0 45u 78% 13u "$Email"
  Pop $EmailField
  ${NSD_OnChange} $EmailField EmailChanged
  ${NSD_CreateLabel} 0 63u 100% 20u ""
  Pop $EmailMessage
  ${NSD_AddStyle} $EmailMessage ${SS_NOPREFIX} ; "&" is an ampersand
  SetCtlColors $EmailMessage C00000 SYSCLR:15 ; not "transparent": the text before would shine through
  ${NSD_SetFocus} $EmailField
  nsDialogs::Show
FunctionEnd

; A message about the text as it was would be wrong by now.
Function EmailChanged
  Pop $0
  ${NSD_SetText} $EmailMessage ""
FunctionEnd

Function EmailPageLeave
  ${NSD_GetText} $EmailField $Email
  ${Tarn_VerifyEmail} $0 $1 $2 $Email "$Email"
  ${If} $0 = 1
    Return
  ${EndIf}
  ${NSD_SetText} $EmailField "$Email"
  ${Tarn_SelectFault} $EmailField $1
  Call ExplainFault
  ${NSD_SetText} $EmailMessage "$2"
  Abort
FunctionEnd

; What the library says of $Email, position $1 and message $2, in this page's own words: $2 becomes a sentence
; about what is selected.
Function ExplainFault
  Push $3
  SendMessage $EmailField ${EM_GETSEL} 0 0 $3
  IntOp $3 $3 & 0xFFFF ; where the selection begins
  StrCpy $3 $Email 1 $3
  ${If} $Email == ""
    StrCpy $2 "Please enter your e-mail address."
  ${ElseIf} $1 < 0
    StrCpy $2 'An e-mail address has an "@" in it.'
  ${ElseIf} $2 == "@  is in invalid location in email."
    StrCpy $2 'Something is missing before the "@".'
  ${ElseIf} $2 == "Invalid Domain name."
    StrCpy $2 'What follows the "@" is not complete: it has a dot in it, as in "example.com".'
  ${ElseIf} $2 == 'Character  "." is in Invalid location.'
    StrCpy $2 "Something is missing before this dot."
    ${If} $3 == ""
      StrCpy $2 "Something is missing at the end of the address."
    ${EndIf}
  ${ElseIf} $2 != "invalid character in email."
    StrCpy $2 "The part that begins here is too long: it can have 64 characters."
  ${ElseIf} $3 == " "
    StrCpy $2 "There are no blanks in an e-mail address."
  ${ElseIf} $3 == "@"
    StrCpy $2 'There is only one "@" in an e-mail address.'
  ${Else}
    StrCpy $2 "The character $3 cannot be used in an e-mail address."
  ${EndIf}
  Pop $3
FunctionEnd

;-------------------------------------------------------------------------------------------------
; Licence page

Function LicencePage
  Call SkipWhenUnattended
  !insertmacro MUI_HEADER_TEXT "Licence File" "Have you been given a licence file?"
  nsDialogs::Create 1018
  Pop $0
  ${NSD_CreateLabel} 0 0 100% 20u "If you have a licence file, choose it here. Without one, leave the field empty: ${NAME} then runs as a trial."
  Pop $0
  ${NSD_CreateLabel} 0 34u 100% 10u "&Licence file:"
  Pop $0
  ${NSD_CreateText} 0 45u 78% 13u "$Licence"
  Pop $LicenceField
  ${NSD_OnChange} $LicenceField LicenceChanged
  ${NSD_CreateButton} 81% 44u 19% 15u "B&rowse..."
  Pop $0
  ${NSD_OnClick} $0 BrowseForLicence
  ${NSD_CreateLabel} 0 63u 100% 20u ""
  Pop $LicenceMessage
  SetCtlColors $LicenceMessage C00000 SYSCLR:15
  ${NSD_SetFocus} $LicenceField
  nsDialogs::Show
FunctionEnd

Function BrowseForLicence
  Pop $0 ; the button
  ${NSD_GetText} $LicenceField $0
  ${NSD_CreateTimer} HideReadOnlyBox 10
  ${Tarn_DoFileOpenDialog} $1 $2 "$DOCUMENTS" "${CHOOSE_LICENCE}" "Licence files (*.lic)|*.lic|All files (*.*)|*.*||" "lic" "$0"
  ${NSD_KillTimer} HideReadOnlyBox
  ${If} $1 = 1
    ${NSD_SetText} $LicenceField "$2"
  ${EndIf}
FunctionEnd

; A licence is only read: the box "Open as read-only", which the library's dialog has, would be a riddle. The
; dialog's own message loop calls this. (Newer dialogs of the system have no such box.)
Function HideReadOnlyBox
  Push $0
  FindWindow $0 "#32770" "${CHOOSE_LICENCE}"
  ${If} $0 P<> 0
    GetDlgItem $0 $0 1040 ; chx1 of dlgs.h
    ShowWindow $0 ${SW_HIDE}
  ${EndIf}
  Pop $0
FunctionEnd

Function LicenceChanged
  Pop $0
  ${NSD_SetText} $LicenceMessage ""
FunctionEnd

Function LicencePageLeave
  ${NSD_GetText} $LicenceField $Licence
  Call CheckLicence
  ${If} $0 != 1
    ${NSD_SetText} $LicenceMessage "There is no such file. Choose another one, or leave the field empty."
    ${NSD_SetFocus} $LicenceField
    SendMessage $LicenceField ${EM_SETSEL} 0 -1
    Abort
  ${EndIf}
FunctionEnd

;-------------------------------------------------------------------------------------------------
; Install page. Its callbacks run on the wizard's thread and the section on another: see tarn.nsh.

Function OpenWaitWindow
  ShowWindow $HWNDPARENT ${SW_SHOW} ; with /PASSIVE this is the first page, and nothing is shown yet
  ${Tarn_DoWaitDlgModless} $HWNDPARENT "Please wait" "This takes less than a minute."
FunctionEnd

Function CloseWaitWindow
  ${Tarn_CloseWaitDlg}
  ${If} $Failure != ""
    ${If} $Unattended = 0
      StrCpy $0 "What had been installed has been removed again."
      ${If} $Earlier = 1
        StrCpy $0 "${EARLIER_MAY_BE_INCOMPLETE}"
      ${EndIf}
      MessageBox MB_OK|MB_ICONSTOP "$Failure$\r$\n$\r$\n$0"
    ${EndIf}
    Quit
  ${EndIf}
FunctionEnd

!define Fail "!insertmacro Fail"
!macro Fail REASON
  StrCpy $Failure `${REASON}`
  Return
!macroend

!macro CreateFolder FOLDER
  CreateDirectory "$INSTDIR\${FOLDER}"
!macroend

!macro CopyFile FOLDER NAME
  DetailPrint "Copying ${FOLDER}${NAME}"
  ${Tarn_FileCopy} $0 "$PLUGINSDIR\product\${FOLDER}${NAME}" "$INSTDIR\${FOLDER}"
  ${If} $0 != 1
    ${Fail} "The file $INSTDIR\${FOLDER}${NAME} cannot be written."
  ${EndIf}
  ${Say} "copied ${FOLDER}${NAME}"
!macroend

; Not in a function: only the steps of a section move the progress bar.
Section
  StrCpy $Earlier 0
  ${If} ${FileExists} "$INSTDIR\uninstall.exe"
  ${OrIf} ${FileExists} "$INSTDIR\registration.ini"
    StrCpy $Earlier 1
  ${EndIf}

  SetOutPath "$PLUGINSDIR\product"
  File /r "${PRODUCT_DIR}\tree\*"
  SetOutPath "$INSTDIR"

  !insertmacro ForEachFolder CreateFolder
  !insertmacro ForEachFile CopyFile

  WriteINIStr "$INSTDIR\registration.ini" "Registration" "Email" "$Email"
  ${If} $Licence != ""
    CreateDirectory "$INSTDIR\licence"
    ${GetFileName} "$Licence" $1
    ; The one that is already installed may have been chosen. A path is empty when the file is not there.
    GetFullPathName /SHORT $2 "$Licence"
    GetFullPathName /SHORT $3 "$INSTDIR\licence\$1"
    StrCpy $0 1
    ${If} $2 != $3
    ${OrIf} $2 == ""
      ${Tarn_FileCopy} $0 "$Licence" "$INSTDIR\licence\"
    ${EndIf}
    ${If} $0 != 1
      ${Fail} "The licence file $Licence cannot be copied."
    ${EndIf}
    ; Only the one that registration.ini names is known to the uninstaller.
    ReadINIStr $2 "$INSTDIR\registration.ini" "Registration" "Licence"
    ${If} $2 != ""
    ${AndIf} $2 != $1
      Delete "$INSTDIR\licence\$2"
    ${EndIf}
    WriteINIStr "$INSTDIR\registration.ini" "Registration" "Licence" "$1"
    ${Say} "copied licence\$1"
  ${EndIf}

  ${If} $Unattended = 1
    ${Tarn_WriteChConfigFileSilently} $0 "$INSTDIR"
  ${Else}
    ${Tarn_WriteChConfigFile} $0 "$INSTDIR"
  ${EndIf}
  ${If} $0 != 1
    ${Fail} "The file $INSTDIR\embedch\config\chrc cannot be written."
  ${EndIf}
  ${Say} "wrote embedch\config\chrc"

  ; The product works without its welcome, so this is no reason to take it away again.
  ${Tarn_PutInRunOnce} $0 "${RUN_ONCE_VALUE}" '"$INSTDIR\bin\lakeside.exe" --first-run'
  ${If} $0 = 1
    ${Say} "queued the welcome for the next log-on"
  ${Else}
    DetailPrint "The welcome at the next log-on could not be queued."
    ${Say} "WARNING: the welcome at the next log-on could not be queued"
  ${EndIf}

  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "${NAME}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1

  ${If} $Pause > 0
    Sleep $Pause
  ${EndIf}
SectionEnd

Section
  RMDir /r "$PLUGINSDIR\product"
  ${If} $Failure == ""
    ${Say} "Installed in $INSTDIR."
  ${Else}
    ${If} $Earlier = 0
      Call RemoveProduct
    ${EndIf}
    ${Say} "$Failure"
    ${If} $Earlier = 1
      ${Say} "${EARLIER_MAY_BE_INCOMPLETE}"
    ${EndIf}
    SetErrorLevel 4
  ${EndIf}
SectionEnd

;-------------------------------------------------------------------------------------------------
; Removal: exactly what was installed, so that a file of the user's (and the folder it lies in) stays

!macro DeleteFile FOLDER NAME
  Delete "$INSTDIR\${FOLDER}${NAME}"
!macroend

!macro RemoveFolder FOLDER
  RMDir "$INSTDIR\${FOLDER}"
!macroend

!macro RemoveProduct UN
Function ${UN}RemoveProduct
  SetOutPath "$TEMP" ; a current folder cannot be removed
  ReadINIStr $0 "$INSTDIR\registration.ini" "Registration" "Licence"
  ${If} $0 != ""
    Delete "$INSTDIR\licence\$0"
  ${EndIf}
  RMDir "$INSTDIR\licence"
  Delete "$INSTDIR\registration.ini"
  Delete "$INSTDIR\embedch\config\chrc"
  !insertmacro ForEachFile DeleteFile
  !insertmacro ForEachFolderBackwards RemoveFolder
  DeleteRegValue HKCU "${RUN_ONCE_KEY}" "${RUN_ONCE_VALUE}"
  DeleteRegKey HKCU "${UNINSTALL_KEY}"
  ; The uninstaller runs as a copy, and the program that made it may not have come to its end yet.
  ${ForEach} $0 1 100 + 1
    Delete "$INSTDIR\uninstall.exe"
    ${IfNot} ${FileExists} "$INSTDIR\uninstall.exe"
      ${Break}
    ${EndIf}
    Sleep 50
  ${Next}
  RMDir "$INSTDIR"
FunctionEnd
!macroend
!insertmacro RemoveProduct ""
!insertmacro RemoveProduct "un."

; Without the library there is no wait window; the product can be removed all the same.
Function un.onInit
  ${Tarn_TryInit} $0
  ${GetParameters} $0
  ${GetOptions} $0 "/PAUSE=" $Pause
FunctionEnd

Function un.onGUIEnd
  ${Tarn_Free}
FunctionEnd

Function un.onUninstSuccess
  ${If} ${Silent}
    ${Tarn_Free}
  ${EndIf}
FunctionEnd

Function un.onUninstFailed
  ${If} ${Silent}
    ${Tarn_Free}
  ${EndIf}
FunctionEnd

Function un.OpenWaitWindow
  ${Tarn_DoWaitDlgModless} $HWNDPARENT "Please wait" "This takes less than a minute."
FunctionEnd

Function un.CloseWaitWindow
  ${Tarn_CloseWaitDlg}
FunctionEnd

Section "Uninstall"
  Call un.RemoveProduct
  ${If} $Pause > 0
    Sleep $Pause
  ${EndIf}
SectionEnd
