{ The functions of tarn.dll, for a 64-bit program. Neither compiled nor run by the library's tests. }
unit Tarn;

interface

uses
  Winapi.Windows;

const
  TarnLibrary = 'tarn.dll';

function DoWaitDlgModless(Parent: HWND; Title, Message: PAnsiChar): Integer; stdcall; external TarnLibrary;
function CloseWaitDlg: Integer; stdcall; external TarnLibrary;
{ Path: 260 bytes. }
function DoFileOpenDialog(InitialFolder, Title, Filter, DefaultExtension, Path: PAnsiChar): Integer; stdcall;
  external TarnLibrary;
function FileCopy(Source, Folder: PAnsiChar): Integer; stdcall; external TarnLibrary;
function PutInRunOnce(ValueName, Command: PAnsiChar): Integer; stdcall; external TarnLibrary;
{ Message: 73 bytes. }
function VerifyEmail(Address: PAnsiChar; var ErrorPosition: Integer; Message: PAnsiChar): Integer; stdcall;
  external TarnLibrary;
function Write_ch_config_File(InstallationFolder: PAnsiChar): Integer; stdcall; external TarnLibrary;

implementation

end.
