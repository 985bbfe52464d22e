#include "frame/ExportGuard.h"
#include "include/tarn.h"
#include "install/PathHelpers.h"

extern "C" int FileCopy(const char* source, const char* folder)
{
    TARN_EXPORT_GUARD();
    CString strDestination(folder);
    // Installers in the field rely on the folder text being taken as it stands, so the separated form
    // is not used; whoever wants the file inside the folder passes the separator.
    AddTrailingSeparator(strDestination);
    strDestination += FileNamePart(source);

    const CString strSource(source);
    if (strSource.IsEmpty())
        return 0;
    if (::GetFileAttributesA(strSource) == INVALID_FILE_ATTRIBUTES)
        return 0;
    return ::CopyFileA(strSource, strDestination, FALSE) ? 1 : 0;
}
