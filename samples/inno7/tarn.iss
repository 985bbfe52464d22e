; tarn.iss - the functions of tarn.dll for Inno Setup 7, when Setup is a 64-bit program:
;
;   #define TarnDll "path\to\tarn.dll"   ; optional: the default is ..\..\bin\tarn.dll beside this file
;   #include "tarn.iss"
;
; A 32-bit Setup, which every earlier version makes and this one, too, by default, cannot load the library: it
; has ..\inno\tarntool.iss.

#ifndef TarnDll
  #define TarnDll ExtractFilePath(__PATHFILENAME__) + "\..\..\bin\tarn.dll"
#endif

[Files]
; Not encrypted, so that it is there before a password is asked for.
Source: "{#TarnDll}"; DestName: "tarn.dll"; Flags: dontcopy noencryption

[Code]
function DoWaitDlgModless(parent: HWND; title, message: AnsiString): Integer;
external 'DoWaitDlgModless@files:tarn.dll stdcall setuponly';

function CloseWaitDlg: Integer;
external 'CloseWaitDlg@files:tarn.dll stdcall setuponly';

function DoFileOpenDialog(initialFolder, title, filter, defaultExtension, path: AnsiString): Integer;
external 'DoFileOpenDialog@files:tarn.dll stdcall setuponly';

// Inno Setup has a function FileCopy of its own.
function TarnFileCopy(source, folder: AnsiString): Integer;
external 'FileCopy@files:tarn.dll stdcall setuponly';

function PutInRunOnce(valueName, command: AnsiString): Integer;
external 'PutInRunOnce@files:tarn.dll stdcall setuponly';

function VerifyEmail(address: AnsiString; var errorPosition: Integer; message: AnsiString): Integer;
external 'VerifyEmail@files:tarn.dll stdcall setuponly';

function Write_ch_config_File(installationFolder: AnsiString): Integer;
external 'Write_ch_config_File@files:tarn.dll stdcall setuponly';

// Up to the first zero.
function TarnText(const Buffer: AnsiString): String;
begin
  Result := Copy(Buffer, 1, Pos(#0, Buffer + #0) - 1);
end;

// Address becomes the trimmed one. Position is 0-based up to the "@" and 1-based behind it, -1 for none.
function TarnVerifyEmail(var Address, Message: String; var Position: Integer): Boolean;
var
  Given, Text: AnsiString;
begin
  Given := Address + #0; // a string of its own: the trimmed address is written over it
  Text := StringOfChar(#0, 73);
  Result := VerifyEmail(Given, Position, Text) = 1;
  Address := TarnText(Given);
  Message := TarnText(Text);
end;

function TarnDoFileOpenDialog(const Folder, Title, Filter, Extension: String; var Path: String): Boolean;
var
  Buffer: AnsiString;
begin
  Buffer := StringOfChar(#0, 260);
  Result := DoFileOpenDialog(Folder, Title, Filter, Extension, Buffer) = 1;
  if Result then
    Path := TarnText(Buffer);
end;
