// The file as it is shipped.
#include "tests/support/TempFolder.h"
#include "tests/tarntool/Tool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace
{
// The file, mapped as an image without running anything of it.
class Image
{
public:
    Image()
        : m_hModule(::LoadLibraryExW(tool::Path().c_str(), nullptr,
                                     LOAD_LIBRARY_AS_IMAGE_RESOURCE | LOAD_LIBRARY_AS_DATAFILE)),
          m_bytes(ReadBytes(Ansi(tool::Path())))
    {
    }
    ~Image() { ::FreeLibrary(m_hModule); }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    const std::string& Bytes() const { return m_bytes; }
    const IMAGE_NT_HEADERS64& Headers() const
    {
        const auto* const pDos = reinterpret_cast<const IMAGE_DOS_HEADER*>(m_bytes.data());
        return *reinterpret_cast<const IMAGE_NT_HEADERS64*>(m_bytes.data() + pDos->e_lfanew);
    }
    std::string Resource(const wchar_t* pszType, int nName) const
    {
        HRSRC const hResource = ::FindResourceW(m_hModule, MAKEINTRESOURCEW(nName), pszType);
        if (hResource == nullptr)
            return "(missing)";
        return std::string(
            static_cast<const char*>(::LockResource(::LoadResource(m_hModule, hResource))),
            ::SizeofResource(m_hModule, hResource));
    }

private:
    static std::string Ansi(const std::wstring& text)
    {
        return std::string(text.begin(), text.end());
    }

    HMODULE m_hModule;
    std::string m_bytes;
};

std::string Narrowed(const std::string& utf16)
{
    std::string text;
    for (std::size_t i = 0; i + 1 < utf16.size(); i += 2)
        text += utf16[i + 1] == 0 && utf16[i] != 0 ? utf16[i] : '|';
    return text;
}
} // namespace

TEST(ToolFile, IsAtMost96KB)
{
    const Image image;
    EXPECT_GT(image.Bytes().size(), 20000U);
    EXPECT_LE(image.Bytes().size(), 96U * 1024);
}

TEST(ToolFile, IsAWindowedProgramForWhichNoConsoleOpens)
{
    const Image image;
    EXPECT_EQ(image.Headers().FileHeader.Machine, IMAGE_FILE_MACHINE_AMD64);
    EXPECT_EQ(image.Headers().OptionalHeader.Subsystem, IMAGE_SUBSYSTEM_WINDOWS_GUI);
}

TEST(ToolFile, IsHardened)
{
    const Image image;
    constexpr WORD kWanted = IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE |
                             IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA |
                             IMAGE_DLLCHARACTERISTICS_NX_COMPAT;
    EXPECT_EQ(image.Headers().OptionalHeader.DllCharacteristics & kWanted, kWanted);
}

TEST(ToolFile, SaysUtf8InItsManifest)
{
    const Image image;
    const std::string manifest = image.Resource(MAKEINTRESOURCEW(24), 1);
    for (const char* const pszPart :
         {">UTF-8</activeCodePage>", "level=\"asInvoker\"", "Microsoft.Windows.Common-Controls"})
        EXPECT_NE(manifest.find(pszPart), std::string::npos) << pszPart << " in " << manifest;
}

TEST(ToolFile, HasAVersionResourceThatAgreesWithWhatItSays)
{
    const Image image;
    const std::string resource = Narrowed(image.Resource(MAKEINTRESOURCEW(16), 1));
    const std::string said = tool::Lines(tool::RunTool(L"version").out)[0].substr(9);
    EXPECT_NE(resource.find("FileVersion||" + said + "|"), std::string::npos) << resource;
    EXPECT_NE(resource.find("ProductVersion|" + said + "|"), std::string::npos) << resource;
    EXPECT_NE(resource.find("ProductName|"), std::string::npos) << resource;
    EXPECT_NE(resource.find("OriginalFilename|tarntool.exe|"), std::string::npos) << resource;
}

TEST(ToolFile, NeedsNothingBesideIt)
{
    const TempFolder folder;
    tool::Start start;
    start.program = tool::Wide(folder / "tarntool.exe");
    ASSERT_TRUE(::CopyFileW(tool::Path().c_str(), start.program.c_str(), TRUE));
    EXPECT_EQ(tool::RunTool(L"check joe@example.org", start).nExitCode, 0U);
    EXPECT_EQ(folder.Listing(), "tarntool.exe");
}
