; tarn-fault.nsh - ${Tarn_SelectFault}, for tarn.nsh and tarntool.nsh, which include it and describe it
!ifndef TARN_FAULT_NSH_INCLUDED
!define TARN_FAULT_NSH_INCLUDED

!include LogicLib.nsh
!include Util.nsh
!include WinMessages.nsh

!define Tarn_SelectFault `!insertmacro Tarn_SelectFault`

!macro Tarn_SelectFault FIELD POSITION
  Push `${POSITION}`
  Push `${FIELD}`
  ${CallArtificialFunction} _Tarn_SelectFault
!macroend

; Positions count from 0 up to the "@", and from 1 behind it. What stands before a fault is plain ASCII, so
; that bytes are characters.
!macro _Tarn_SelectFault
  System::Store S
  Pop $1
  Pop $2
  System::Call 'user32::GetWindowTextW(p r1, w .r3, i ${NSIS_MAX_STRLEN})'
  StrLen $4 $3
  StrCpy $5 $4
  ${If} $2 >= 0
    StrCpy $4 $2
    StrCpy $6 0
    ${Do}
      StrCpy $7 $3 1 $6
      ${If} $7 == "@"
      ${OrIf} $7 == ""
        ${ExitDo}
      ${EndIf}
      IntOp $6 $6 + 1
    ${Loop}
    ${If} $2 > $6
      IntOp $4 $4 - 1
    ${EndIf}
    IntOp $5 $4 + 1
  ${EndIf}
  System::Call 'user32::SetFocus(p r1)'
  SendMessage $1 ${EM_SETSEL} $4 $5
  System::Store L
!macroend

!endif ; TARN_FAULT_NSH_INCLUDED
