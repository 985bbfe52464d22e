#include "frame/ExportGuard.h"
#include "include/tarn.h"
#include "install/ChrcFile.h"

extern "C" int Write_ch_config_File(const char* installationFolder)
{
    TARN_EXPORT_GUARD();
    CString strFolder(installationFolder);
    if (!strFolder.IsEmpty())
    {
        // One separator and no more: a second one is passed on to the system.
        const char chLast = strFolder.GetAt(strFolder.GetLength() - 1);
        if (chLast == '\\' || chLast == '/')
            strFolder = strFolder.Left(strFolder.GetLength() - 1);
    }
    const CString strPath = strFolder + "\\embedch\\config\\chrc";
    return WriteChrcFile(strPath, strFolder, TRUE) != 0 ? 1 : 0;
}
