// File names, the start-up file, the registry and the path helpers in the process's code page, of which there
// is a run for each: see Names.h.
#include "tests/codepages/Names.h"

#include "install/PathHelpers.h"
#include "tests/install/ChrcModel.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/RegistrySandbox.h"
#include "tests/support/TempFolder.h"

namespace
{
constexpr char kRunOnce[] = "Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce";

// Names in a folder as the system stores them, so that one that only looks the same is noticed.
std::vector<std::wstring> StoredNames(const std::string& plainFolder, const std::wstring& deeper)
{
    const std::wstring folder(plainFolder.begin(), plainFolder.end());
    WIN32_FIND_DATAW found;
    std::vector<std::wstring> names;
    HANDLE const hFind = ::FindFirstFileW((folder + deeper + L"\\*").c_str(), &found);
    for (BOOL bMore = hFind != INVALID_HANDLE_VALUE; bMore; bMore = ::FindNextFileW(hFind, &found))
    {
        if (found.cFileName[0] != L'.')
            names.emplace_back(found.cFileName);
    }
    ::FindClose(hFind);
    return names;
}

class CodePageFiles : public InItsCodePage
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(tarn.IsComplete());
        InItsCodePage::SetUp();
        for (const char ch : temp.Path())
        {
            if (static_cast<unsigned char>(ch) > '~')
                GTEST_SKIP() << "the temporary folder has other characters than ASCII itself";
        }
    }
    int Copy(const std::string& from, const std::string& folder) const
    {
        return tarn.FileCopy(from.c_str(), folder.c_str());
    }
    // embedch\config\chrc at the end of a path; one folder at a time, since names may hold bytes that look
    // like separators.
    std::string MakeConfig(const std::string& embedch) const
    {
        ::CreateDirectoryA(embedch.c_str(), nullptr);
        ::CreateDirectoryA((embedch + "\\config").c_str(), nullptr);
        return embedch + "\\config\\chrc";
    }

    const LoadedTarn tarn;
    const TempFolder temp;
};
} // namespace

TEST_F(CodePageFiles, AreCopiedBetweenFoldersUnderNamesOfEveryKind)
{
    const std::string source = temp.MakeFolder("source");
    const std::string target = temp.MakeFolder("target");
    for (const Name& name : names)
    {
        SCOPED_TRACE(name.bytes);
        const std::string from = source + "\\" + name.bytes;
        const std::string to = target + "\\" + name.bytes;
        ASSERT_TRUE(::CreateDirectoryA(from.c_str(), nullptr));
        ASSERT_TRUE(::CreateDirectoryA(to.c_str(), nullptr));
        WriteBytes(from + "\\" + name.bytes, name.bytes);
        WriteBytes(from + "\\" + name.bytes + ".txt", "text");
        EXPECT_EQ(Copy(from + "\\" + name.bytes, to + "\\"), 1);
        EXPECT_EQ(Copy(from + "/" + name.bytes + ".txt", to + "/"), 1);
        EXPECT_EQ(StoredNames(target, L"\\" + name.wide),
                  (std::vector<std::wstring>{name.wide, name.wide + L".txt"}));
        EXPECT_EQ(ReadBytes(to + "\\" + name.bytes), name.bytes);
    }
    EXPECT_EQ(StoredNames(target, L"").size(), names.size());
}

TEST_F(CodePageFiles, AreCopiedFromTheCurrentFolderByTheirNamesAlone)
{
    const std::string source = temp.MakeFolder("source");
    const std::string target = temp.MakeFolder("target");
    const CurrentFolder there(source);
    for (const Name& name : names)
    {
        WriteBytes(name.bytes, "x");
        EXPECT_EQ(Copy(name.bytes, target + "\\"), 1) << name.bytes;
    }
    EXPECT_EQ(StoredNames(target, L"").size(), names.size());
    EXPECT_EQ(TempFolder::Listing(target), TempFolder::Listing(source));
}

TEST_F(CodePageFiles, GoBesideAFolderThatEndsInNoSeparatorOfItsOwn)
{
    const std::string source = temp.MakeFolder("source");
    WriteBytes(source + "\\a.txt", "x");
    for (const Name& name : names)
    {
        SCOPED_TRACE(name.bytes);
        const std::string target = temp.MakeFolder(name.bytes);
        EXPECT_EQ(Copy(source + "\\a.txt", target), 1);
        EXPECT_EQ(TempFolder::Listing(target), "");
        EXPECT_EQ(ReadBytes(target + "a.txt"), "x");
    }
}

TEST_F(CodePageFiles, HaveTheStartUpFileWithTheFoldersNameToTheByte)
{
    for (const Name& name : names)
    {
        // With another character behind it, and then a separator: what a name ends in counts by itself.
        for (const char* const pszBehind : {"x", "x\\", "x/"})
        {
            SCOPED_TRACE(name.bytes + pszBehind);
            ASSERT_TRUE(::CreateDirectoryA((temp / name.bytes + "x").c_str(), nullptr) ||
                        ::GetLastError() == ERROR_ALREADY_EXISTS);
            const std::string path = MakeConfig(temp / name.bytes + "x\\embedch");
            EXPECT_EQ(tarn.Write_ch_config_File((temp / name.bytes + pszBehind).c_str()), 1);
            const std::string text = ReadBytes(path);
            EXPECT_EQ(text, FileModel(temp / name.bytes + "x"));
            EXPECT_NE(text.find("\\\\" + name.bytes + "x\\\\embedch\\\\lib\\\\libc;"),
                      std::string::npos);
            ::DeleteFileA(path.c_str());
        }
    }
}

// Without another character behind it, the last byte is taken for the separator that it looks like.
TEST_F(CodePageFiles, LoseTheLastByteOfAFolderThatLooksLikeASeparatorInTheStartUpFile)
{
    for (const Name& name : names)
    {
        SCOPED_TRACE(name.bytes);
        ASSERT_TRUE(::CreateDirectoryA((temp / name.bytes).c_str(), nullptr));
        const std::string path = MakeConfig(temp / name.bytes + "\\embedch");
        EXPECT_EQ(tarn.Write_ch_config_File((temp / name.bytes + "\\").c_str()), 1);
        const std::string expected =
            name.EndsLikeASeparator() ? name.bytes.substr(0, name.bytes.size() - 1) : name.bytes;
        EXPECT_NE(ReadBytes(path).find("\\\\" + expected + "\\\\embedch\\\\lib\\\\libc;"),
                  std::string::npos);
        EXPECT_EQ(ReadBytes(path), FileModel(temp / name.bytes));
    }
}

TEST_F(CodePageFiles, AreQueuedForTheNextLogOnAsTheyAreStored)
{
    const RegistrySandbox sandbox;
    ASSERT_TRUE(MakeKey(kRunOnce));
    for (const Name& name : names)
    {
        SCOPED_TRACE(name.bytes);
        const std::string command = "\"C:\\" + name.bytes + "\\a.exe\" " + name.bytes;
        EXPECT_EQ(tarn.PutInRunOnce(name.bytes.c_str(), command.c_str()), 1);
        EXPECT_EQ(ReadValue(kRunOnce, name.bytes.c_str()).bytes, command + '\0');
        WCHAR szWide[64] = L"";
        DWORD cb = sizeof(szWide);
        EXPECT_EQ(::RegGetValueW(HKEY_CURRENT_USER,
                                 L"Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce",
                                 name.wide.c_str(), RRF_RT_REG_SZ, nullptr, szWide, &cb),
                  ERROR_SUCCESS);
        EXPECT_EQ(std::wstring(szWide), L"\"C:\\" + name.wide + L"\\a.exe\" " + name.wide);
    }
}

TEST_F(CodePageFiles, AreTakenApartAtSeparatorsOnly)
{
    for (const Name& name : names)
    {
        SCOPED_TRACE(name.bytes);
        const std::string folder = "C:\\" + name.bytes;
        for (const std::string& file : {name.bytes, name.bytes + ".txt", "a" + name.bytes})
        {
            EXPECT_EQ(FileNamePart((folder + "\\" + file).c_str()).GetString(), file);
            EXPECT_EQ(FileNamePart((folder + "/" + file).c_str()).GetString(), file);
            EXPECT_EQ(FileNamePart(file.c_str()).GetString(), file);
        }
        EXPECT_EQ(FileNamePart((folder + "\\").c_str()).GetString(), std::string());
        // The last byte alone decides, whatever it belongs to.
        EXPECT_EQ(AddTrailingSeparator(folder.c_str()).GetString(),
                  folder + (name.EndsLikeASeparator() ? "" : "\\"));
        EXPECT_EQ(AddTrailingSeparator((folder + "\\").c_str()).GetString(), folder + "\\");
    }
}

TEST_F(CodePageFiles, AreTextsWhoseSeparatorsAreFoundCharacterByCharacter)
{
    for (const Name& name : names)
    {
        SCOPED_TRACE(name.bytes);
        const std::string text = name.bytes + "\\" + name.bytes;
        const CString str(text.c_str());
        EXPECT_EQ(str.Find('\\'), static_cast<int>(name.bytes.size()));
        EXPECT_EQ(str.ReverseFind('\\'), static_cast<int>(name.bytes.size()));
        CString strDoubled(str);
        EXPECT_EQ(strDoubled.Replace("\\", "\\\\"), 1);
        EXPECT_EQ(strDoubled.GetString(), name.bytes + "\\\\" + name.bytes);
        EXPECT_EQ(CString(str).Replace("|", ":"), 0);
    }
}

// Bytes of other alphabets have no place in an address.
TEST_F(CodePageFiles, AreNoAddresses)
{
    for (const Name& name : names)
    {
        std::string address = "a" + name.bytes + "@example.com";
        const std::string before = address;
        char szMessage[80] = "";
        int nPosition = 0;
        EXPECT_EQ(tarn.VerifyEmail(&address[0], &nPosition, szMessage), 0);
        EXPECT_STREQ(szMessage, "invalid character in email.");
        EXPECT_EQ(address, before);
    }
}
