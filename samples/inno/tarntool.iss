; tarntool.iss - the installer support library for Inno Setup 6.4 and later, whose Setup is a 32-bit program and
; cannot load it. The 64-bit program tarntool.exe stands between.
;
;   #define TarnTool "path\to\tarntool.exe"   ; optional: the default is ..\..\bin\tarntool.exe beside this file
;   #include "tarntool.iss"
;
; Every function extracts the program when it is first called. They may be called by Setup only: Uninstall
; cannot extract files.

#ifndef TarnTool
  #define TarnTool ExtractFilePath(__PATHFILENAME__) + "\..\..\bin\tarntool.exe"
#endif

[Files]
Source: "{#TarnTool}"; DestName: "tarntool.exe"; Flags: dontcopy

[Code]
var
  TarnWaits: Boolean;

// As one argument of a command line.
function TarnQuoted(Text: String): String;
begin
  StringChangeEx(Text, '"', '""', True);
  Result := '"' + Text + '"';
end;

// The exit code, or -1 when the program cannot be started; Lines is what it says, and at least Count lines.
function TarnRun(const Arguments: String; const Count: Integer; var Lines: TArrayOfString): Integer;
var
  Output: TExecOutput;
begin
  if not FileExists(ExpandConstant('{tmp}\tarntool.exe')) then
    ExtractTemporaryFile('tarntool.exe');
  if not ExecAndCaptureOutput(ExpandConstant('{tmp}\tarntool.exe'), Arguments, '', SW_SHOWNORMAL,
    ewWaitUntilTerminated, Result, Output) then
    Result := -1;
  if (Result <> 0) and (GetArrayLength(Output.StdErr) > 0) then
    Log(Output.StdErr[0]);
  Lines := Output.StdOut;
  if GetArrayLength(Lines) < Count then
    SetArrayLength(Lines, Count);
end;

// Address becomes the trimmed one. Position is 0-based up to the "@" and 1-based behind it, -1 for none.
function TarnVerifyEmail(var Address, Message: String; var Position: Integer): Boolean;
var
  Lines: TArrayOfString;
begin
  Result := TarnRun('check -- ' + TarnQuoted(Address), 4, Lines) = 0;
  Position := StrToIntDef(Lines[1], -1);
  Message := Lines[2];
  Address := Lines[3];
end;

// Gives the field, which holds the trimmed address, the focus, and selects the character at fault.
procedure TarnSelectFault(Field: TCustomEdit; Position: Integer);
begin
  if Position > Pos('@', Field.Text) - 1 then
    Position := Position - 1;
  WizardForm.ActiveControl := Field;
  Field.SelStart := Length(Field.Text);
  if Position >= 0 then
  begin
    Field.SelStart := Position;
    Field.SelLength := 1;
  end;
end;

function TarnFileCopy(const Source, Folder: String): Boolean;
var
  Lines: TArrayOfString;
begin
  Result := TarnRun('copy ' + TarnQuoted(Folder) + ' ' + TarnQuoted(Source), 0, Lines) = 0;
end;

// The command line is queued as it stands.
function TarnPutInRunOnce(const Name, Command: String): Boolean;
var
  Lines: TArrayOfString;
begin
  Result := TarnRun('runonce ' + TarnQuoted(Name) + ' -- ' + Command, 0, Lines) = 0;
end;

// Never shows a message box; Reason is what it would say.
function TarnWriteChConfigFile(const Folder: String; var Reason: String): Boolean;
var
  Lines: TArrayOfString;
begin
  Result := TarnRun('config --quiet ' + TarnQuoted(Folder), 1, Lines) = 0;
  Reason := Lines[0];
end;

// The dialog stands over the wizard, which cannot be clicked meanwhile. Path is the file that it begins with,
// and then the chosen one.
function TarnDoFileOpenDialog(const Folder, Title, Filter, Extension: String; var Path: String): Boolean;
var
  Lines: TArrayOfString;
begin
  Result := TarnRun('open --parent ' + IntToStr(WizardForm.Handle) + ' --folder ' + TarnQuoted(Folder) +
    ' --title ' + TarnQuoted(Title) + ' --filter ' + TarnQuoted(Filter) + ' --extension ' +
    TarnQuoted(Extension) + ' --file ' + TarnQuoted(Path), 1, Lines) = 0;
  if Result then
    Path := Lines[0];
end;

// The window stays over the wizard, and goes with Setup at the latest.
procedure TarnDoWaitDlgModless(const Title, Message: String);
var
  Lines: TArrayOfString;
begin
  TarnWaits := TarnRun('wait --parent ' + IntToStr(WizardForm.Handle) + ' --id inno-' +
    IntToStr(WizardForm.Handle) + ' --title ' + TarnQuoted(Title) + ' --message ' + TarnQuoted(Message),
    0, Lines) = 0;
end;

procedure TarnCloseWaitDlg;
var
  Lines: TArrayOfString;
begin
  if TarnWaits then
    TarnRun('done --id inno-' + IntToStr(WizardForm.Handle), 0, Lines);
  TarnWaits := False;
end;
