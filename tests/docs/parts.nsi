; An installer made of a block that has pages, functions and sections of its own.
;
; Defines: BLOCK, OUT_FILE, TARN_NSH, TARN_DLL

Target amd64-unicode
Unicode true
Name "Workbench"
OutFile "${OUT_FILE}"
RequestExecutionLevel user
!include MUI2.nsh
!include "${TARN_NSH}"

Function .onInit
  ${Tarn_Init}
FunctionEnd
Function .onGUIEnd
  ${Tarn_Free}
FunctionEnd

!include "${BLOCK}"
