#include "tests/support/FirstSection.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace
{
// The file as it lies on the disk.
class Image
{
public:
    Image() : m_bytes(ReadBytes(LoadedTarn::Path())) {}

    const std::string& Bytes() const { return m_bytes; }

    const IMAGE_NT_HEADERS64& Headers() const
    {
        return *At<IMAGE_NT_HEADERS64>(static_cast<std::size_t>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
    }
    std::vector<IMAGE_SECTION_HEADER> Sections() const
    {
        const IMAGE_SECTION_HEADER* const pFirst = FirstSection(&Headers());
        return std::vector<IMAGE_SECTION_HEADER>(pFirst,
                                                 pFirst + Headers().FileHeader.NumberOfSections);
    }
    const IMAGE_DATA_DIRECTORY& Directory(unsigned nIndex) const
    {
        return Headers().OptionalHeader.DataDirectory[nIndex];
    }
    // What an address of the loaded image points to.
    template <class Type>
    const Type* AtAddress(DWORD nAddress) const
    {
        for (const IMAGE_SECTION_HEADER& section : Sections())
        {
            if (nAddress >= section.VirtualAddress &&
                nAddress < section.VirtualAddress + section.SizeOfRawData)
                return At<Type>(nAddress - section.VirtualAddress + section.PointerToRawData);
        }
        ADD_FAILURE() << "address " << nAddress << " is in no section";
        return nullptr;
    }

private:
    template <class Type>
    const Type* At(std::size_t nOffset) const
    {
        return reinterpret_cast<const Type*>(m_bytes.data() + nOffset);
    }

    std::string m_bytes;
};

std::string Lower(std::string text)
{
    for (char& ch : text)
        ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    return text;
}

std::vector<std::string> ImportedLibraries(const Image& image)
{
    std::vector<std::string> names;
    const auto* pImport = image.AtAddress<IMAGE_IMPORT_DESCRIPTOR>(
        image.Directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
    for (; pImport != nullptr && pImport->Name != 0; ++pImport)
        names.push_back(Lower(image.AtAddress<char>(pImport->Name)));
    return names;
}

bool Contains(const std::string& bytes, const std::string& text)
{
    std::string wide;
    for (const char ch : text)
        wide += std::string(1, ch) + '\0';
    const std::string lower = Lower(bytes);
    return lower.find(Lower(text)) != std::string::npos ||
           lower.find(Lower(wide)) != std::string::npos;
}

TEST(Binary, IsALibraryForX64)
{
    const Image image;
    ASSERT_GT(image.Bytes().size(), 4096U);
    EXPECT_EQ(image.Bytes().substr(0, 2), "MZ");
    EXPECT_EQ(image.Headers().Signature, DWORD{IMAGE_NT_SIGNATURE});
    EXPECT_EQ(image.Headers().FileHeader.Machine, IMAGE_FILE_MACHINE_AMD64);
    EXPECT_EQ(image.Headers().OptionalHeader.Magic, IMAGE_NT_OPTIONAL_HDR64_MAGIC);
    EXPECT_NE(image.Headers().FileHeader.Characteristics & IMAGE_FILE_DLL, 0);
}

TEST(Binary, ExportsTheSevenFunctionsAndNothingElse)
{
    const Image image;
    const auto* const pExports = image.AtAddress<IMAGE_EXPORT_DIRECTORY>(
        image.Directory(IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
    ASSERT_NE(pExports, nullptr);
    std::vector<std::string> names;
    for (DWORD i = 0; i < pExports->NumberOfNames; ++i)
        names.push_back(image.AtAddress<char>(image.AtAddress<DWORD>(pExports->AddressOfNames)[i]));
    EXPECT_EQ(names, (std::vector<std::string>{"CloseWaitDlg", "DoFileOpenDialog",
                                               "DoWaitDlgModless", "FileCopy", "PutInRunOnce",
                                               "VerifyEmail", "Write_ch_config_File"}));
    EXPECT_EQ(pExports->NumberOfFunctions, 7U); // none by number only
    EXPECT_EQ(Lower(image.AtAddress<char>(pExports->Name)), "tarn.dll");
}

TEST(Binary, ImportsSystemLibrariesOnly)
{
    const std::vector<std::string> allowed = {"advapi32.dll", "kernel32.dll", "msvcrt.dll",
                                              "user32.dll"};
    const std::vector<std::string> names = ImportedLibraries(Image());
    EXPECT_FALSE(names.empty());
    for (const std::string& name : names)
        EXPECT_NE(std::find(allowed.begin(), allowed.end(), name), allowed.end()) << name;
    // It would bring the shell into every installer.
    EXPECT_EQ(std::find(names.begin(), names.end(), "comdlg32.dll"), names.end());
    EXPECT_EQ(Image().Directory(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT).Size, 0U);
}

std::vector<std::string> ImportedFunctions(const Image& image)
{
    std::vector<std::string> names;
    const auto* pImport = image.AtAddress<IMAGE_IMPORT_DESCRIPTOR>(
        image.Directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
    for (; pImport != nullptr && pImport->Name != 0; ++pImport)
    {
        const auto* pEntry = image.AtAddress<IMAGE_THUNK_DATA64>(pImport->OriginalFirstThunk);
        for (; pEntry != nullptr && pEntry->u1.AddressOfData != 0; ++pEntry)
        {
            EXPECT_FALSE(IMAGE_SNAP_BY_ORDINAL64(pEntry->u1.Ordinal)) << "nobody can tell which";
            // Behind a hint of two bytes.
            names.push_back(
                image.AtAddress<char>(static_cast<DWORD>(pEntry->u1.AddressOfData) + 2));
        }
    }
    return names;
}

// What it cannot call it cannot do: load by another way than from the system folder, change what
// belongs to the host's process, or make code of data.
TEST(Binary, ImportsNothingThatSearchesForLibrariesOrChangesTheProcess)
{
    const std::vector<std::string> names = ImportedFunctions(Image());
    const auto has = [&names](const std::string& name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    EXPECT_TRUE(has("LoadLibraryExA")) << "the names are not read";
    EXPECT_TRUE(has("GetSystemDirectoryA"));
    for (const char* const pszName : {"LoadLibraryA",
                                      "LoadLibraryW",
                                      "LoadLibraryExW",
                                      "LoadModule",
                                      "SearchPathA",
                                      "SearchPathW",
                                      "SetDllDirectoryA",
                                      "SetDllDirectoryW",
                                      "SetDefaultDllDirectories",
                                      "AddDllDirectory",
                                      "SetSearchPathMode",
                                      "SetErrorMode",
                                      "SetThreadErrorMode",
                                      "SetUnhandledExceptionFilter",
                                      "AddVectoredExceptionHandler",
                                      "signal",
                                      "setlocale",
                                      "_configthreadlocale",
                                      "SetThreadLocale",
                                      "_controlfp",
                                      "_control87",
                                      "_controlfp_s",
                                      "_fpreset",
                                      "_set_invalid_parameter_handler",
                                      "SetCurrentDirectoryA",
                                      "SetCurrentDirectoryW",
                                      "SetEnvironmentVariableA",
                                      "SetEnvironmentVariableW",
                                      "_putenv",
                                      "SetPriorityClass",
                                      "VirtualProtect",
                                      "VirtualAlloc"})
        EXPECT_FALSE(has(pszName)) << pszName;
}

TEST(Binary, MayBeLoadedAnywhereAndRunsNoData)
{
    const Image image;
    const WORD nFlags = image.Headers().OptionalHeader.DllCharacteristics;
    EXPECT_NE(nFlags & 0x0020, 0) << "high-entropy address space layout";
    EXPECT_NE(image.Headers().FileHeader.Characteristics & IMAGE_FILE_LARGE_ADDRESS_AWARE, 0)
        << "without it the high addresses are not used";
    EXPECT_NE(nFlags & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE, 0);
    EXPECT_NE(nFlags & IMAGE_DLLCHARACTERISTICS_NX_COMPAT, 0);
    // The flags mean nothing for a file without relocations.
    EXPECT_EQ(image.Headers().FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED, 0);
    EXPECT_GT(image.Directory(IMAGE_DIRECTORY_ENTRY_BASERELOC).Size, 0U);
    for (const IMAGE_SECTION_HEADER& section : image.Sections())
    {
        const DWORD nBoth = IMAGE_SCN_MEM_EXECUTE | IMAGE_SCN_MEM_WRITE;
        EXPECT_NE(section.Characteristics & nBoth, nBoth)
            << std::string(reinterpret_cast<const char*>(section.Name), 8);
    }
}

// Callbacks are all right, which the C runtime has; data for each thread is not: the compiler's own
// thread-local variables would allocate behind the library's back.
TEST(Binary, HasNoThreadLocalData)
{
    const Image image;
    if (image.Directory(IMAGE_DIRECTORY_ENTRY_TLS).Size == 0)
        return;
    const auto* const pTls = image.AtAddress<IMAGE_TLS_DIRECTORY64>(
        image.Directory(IMAGE_DIRECTORY_ENTRY_TLS).VirtualAddress);
    ASSERT_NE(pTls, nullptr);
    EXPECT_LE(pTls->EndAddressOfRawData - pTls->StartAddressOfRawData, 8U);
    EXPECT_EQ(pTls->SizeOfZeroFill, 0U);
}

TEST(Binary, HoldsNoPathOfTheMachineThatBuiltIt)
{
    const Image image;
    std::vector<std::string> texts = {"/home/",     "/root/",    "/usr/", "/tmp/",  "/build/",
                                      "framework/", "validate/", ".cpp",  "\\src\\"};
    // Wherever else this build lies; not set where the library was built on another machine.
    if (const char* const pszRoot = std::getenv("TARN_BUILT_BELOW"))
        texts.emplace_back(pszRoot);
    for (const std::string& text : texts)
        EXPECT_FALSE(Contains(image.Bytes(), text)) << text;
    EXPECT_TRUE(Contains(image.Bytes(), "Missing  @  ")) << "the search itself finds nothing";
}

struct Resource
{
    std::string type;
    std::string name;
    WORD nLanguage;
};

std::string NameOf(LPCSTR psz)
{
    return IS_INTRESOURCE(psz) ? std::to_string(reinterpret_cast<ULONG_PTR>(psz)) : psz;
}

BOOL CALLBACK AddResource(HMODULE /*hModule*/, LPCSTR lpType, LPCSTR lpName, WORD nLanguage,
                          LONG_PTR lParam)
{
    reinterpret_cast<std::vector<Resource>*>(lParam)->push_back(
        {NameOf(lpType), NameOf(lpName), nLanguage});
    return TRUE;
}

BOOL CALLBACK VisitName(HMODULE hModule, LPCSTR lpType, LPSTR lpName, LONG_PTR lParam)
{
    return ::EnumResourceLanguagesA(hModule, lpType, lpName, &AddResource, lParam);
}

BOOL CALLBACK VisitType(HMODULE hModule, LPSTR lpType, LONG_PTR lParam)
{
    return ::EnumResourceNamesA(hModule, lpType, &VisitName, lParam);
}

std::string ResourceBytes(HMODULE hModule, ULONG_PTR nType, ULONG_PTR nName, WORD nLanguage)
{
    HRSRC const hResource = ::FindResourceExA(hModule, reinterpret_cast<LPCSTR>(nType),
                                              reinterpret_cast<LPCSTR>(nName), nLanguage);
    if (hResource == nullptr)
        return "";
    const void* const pData = ::LockResource(::LoadResource(hModule, hResource));
    return std::string(static_cast<const char*>(pData), ::SizeofResource(hModule, hResource));
}

TEST(BinaryResources, AreTheDialogTemplateAndTheManifest)
{
    const LoadedTarn tarn;
    std::vector<Resource> resources;
    ASSERT_TRUE(
        ::EnumResourceTypesA(tarn.Module(), &VisitType, reinterpret_cast<LONG_PTR>(&resources)));
    ASSERT_EQ(resources.size(), 2U);
    EXPECT_EQ(resources[0].type, "5"); // dialog
    EXPECT_EQ(resources[0].name, "14000");
    EXPECT_EQ(resources[0].nLanguage, MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US));
    EXPECT_EQ(resources[1].type, "24"); // manifest
    // Not 2, which the loader itself would act on.
    EXPECT_EQ(resources[1].name, "3");
    const std::string manifest = ResourceBytes(tarn.Module(), 24, 3, resources[1].nLanguage);
    EXPECT_TRUE(Contains(manifest, "Microsoft.Windows.Common-Controls"));
    EXPECT_TRUE(Contains(manifest, "version=\"6.0.0.0\""));
}

TEST(BinaryResources, HoldTheDialogTemplateByteForByte)
{
    const unsigned char template14000[] = {
        0xC0, 0x00, 0xC0, 0x90,         // popup, visible, caption, modal frame, font
        0x00, 0x00, 0x00, 0x00,         // no extended style
        0x01, 0x00,                     // one control
        0x00, 0x00, 0x00, 0x00,         // at (0, 0)
        0xE5, 0x00, 0x2D, 0x00,         // 229 by 45
        0x00, 0x00,                     // no menu
        0x00, 0x00,                     // the standard class
        0x00, 0x00,                     // empty caption
        0x08, 0x00,                     // 8 point
        'M',  0,    'S',  0,    ' ', 0, //
        'S',  0,    'a',  0,    'n', 0, //
        's',  0,    ' ',  0,    'S', 0, //
        'e',  0,    'r',  0,    'i', 0, //
        'f',  0,    0,    0,            //
        0x00, 0x00,                     // up to a multiple of four
        0x00, 0x00, 0x02, 0x50,         // child, visible, group, left
        0x00, 0x00, 0x00, 0x00,         // no extended style
        0x0D, 0x00, 0x09, 0x00,         // at (13, 9)
        0xC5, 0x00, 0x16, 0x00,         // 197 by 22
        0xB0, 0x36,                     // number 14000
        0xFF, 0xFF, 0x82, 0x00,         // the predefined static class
        0x00, 0x00,                     // empty text
        0x00, 0x00,                     // no creation data
    };
    const LoadedTarn tarn;
    const std::string bytes =
        ResourceBytes(tarn.Module(), 5, 14000, MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US));
    const std::string expected(reinterpret_cast<const char*>(template14000), sizeof(template14000));
    // Whether the end is filled up to a multiple of four is the resource compiler's choice.
    ASSERT_GE(bytes.size(), expected.size());
    ASSERT_LT(bytes.size(), expected.size() + 4);
    EXPECT_TRUE(bytes.substr(0, expected.size()) == expected);
    EXPECT_EQ(bytes.substr(expected.size()), std::string(bytes.size() - expected.size(), '\0'));
}
} // namespace
