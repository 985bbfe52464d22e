#include "frame/ExportGuard.h"
#include "include/tarn.h"
#include "install/RegistryKey.h"

#include <cstring>

extern "C" int PutInRunOnce(const char* valueName, const char* command)
{
    TARN_EXPORT_GUARD();
    const RegistryKey key(HKEY_CURRENT_USER,
                          "Software\\Microsoft\\Windows\\CurrentVersion\\Runonce", KEY_ALL_ACCESS);
    if (!key.IsOpen())
        return 0;
    const DWORD cbCommand = static_cast<DWORD>(std::strlen(command)) + 1;
    return key.SetString(valueName, command, cbCommand) ? 1 : 0;
}
