// The functions of tarn.dll, for a 64-bit program (PlatformTarget x64). Neither compiled nor run by the library's
// tests.
using System;
using System.Runtime.InteropServices;
using System.Text;

public static class Tarn
{
    // From the program's own folder, and from nowhere else.
    private const string Library = "tarn.dll";

    [DllImport(Library, ExactSpelling = true, CharSet = CharSet.Ansi)]
    [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory)]
    public static extern int DoWaitDlgModless(IntPtr parent, string title, string message);

    [DllImport(Library, ExactSpelling = true)]
    [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory)]
    public static extern int CloseWaitDlg();

    // path: a capacity of 260.
    [DllImport(Library, ExactSpelling = true, CharSet = CharSet.Ansi)]
    [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory)]
    public static extern int DoFileOpenDialog(string initialFolder, string title, string filter,
        string defaultExtension, StringBuilder path);

    [DllImport(Library, ExactSpelling = true, CharSet = CharSet.Ansi)]
    [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory)]
    public static extern int FileCopy(string source, string folder);

    [DllImport(Library, ExactSpelling = true, CharSet = CharSet.Ansi)]
    [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory)]
    public static extern int PutInRunOnce(string valueName, string command);

    // address holds the address, and then the trimmed one; message: a capacity of 73.
    [DllImport(Library, ExactSpelling = true, CharSet = CharSet.Ansi)]
    [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory)]
    public static extern int VerifyEmail(StringBuilder address, out int errorPosition, StringBuilder message);

    [DllImport(Library, ExactSpelling = true, CharSet = CharSet.Ansi)]
    [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory)]
    public static extern int Write_ch_config_File(string installationFolder);
}
