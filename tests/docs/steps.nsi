; A silent installer whose only section is a block of a page. It writes what the registers hold
; afterwards to the file "registers" beside itself.
;
; Defines: BLOCK, OUT_FILE, TARN_NSH, TARN_DLL

Target amd64-unicode
Unicode true
Name "Workbench"
OutFile "${OUT_FILE}"
RequestExecutionLevel user
SilentInstall silent
!include "${TARN_NSH}"

Function .onInit
  ${Tarn_Init}
FunctionEnd
Function .onInstSuccess
  ${Tarn_Free}
FunctionEnd
Function .onInstFailed
  ${Tarn_Free}
FunctionEnd

!macro WriteRegister NAME
  FileWrite $R0 `$${NAME} = ${NAME}$\r$\n`
!macroend

Section
  !include "${BLOCK}"
  FileOpen $R0 "$EXEDIR\registers" w
  !insertmacro WriteRegister $0
  !insertmacro WriteRegister $1
  !insertmacro WriteRegister $2
  !insertmacro WriteRegister $3
  !insertmacro WriteRegister $4
  FileClose $R0
SectionEnd
