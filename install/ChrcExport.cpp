#include "frame/ExportGuard.h"
#include "include/tarn.h"
#include "install/ChrcFile.h"
#include "install/PathHelpers.h"

extern "C" int Write_ch_config_File(const char* installationFolder)
{
    TARN_EXPORT_GUARD();
    CString strFolder(installationFolder);
    RemoveTrailingSeparator(strFolder); // a second one is passed on to the system
    return WriteChrcFile(ChrcPath(strFolder), strFolder, TRUE) != 0 ? 1 : 0;
}
