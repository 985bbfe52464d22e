#include "framework/text/CodePage.h"

#include <windows.h>

bool AfxIsLeadByte(unsigned char ch) noexcept
{
    return ::IsDBCSLeadByte(ch) != FALSE;
}
