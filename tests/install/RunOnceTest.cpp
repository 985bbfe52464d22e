// PutInRunOnce of the built DLL, read back from the registry.
#include "tests/support/CleanFault.h"
#include "tests/support/CodePage932.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/RegistrySandbox.h"
#include "tests/support/UsersSettings.h"

#include <gtest/gtest.h>

#include <aclapi.h>

#include <string>

namespace
{
constexpr char kRunOnce[] = "Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce";
constexpr char kRun[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";

void SetValue(const char* pszKey, const char* pszName, DWORD nType, const std::string& bytes)
{
    ASSERT_EQ(::RegSetKeyValueA(HKEY_CURRENT_USER, pszKey, pszName, nType, bytes.data(),
                                static_cast<DWORD>(bytes.size())),
              ERROR_SUCCESS);
}

DWORD CountValues(const char* pszKey)
{
    HKEY hKey = nullptr;
    DWORD nValues = 0;
    if (::RegOpenKeyExA(HKEY_CURRENT_USER, pszKey, 0, KEY_READ, &hKey) != ERROR_SUCCESS)
        return 0;
    ::RegQueryInfoKeyA(hKey, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &nValues,
                       nullptr, nullptr, nullptr, nullptr);
    ::RegCloseKey(hKey);
    return nValues;
}

void ExpectStored(const char* pszName, const std::string& command)
{
    const RegistryValue value = ReadValue(kRunOnce, pszName);
    ASSERT_TRUE(value.bExists);
    EXPECT_EQ(value.nType, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(value.bytes.size(), command.size() + 1);
    EXPECT_EQ(value.bytes, command + '\0');
}

// What the library asked of the system, while patches lead here.
HKEY g_hRoot = nullptr;
std::string g_subKey;
DWORD g_nOptions = 99;
REGSAM g_nAccess = 0;
HKEY g_hOpened = nullptr;
int g_nOpened = 0;
int g_nSet = 0;
DWORD g_nType = 0;
DWORD g_cbData = 0;
int g_nClosed = 0;
LSTATUS g_nOpenResult = ERROR_SUCCESS;
LSTATUS g_nSetResult = ERROR_SUCCESS;
LSTATUS g_nCloseResult = ERROR_SUCCESS;

LSTATUS WINAPI RecordingOpen(HKEY hRoot, LPCSTR pszSubKey, DWORD nOptions, REGSAM nAccess,
                             PHKEY phKey)
{
    g_hRoot = hRoot;
    g_subKey = pszSubKey;
    g_nOptions = nOptions;
    g_nAccess = nAccess;
    if (g_nOpenResult != ERROR_SUCCESS)
    {
        *phKey = reinterpret_cast<HKEY>(INT_PTR{0x7001}); // nobody says what it is then
        return g_nOpenResult;
    }
    const LSTATUS nResult = ::RegOpenKeyExA(hRoot, pszSubKey, nOptions, nAccess, phKey);
    if (nResult == ERROR_SUCCESS)
    {
        g_hOpened = *phKey;
        ++g_nOpened;
    }
    return nResult;
}

LSTATUS WINAPI RecordingSet(HKEY hKey, LPCSTR pszName, DWORD nReserved, DWORD nType,
                            const BYTE* pData, DWORD cbData)
{
    ++g_nSet;
    EXPECT_EQ(hKey, g_hOpened);
    EXPECT_EQ(nReserved, 0U);
    g_nType = nType;
    g_cbData = cbData;
    if (g_nSetResult != ERROR_SUCCESS)
        return g_nSetResult;
    return ::RegSetValueExA(hKey, pszName, nReserved, nType, pData, cbData);
}

LSTATUS WINAPI RecordingClose(HKEY hKey)
{
    ++g_nClosed;
    EXPECT_EQ(hKey, g_hOpened);
    const LSTATUS nResult = ::RegCloseKey(hKey);
    EXPECT_EQ(nResult, ERROR_SUCCESS);
    return g_nCloseResult;
}

class Recorder
{
public:
    explicit Recorder(HMODULE hTarn)
        : m_open(hTarn, "RegOpenKeyExA", reinterpret_cast<void*>(&RecordingOpen)),
          m_set(hTarn, "RegSetValueExA", reinterpret_cast<void*>(&RecordingSet)),
          m_close(hTarn, "RegCloseKey", reinterpret_cast<void*>(&RecordingClose))
    {
        g_nOpened = g_nSet = g_nClosed = 0;
        g_nOpenResult = g_nSetResult = g_nCloseResult = ERROR_SUCCESS;
        g_hOpened = nullptr;
        EXPECT_TRUE(m_open.IsActive());
        EXPECT_TRUE(m_set.IsActive());
        EXPECT_TRUE(m_close.IsActive());
    }

private:
    ImportPatch m_open;
    ImportPatch m_set;
    ImportPatch m_close;
};

class RunOnce : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(tarn.IsComplete());
        ASSERT_TRUE(MakeKey(kRunOnce));
    }
    void ExpectToWork() const
    {
        EXPECT_EQ(tarn.PutInRunOnce("After all", "works"), 1);
        ExpectStored("After all", "works");
        EXPECT_EQ(::RegDeleteKeyValueA(HKEY_CURRENT_USER, kRunOnce, "After all"), ERROR_SUCCESS);
    }

    const LoadedTarn tarn;
    const RegistrySandbox sandbox;
};
} // namespace

TEST_F(RunOnce, StoresTheCommandWithItsTerminatingZero)
{
    EXPECT_EQ(tarn.PutInRunOnce("First run", "\"C:\\App\\first run.exe\" /quiet"), 1);
    ExpectStored("First run", "\"C:\\App\\first run.exe\" /quiet");
    EXPECT_EQ(CountValues(kRunOnce), 1U);
}

TEST_F(RunOnce, TakesANullOrEmptyNameForTheKeysDefaultValue)
{
    EXPECT_EQ(tarn.PutInRunOnce(nullptr, "by null"), 1);
    ExpectStored(nullptr, "by null");
    ExpectStored("", "by null");
    EXPECT_EQ(tarn.PutInRunOnce("", "by empty name"), 1);
    ExpectStored(nullptr, "by empty name");
    EXPECT_EQ(CountValues(kRunOnce), 1U);
}

TEST_F(RunOnce, StoresAnEmptyCommandAsOneZeroByte)
{
    EXPECT_EQ(tarn.PutInRunOnce("Empty", ""), 1);
    ExpectStored("Empty", "");
    EXPECT_EQ(ReadValue(kRunOnce, "Empty").bytes.size(), 1U);
}

TEST_F(RunOnce, KeepsOnlyTheSecondCommandOfAName)
{
    EXPECT_EQ(tarn.PutInRunOnce("Name", "a first, longer command"), 1);
    EXPECT_EQ(tarn.PutInRunOnce("Name", "second"), 1);
    ExpectStored("Name", "second");
    EXPECT_EQ(tarn.PutInRunOnce("NAME", "third"), 1);
    ExpectStored("Name", "third");
    EXPECT_EQ(CountValues(kRunOnce), 1U);
}

TEST_F(RunOnce, ReplacesAValueOfAnotherType)
{
    static constexpr DWORD kTypes[] = {REG_DWORD, REG_BINARY, REG_EXPAND_SZ, REG_MULTI_SZ};
    for (const DWORD nType : kTypes)
    {
        SetValue(kRunOnce, "Name", nType, std::string(4, '\0'));
        EXPECT_EQ(tarn.PutInRunOnce("Name", "command"), 1);
        ExpectStored("Name", "command");
    }
}

TEST_F(RunOnce, LeavesOtherValuesAndKeysAlone)
{
    ASSERT_TRUE(MakeKey(kRun));
    SetValue(kRunOnce, "Other", REG_DWORD, "1234");
    EXPECT_EQ(tarn.PutInRunOnce("Name", "command"), 1);
    EXPECT_EQ(ReadValue(kRunOnce, "Other").bytes, "1234");
    EXPECT_EQ(ReadValue(kRunOnce, "Other").nType, static_cast<DWORD>(REG_DWORD));
    EXPECT_EQ(CountValues(kRunOnce), 2U);
    EXPECT_EQ(CountValues(kRun), 0U);
}

TEST_F(RunOnce, StoresEnvironmentReferencesAsTyped)
{
    EXPECT_EQ(tarn.PutInRunOnce("%TEMP%", "%SystemRoot%\\notepad.exe %1 %%"), 1);
    ExpectStored("%TEMP%", "%SystemRoot%\\notepad.exe %1 %%");
}

TEST_F(RunOnce, StoresTextsThatTheSystemGivesAMeaning)
{
    // "!" and "*" in front of a name are for the system that runs the command.
    for (const char* const pszName : {"!Name", "*Name", "a\\b", " ", "(Default)", "a=b\tc"})
    {
        EXPECT_EQ(tarn.PutInRunOnce(pszName, "line\r\nbreak \"quoted\""), 1) << pszName;
        ExpectStored(pszName, "line\r\nbreak \"quoted\"");
    }
}

TEST_F(RunOnce, StoresAVeryLongCommandWhole)
{
    const std::string command = "C:\\x.exe " + std::string(100000, 'y') + "z";
    EXPECT_EQ(tarn.PutInRunOnce("Long", command.c_str()), 1);
    ExpectStored("Long", command);
}

TEST_F(RunOnce, FailsWhenTheNameIsTooLongForTheRegistry)
{
    const std::string name(40000, 'n');
    ExpectCleanFault(
        0, [&] { return tarn.PutInRunOnce(name.c_str(), "command"); },
        [&] {
            EXPECT_EQ(CountValues(kRunOnce), 0U);
            ExpectToWork();
        });
}

TEST_F(RunOnce, DoesNotMakeAMissingKey)
{
    const auto put = [&] { return tarn.PutInRunOnce("Name", "command"); };
    const auto makeAndPut = [&] {
        ASSERT_TRUE(MakeKey(kRunOnce));
        ExpectToWork();
    };
    ASSERT_EQ(::RegDeleteKeyA(HKEY_CURRENT_USER, kRunOnce), ERROR_SUCCESS);
    ExpectCleanFault(0, put, [&] {
        EXPECT_FALSE(KeyExists(kRunOnce));
        makeAndPut();
    });
    ASSERT_EQ(::RegDeleteTreeA(HKEY_CURRENT_USER, "Software"), ERROR_SUCCESS);
    ExpectCleanFault(0, put, [&] {
        EXPECT_FALSE(KeyExists("Software"));
        makeAndPut();
    });
}

TEST_F(RunOnce, DoesNotLookAtTheCommandWhenTheKeyIsMissing)
{
    ASSERT_EQ(::RegDeleteKeyA(HKEY_CURRENT_USER, kRunOnce), ERROR_SUCCESS);
    EXPECT_EQ(tarn.PutInRunOnce("Name", nullptr), 0);
}

TEST_F(RunOnce, OpensTheUsersKeyWithFullAccessSetsTheValueAndClosesIt)
{
    const Recorder recorder(tarn.Module());
    EXPECT_EQ(tarn.PutInRunOnce("Name", "command"), 1);
    EXPECT_EQ(g_hRoot, HKEY_CURRENT_USER);
    EXPECT_EQ(g_subKey, "Software\\Microsoft\\Windows\\CurrentVersion\\Runonce");
    EXPECT_EQ(g_nOptions, 0U);
    EXPECT_EQ(g_nAccess, static_cast<REGSAM>(0xF003F));
    EXPECT_EQ(g_nOpened, 1);
    EXPECT_EQ(g_nSet, 1);
    EXPECT_EQ(g_nType, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(g_cbData, sizeof("command")) << "the system would add a zero that is missing";
    EXPECT_EQ(g_nClosed, 1);
}

TEST_F(RunOnce, FailsWhenTheKeyCannotBeOpened)
{
    for (const LSTATUS nError : {ERROR_ACCESS_DENIED, ERROR_FILE_NOT_FOUND, ERROR_KEY_DELETED})
    {
        SCOPED_TRACE(nError);
        ExpectCleanFault(
            0,
            [&] {
                const Recorder recorder(tarn.Module());
                g_nOpenResult = nError;
                const int nPut = tarn.PutInRunOnce("Name", "command");
                EXPECT_EQ(g_nSet, 0);
                EXPECT_EQ(g_nClosed, 0) << "there is no key to close";
                EXPECT_EQ(CountValues(kRunOnce), 0U);
                return nPut;
            },
            [&] { ExpectToWork(); });
    }
}

TEST_F(RunOnce, FailsAndClosesTheKeyWhenTheValueCannotBeSet)
{
    ExpectCleanFault(
        0,
        [&] {
            const Recorder recorder(tarn.Module());
            g_nSetResult = ERROR_ACCESS_DENIED;
            const int nPut = tarn.PutInRunOnce("Name", "command");
            EXPECT_EQ(g_nOpened, 1);
            EXPECT_EQ(g_nSet, 1);
            EXPECT_EQ(g_nClosed, 1);
            EXPECT_EQ(CountValues(kRunOnce), 0U);
            return nPut;
        },
        [&] { ExpectToWork(); });
}

// No system of today says so for a text that fits into memory: the answers are made up.
TEST_F(RunOnce, FailsAndKeepsTheOldValueWhenTheNewOneIsTooLarge)
{
    SetValue(kRunOnce, "Name", REG_SZ, std::string("old") + '\0');
    const std::string command(100000, 'y');
    for (const LSTATUS nError :
         {ERROR_NO_SYSTEM_RESOURCES, ERROR_NOT_ENOUGH_QUOTA, ERROR_INVALID_PARAMETER})
    {
        SCOPED_TRACE(nError);
        ExpectCleanFault(
            0,
            [&] {
                const Recorder recorder(tarn.Module());
                g_nSetResult = nError;
                const int nPut = tarn.PutInRunOnce("Name", command.c_str());
                EXPECT_EQ(g_cbData, command.size() + 1);
                EXPECT_EQ(g_nSet, 1);
                EXPECT_EQ(g_nClosed, 1);
                return nPut;
            },
            [&] { ExpectToWork(); });
    }
    ExpectStored("Name", "old");
    EXPECT_EQ(tarn.PutInRunOnce("Name", command.c_str()), 1);
    ExpectStored("Name", command);
}

TEST_F(RunOnce, DoesNotCareWhetherTheKeyCouldBeClosed)
{
    ExpectCleanFault(
        1,
        [&] {
            const Recorder recorder(tarn.Module());
            g_nCloseResult = ERROR_INVALID_HANDLE;
            const int nPut = tarn.PutInRunOnce("Name", "command");
            EXPECT_EQ(g_nClosed, 1);
            ExpectStored("Name", "command");
            return nPut;
        },
        [&] { ExpectToWork(); });
}

// The right to set values alone is not enough, although nothing else is done with the key.
TEST_F(RunOnce, FailsWhenTheUserMayNotOpenTheKeyWithFullAccess)
{
    HKEY hKey = nullptr;
    ASSERT_EQ(::RegOpenKeyExA(HKEY_CURRENT_USER, kRunOnce, 0, KEY_ALL_ACCESS, &hKey),
              ERROR_SUCCESS);
    SID_IDENTIFIER_AUTHORITY world = {SECURITY_WORLD_SID_AUTHORITY};
    PSID pEveryone = nullptr;
    ASSERT_TRUE(
        ::AllocateAndInitializeSid(&world, 1, SECURITY_WORLD_RID, 0, 0, 0, 0, 0, 0, 0, &pEveryone));
    alignas(ACL) BYTE aclBytes[256] = {};
    auto* const pAcl = reinterpret_cast<ACL*>(aclBytes);
    ASSERT_TRUE(::InitializeAcl(pAcl, sizeof(aclBytes), ACL_REVISION));
    ASSERT_TRUE(::AddAccessAllowedAce(pAcl, ACL_REVISION, KEY_READ | KEY_SET_VALUE, pEveryone));
    SECURITY_DESCRIPTOR descriptor;
    ASSERT_TRUE(::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    ASSERT_TRUE(::SetSecurityDescriptorDacl(&descriptor, TRUE, pAcl, FALSE));
    ASSERT_EQ(::RegSetKeySecurity(hKey, DACL_SECURITY_INFORMATION, &descriptor), ERROR_SUCCESS);
    ::FreeSid(pEveryone);

    SetValue(kRunOnce, "Allowed", REG_SZ, "x"); // so it is the asked-for access that fails
    ExpectCleanFault(
        0, [&] { return tarn.PutInRunOnce("Name", "command"); },
        [] { EXPECT_FALSE(ReadValue(kRunOnce, "Name").bExists); });

    // The key must be deletable again; its owner may always say so.
    ASSERT_TRUE(::SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE));
    EXPECT_EQ(::RegSetKeySecurity(hKey, DACL_SECURITY_INFORMATION, &descriptor), ERROR_SUCCESS);
    ::RegCloseKey(hKey);
    ExpectToWork();
}

TEST_F(RunOnce, LeavesNoKeyOpen)
{
    const Recorder recorder(tarn.Module());
    const auto callAll = [&] {
        g_nSetResult = ERROR_SUCCESS;
        EXPECT_EQ(tarn.PutInRunOnce("Name", "command"), 1);
        g_nSetResult = ERROR_ACCESS_DENIED;
        EXPECT_EQ(tarn.PutInRunOnce("Name", "command"), 0);
    };
    callAll(); // what is made on first use
    const int nBefore = CountOpenHandles();
    for (int i = 0; i < 5; ++i)
        callAll();
    EXPECT_EQ(CountOpenHandles(), nBefore);
    HKEY hKey = nullptr;
    ASSERT_EQ(::RegOpenKeyExA(HKEY_CURRENT_USER, kRunOnce, 0, KEY_READ, &hKey), ERROR_SUCCESS);
    EXPECT_EQ(CountOpenHandles(), nBefore + 1) << "the count counts nothing";
    ::RegCloseKey(hKey);
}

TEST_F(RunOnce, LeavesTheCallersStateAsItWas)
{
    const CallersState before = CallersState::Now();
    EXPECT_EQ(tarn.PutInRunOnce("Name", "command"), 1);
    ASSERT_EQ(::RegDeleteKeyA(HKEY_CURRENT_USER, kRunOnce), ERROR_SUCCESS);
    EXPECT_EQ(tarn.PutInRunOnce("Name", "command"), 0);
    EXPECT_EQ(CallersState::Now(), before);
}

// Once outside the sandbox, where an installer works.
TEST(RunOnceOfTheUser, GetsTheValue)
{
    if (!MayTouchUsersSettings())
        GTEST_SKIP() << "the user's settings are left alone";
    if (!KeyExists(kRunOnce))
        GTEST_SKIP() << "this user has no RunOnce key";
    const std::string name = "Tarn test " + std::to_string(::GetCurrentProcessId());
    const LoadedTarn tarn;
    ASSERT_TRUE(tarn.IsComplete());
    EXPECT_EQ(tarn.PutInRunOnce(name.c_str(), "cmd.exe /c exit"), 1);
    ExpectStored(name.c_str(), "cmd.exe /c exit");
    EXPECT_EQ(::RegDeleteKeyValueA(HKEY_CURRENT_USER, kRunOnce, name.c_str()), ERROR_SUCCESS);
}

class RunOnceCodePage932 : public CodePage932
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(tarn.IsComplete());
        CodePage932::SetUp();
    }

    const LoadedTarn tarn;
    const RegistrySandbox sandbox;
};

TEST_F(RunOnceCodePage932, StoresDoubleByteTexts)
{
    ASSERT_TRUE(MakeKey(kRunOnce));
    EXPECT_EQ(tarn.PutInRunOnce("\x95\x5C", "C:\\\x83\x5C\\\x94\x5C.exe"), 1);
    ExpectStored("\x95\x5C", "C:\\\x83\x5C\\\x94\x5C.exe");
}
