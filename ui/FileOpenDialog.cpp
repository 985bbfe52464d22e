#include "frame/ExportGuard.h"
#include "include/tarn.h"

#include <afxdlgs.h>

#include <cstring>

namespace
{
bool HasText(const char* psz)
{
    return psz != nullptr && *psz != '\0';
}
} // namespace

extern "C" int DoFileOpenDialog(char* initialFolder, char* title, const char* filter,
                                const char* defaultExtension, char* path)
{
    TARN_EXPORT_GUARD();
    const CString strFileName(path);
    // In its classic style, where a framework has two: the newer one takes the initial folder for a
    // suggestion and has no read-only box.
    CFileDialog dlg(TRUE, defaultExtension, strFileName, OFN_FILEMUSTEXIST, filter, nullptr, 0,
                    FALSE);
    if (HasText(initialFolder))
        dlg.GetOFN().lpstrInitialDir = initialFolder;
    if (HasText(title))
        dlg.GetOFN().lpstrTitle = title;
    if (dlg.DoModal() != IDOK)
        return 0;
    const CString strPath = dlg.GetPathName();
    // No caller has room for it, and a part of it would be another file's path.
    if (strPath.GetLength() >= TARN_OPEN_PATH_SIZE)
        return 0;
    std::memcpy(path, strPath, static_cast<std::size_t>(strPath.GetLength()) + 1);
    return 1;
}
