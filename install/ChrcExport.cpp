#include "frame/ExportGuard.h"
#include "include/tarn.h"
#include "install/ChrcFile.h"
#include "install/PathHelpers.h"

extern "C" int Write_ch_config_File(const char* installationFolder)
{
    TARN_EXPORT_GUARD();
    CString strFolder(installationFolder);
    // One separator and no more: a second one is passed on to the system.
    if (!strFolder.IsEmpty() && IsSeparator(strFolder.GetAt(strFolder.GetLength() - 1)))
        strFolder = strFolder.Left(strFolder.GetLength() - 1);
    const CString strPath = strFolder + "\\embedch\\config\\chrc";
    return WriteChrcFile(strPath, strFolder, TRUE) != 0 ? 1 : 0;
}
