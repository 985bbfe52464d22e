; lakeside.iss - installs the sample product with Inno Setup 6.4 or later and tarntool.exe.
;
;   iscc lakeside.iss
;
; Defines: ProductDir  the folder that holds the product's files; the default is the kit's
;          TarnTool    the program (see tarntool.iss)
;
; With nobody at the keyboard:
;
;   lakeside-setup.exe /VERYSILENT /SUPPRESSMSGBOXES /EMAIL=address [/LICENCE=file] [/LOG=file] [/DIR=folder]
;
; Exit codes are those of Inno Setup, and 10: the product is there, and its start-up file or its licence file
; is not.

#ifndef ProductDir
  #define ProductDir SourcePath + "..\product"
#endif
#define Art SourcePath + "..\wizard\art"
#define RunOnce "Software\Microsoft\Windows\CurrentVersion\RunOnce"

[Setup]
AppId=Lakeside
AppName=Lakeside Workbench
AppVersion=1.2
AppVerName=Lakeside Workbench 1.2
AppPublisher=Lakeside
DefaultDirName={localappdata}\Programs\Lakeside Workbench
DisableDirPage=no
DisableProgramGroupPage=yes
DisableReadyPage=yes
PrivilegesRequired=lowest
; Setup is a 32-bit program; the product is a 64-bit one, and so is tarntool.exe.
ArchitecturesAllowed=x64compatible
ArchitecturesInstallIn64BitMode=x64compatible
OutputDir=.
OutputBaseFilename=lakeside-setup
UninstallDisplayIcon={app}\bin\lakeside.exe
WizardStyle=modern
DisableWelcomePage=no
SetupIconFile={#Art}\setup.ico
WizardImageFile={#Art}\side.bmp
WizardSmallImageFile={#Art}\small.bmp

; The wizard for NSIS says the same.
[Messages]
WelcomeLabel2=This installs [name/ver] on your computer, for your own account.%n%nYou will be asked for your \
  e-mail address, for a licence file if you have one, and for a folder.
WizardSelectDir=Choose Install Location
SelectDirDesc=Choose the folder in which to install [name].
WizardInstalling=Installing
; "Please wait" is what the wait window says.
InstallingLabel=[name] is being installed on your computer.
FinishedLabelNoIcons=[name] has been installed.%n%nIt will show you around at your next log-on.
FinishedLabel=[name] has been installed.%n%nIt will show you around at your next log-on.

[Files]
Source: "{#ProductDir}\tree\*"; DestDir: "{app}"; Flags: recursesubdirs createallsubdirs ignoreversion

[INI]
Filename: "{app}\registration.ini"; Section: "Registration"; Key: "Email"; String: "{code:GetEmail}"; \
  Flags: uninsdeletesection

[Registry]
; Written by the code below; here for the uninstaller.
Root: HKCU; Subkey: "{#RunOnce}"; ValueName: "LakesideWelcome"; Flags: dontcreatekey uninsdeletevalue

[UninstallDelete]
Type: files; Name: "{app}\embedch\config\chrc"
Type: files; Name: "{app}\registration.ini"
Type: files; Name: "{app}\licence\*.lic"
Type: dirifempty; Name: "{app}\licence"

#include "tarntool.iss"

[Code]
var
  EmailPage, LicencePage: TInputQueryWizardPage;
  EmailMessage, LicenceMessage: TNewStaticText;
  Failure: String;

function GetEmail(Unused: String): String;
begin
  Result := EmailPage.Values[0];
end;

procedure EmailChanged(Sender: TObject);
begin
  EmailMessage.Caption := '';
end;

procedure LicenceChanged(Sender: TObject);
begin
  LicenceMessage.Caption := '';
end;

procedure BrowseForLicence(Sender: TObject);
var
  Path: String;
begin
  Path := LicencePage.Values[0];
  if TarnDoFileOpenDialog(ExpandConstant('{userdocs}'), 'Choose the licence file',
    'Licence files (*.lic)|*.lic|All files (*.*)|*.*||', 'lic', Path) then
    LicencePage.Values[0] := Path;
end;

function AddMessage(Page: TInputQueryWizardPage): TNewStaticText;
begin
  Result := TNewStaticText.Create(Page);
  Result.Parent := Page.Surface;
  Result.Top := Page.Edits[0].Top + Page.Edits[0].Height + ScaleY(8);
  Result.AutoSize := False;
  Result.WordWrap := True;
  Result.ShowAccelChar := False; // "&" is an ampersand
  Result.SetBounds(0, Result.Top, Page.SurfaceWidth, ScaleY(40));
  Result.Font.Color := $0000C0;
end;

procedure InitializeWizard;
var
  Browse: TNewButton;
begin
  EmailPage := CreateInputQueryPage(wpWelcome, 'E-mail Address', 'Whose copy of Lakeside Workbench is this?',
    'Your address is stored with the program, so that support can tell whose copy it is. It stays on this computer.');
  EmailPage.Add('&E-mail address:', False);
  EmailPage.Values[0] := ExpandConstant('{param:EMAIL}');
  EmailPage.Edits[0].OnChange := @EmailChanged;
  EmailMessage := AddMessage(EmailPage);

  LicencePage := CreateInputQueryPage(EmailPage.ID, 'Licence File', 'Have you been given a licence file?',
    'If you have a licence file, choose it here. Without one, leave the field empty: Lakeside Workbench then runs ' +
    'as a trial.');
  LicencePage.Add('&Licence file:', False);
  LicencePage.Values[0] := ExpandConstant('{param:LICENCE}');
  LicencePage.Edits[0].OnChange := @LicenceChanged;
  LicencePage.Edits[0].Width := LicencePage.SurfaceWidth - ScaleX(90);
  LicenceMessage := AddMessage(LicencePage);
  Browse := TNewButton.Create(LicencePage);
  Browse.Parent := LicencePage.Surface;
  Browse.SetBounds(LicencePage.SurfaceWidth - ScaleX(80), LicencePage.Edits[0].Top - ScaleY(1), ScaleX(80),
    ScaleY(23));
  Browse.Caption := 'B&rowse...';
  Browse.OnClick := @BrowseForLicence;
end;

// What the library says of an address, in this page's own words: a sentence about what is selected in the field.
function ExplainFault(const Message: String; const Position: Integer): String;
var
  Edit: TCustomEdit;
  Fault: String;
begin
  Edit := EmailPage.Edits[0];
  Fault := Copy(Edit.Text, Edit.SelStart + 1, 1);
  if Edit.Text = '' then
    Result := 'Please enter your e-mail address.'
  else if Position < 0 then
    Result := 'An e-mail address has an "@" in it.'
  else if Message = '@  is in invalid location in email.' then
    Result := 'Something is missing before the "@".'
  else if Message = 'Invalid Domain name.' then
    Result := 'What follows the "@" is not complete: it has a dot in it, as in "example.com".'
  else if (Message = 'Character  "." is in Invalid location.') and (Fault = '') then
    Result := 'Something is missing at the end of the address.'
  else if Message = 'Character  "." is in Invalid location.' then
    Result := 'Something is missing before this dot.'
  else if Message <> 'invalid character in email.' then
    Result := 'The part that begins here is too long: it can have 64 characters.'
  else if Fault = ' ' then
    Result := 'There are no blanks in an e-mail address.'
  else if Fault = '@' then
    Result := 'There is only one "@" in an e-mail address.'
  else
    Result := 'The character ' + Fault + ' cannot be used in an e-mail address.';
end;

function CheckEmail: Boolean;
var
  Address, Message: String;
  Position: Integer;
begin
  Address := EmailPage.Values[0];
  Result := TarnVerifyEmail(Address, Message, Position);
  EmailPage.Values[0] := Address;
  if not Result then
  begin
    Log(Format('The e-mail address "%s" is refused: %s (position %d)', [Address, Message, Position]));
    if not WizardSilent then
    begin
      TarnSelectFault(EmailPage.Edits[0], Position);
      EmailMessage.Caption := ExplainFault(Message, Position);
    end;
  end;
end;

function CheckLicence: Boolean;
begin
  Result := (LicencePage.Values[0] = '') or FileExists(LicencePage.Values[0]);
  if not Result then
  begin
    Log('There is no licence file ' + LicencePage.Values[0]);
    LicenceMessage.Caption := 'There is no such file. Choose another one, or leave the field empty.';
  end;
end;

// A silent Setup comes here, too, and ends when the result is False.
function NextButtonClick(PageID: Integer): Boolean;
begin
  Result := True;
  if PageID = EmailPage.ID then
    Result := CheckEmail
  else if PageID = LicencePage.ID then
    Result := CheckLicence;
end;

procedure CopyLicence;
var
  Folder: String;
begin
  Folder := ExpandConstant('{app}\licence');
  if not ForceDirectories(Folder) or not TarnFileCopy(LicencePage.Values[0], Folder) then
    Failure := 'The licence file cannot be copied.';
end;

procedure FinishProduct;
var
  Reason: String;
begin
  if not TarnWriteChConfigFile(ExpandConstant('{app}'), Reason) then
    Failure := 'The start-up file cannot be written: ' + Reason
  else if LicencePage.Values[0] <> '' then
    CopyLicence;
  // The product works without its welcome.
  if not TarnPutInRunOnce('LakesideWelcome', ExpandConstant('"{app}\bin\lakeside.exe" --first-run')) then
    Log('The welcome at the next log-on could not be queued.');
end;

procedure CurStepChanged(Step: TSetupStep);
begin
  if (Step = ssInstall) and not WizardSilent then
    TarnDoWaitDlgModless('Please wait', 'This takes less than a minute.');
  if Step = ssPostInstall then
  begin
    FinishProduct;
    Sleep(StrToIntDef(ExpandConstant('{param:PAUSE}'), 0)); // for looking at the wait window
    TarnCloseWaitDlg;
    if Failure <> '' then
    begin
      Log(Failure);
      SuppressibleMsgBox(Failure + #13#10 + 'Run Setup again when the cause is gone.', mbError, MB_OK, IDOK);
    end;
  end;
end;

// Also when installing was cancelled.
procedure DeinitializeSetup;
begin
  TarnCloseWaitDlg;
end;

function GetCustomSetupExitCode: Integer;
begin
  Result := 0;
  if Failure <> '' then
    Result := 10;
end;
