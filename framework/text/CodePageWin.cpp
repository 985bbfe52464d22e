#include "framework/text/CodePage.h"

#include <windows.h>

bool IsLeadByte(unsigned char ch) noexcept
{
    return ::IsDBCSLeadByte(ch) != FALSE;
}
