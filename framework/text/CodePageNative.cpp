#include "framework/text/CodePage.h"

#include <atomic>

namespace
{
constexpr unsigned int kJapanese = 932;
std::atomic<unsigned int> g_nCodePage{1252};
} // namespace

bool IsLeadByte(unsigned char ch) noexcept
{
    return g_nCodePage == kJapanese && ((ch >= 0x81 && ch <= 0x9F) || (ch >= 0xE0 && ch <= 0xFC));
}

void SetNativeCodePage(unsigned int nCodePage) noexcept
{
    g_nCodePage = nCodePage;
}
