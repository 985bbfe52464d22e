// The built DLL's exports on a second thread, and on several at once.
#include "include/tarn.h"
#include "tests/install/ChrcModel.h"
#include "tests/support/CleanFault.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/RegistrySandbox.h"
#include "tests/support/TempFolder.h"
#include "tests/support/ThreadWithADialog.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <commdlg.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

using namespace window_driver;

namespace
{
constexpr char kRunOnce[] = "Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce";
constexpr LONG kThreads = 4;
constexpr int kRounds = 25;

// Where the threads wait for one another, each time that all of them have come.
struct Meeting
{
    volatile LONG nCame;
    volatile LONG bMissed; // somebody waited in vain; nobody does again

    void Wait()
    {
        const LONG nNumber = ::InterlockedIncrement(&nCame);
        const LONG nAll = (nNumber + kThreads - 1) / kThreads * kThreads;
        if (!bMissed && !WaitFor([this, nAll] { return nCame >= nAll || bMissed; }))
            ::InterlockedExchange(&bMissed, 1);
    }
};
Meeting g_copying;
Meeting g_setting;
Meeting g_writing;
Meeting g_verifying;
constexpr Meeting* kMeetings[] = {&g_copying, &g_setting, &g_writing, &g_verifying};

// All threads are inside of the same export here.
BOOL WINAPI CopyTogether(LPCSTR pszFrom, LPCSTR pszTo, BOOL bFailIfExists)
{
    g_copying.Wait();
    return ::CopyFileA(pszFrom, pszTo, bFailIfExists);
}

LSTATUS WINAPI SetTogether(HKEY hKey, LPCSTR pszName, DWORD nReserved, DWORD nType,
                           const BYTE* pData, DWORD cbData)
{
    g_setting.Wait();
    return ::RegSetValueExA(hKey, pszName, nReserved, nType, pData, cbData);
}

BOOL WINAPI WriteTogether(HANDLE hFile, LPCVOID pData, DWORD cb, LPDWORD pcbWritten,
                          LPOVERLAPPED pOverlapped)
{
    g_writing.Wait();
    return ::WriteFile(hFile, pData, cb, pcbWritten, pOverlapped);
}

// What one thread works on; nobody else does.
struct Place
{
    Place(const TempFolder& folder, int nNumber)
        : name("place " + std::to_string(nNumber)),
          source(folder.MakeFolder(name) + "\\" + name + ".txt"),
          target(folder.MakeFolder(name + "\\target")), app(folder.MakeFolder(name + "\\App")),
          local(600 + 100 * static_cast<std::size_t>(nNumber), static_cast<char>('a' + nNumber))
    {
        chrc = folder.MakeFolder(name + "\\App\\embedch\\config") + "\\chrc";
    }

    std::string name;
    std::string source;
    std::string target;
    std::string app;
    std::string chrc;
    std::string local; // part of an address, too long for the library's stack
};

// Each returns an empty text, or what was wrong.
std::string Copy(const LoadedTarn& tarn, const Place& place, const std::string& content)
{
    WriteBytes(place.source, content);
    if (tarn.FileCopy(place.source.c_str(), (place.target + "\\").c_str()) != 1)
        return "FileCopy failed";
    return ReadBytes(place.target + "\\" + place.name + ".txt") == content ? "" : "wrong copy";
}

std::string Put(const LoadedTarn& tarn, const Place& place, const std::string& command)
{
    if (tarn.PutInRunOnce(place.name.c_str(), command.c_str()) != 1)
        return "PutInRunOnce failed";
    const RegistryValue value = ReadValue(kRunOnce, place.name.c_str());
    return value.nType == REG_SZ && value.bytes == command + '\0' ? "" : "wrong value";
}

std::string Write(const LoadedTarn& tarn, const Place& place)
{
    ::DeleteFileA(place.chrc.c_str());
    if (tarn.Write_ch_config_File(place.app.c_str()) != 1)
        return "Write_ch_config_File failed";
    return ReadBytes(place.chrc) == FileModel(place.app) ? "" : "wrong start-up file";
}

std::string Verify(const LoadedTarn& tarn, const Place& place)
{
    std::string right = "  " + place.local + "@b.c ";
    std::string wrong = place.local + "+@b.c";
    char szMessage[80] = "";
    int nPosition = 0;
    if (tarn.VerifyEmail(&right[0], &nPosition, szMessage) != 1 || nPosition != -1 ||
        szMessage != std::string() || right.c_str() != place.local + "@b.c")
        return "wrong about a right address";
    if (tarn.VerifyEmail(&wrong[0], &nPosition, szMessage) != 0 ||
        nPosition != static_cast<int>(place.local.size()) ||
        szMessage != std::string("invalid character in email."))
        return "wrong about a wrong address";
    return "";
}

struct Work
{
    const LoadedTarn* pTarn;
    const Place* pPlace;
    std::string fault; // the first one
};

void RunRounds(Work& work)
{
    const auto note = [&work](const std::string& fault) {
        if (work.fault.empty())
            work.fault = fault;
    };
    // To the end in any case: the other threads wait.
    for (int i = 0; i < kRounds; ++i)
    {
        const std::string text = work.pPlace->name + std::string(static_cast<std::size_t>(i), '.');
        note(Copy(*work.pTarn, *work.pPlace, text));
        note(Put(*work.pTarn, *work.pPlace, text));
        note(Write(*work.pTarn, *work.pPlace));
        g_verifying.Wait();
        for (int n = 0; n < 50; ++n)
            note(Verify(*work.pTarn, *work.pPlace));
    }
}

TEST(Threads, SeveralAtOnceEachGetTheirOwnResults)
{
    const LoadedTarn tarn;
    ASSERT_TRUE(tarn.IsComplete());
    const RegistrySandbox sandbox;
    ASSERT_TRUE(MakeKey(kRunOnce));
    const TempFolder folder;
    std::vector<Place> places;
    for (int i = 0; i < kThreads; ++i)
        places.emplace_back(folder, i);
    ExpectCleanFault(
        std::string(),
        [&] {
            for (Meeting* const pMeeting : kMeetings)
                pMeeting->nCame = 0;
            const ImportPatch copy(tarn.Module(), "CopyFileA",
                                   reinterpret_cast<void*>(&CopyTogether));
            const ImportPatch set(tarn.Module(), "RegSetValueExA",
                                  reinterpret_cast<void*>(&SetTogether));
            const ImportPatch write(tarn.Module(), "WriteFile",
                                    reinterpret_cast<void*>(&WriteTogether));
            EXPECT_TRUE(copy.IsActive() && set.IsActive() && write.IsActive());
            std::vector<Work> works;
            for (const Place& place : places)
                works.push_back({&tarn, &place, ""});
            {
                std::vector<std::unique_ptr<DriverThread>> threads;
                for (Work& work : works)
                    threads.push_back(std::make_unique<DriverThread>([&work] { RunRounds(work); }));
            }
            for (const Meeting* const pMeeting : kMeetings)
            {
                EXPECT_FALSE(pMeeting->bMissed) << "one thread keeps the others out";
                EXPECT_EQ(pMeeting->nCame, kThreads * kRounds);
            }
            std::string faults;
            for (const Work& work : works)
                faults += work.fault;
            return faults;
        },
        [&] {
            for (const Place& place : places)
            {
                EXPECT_EQ(Copy(tarn, place, "after"), "");
                EXPECT_EQ(Put(tarn, place, "after"), "");
                EXPECT_EQ(Write(tarn, place), "");
                EXPECT_EQ(Verify(tarn, place), "");
            }
        });
}

constexpr char kChosen[] = "C:\\folder\\chosen.lic";

BOOL APIENTRY Choose(LPOPENFILENAMEA pofn)
{
    ::lstrcpynA(pofn->lpstrFile, kChosen, static_cast<int>(pofn->nMaxFile));
    return TRUE;
}

FARPROC WINAPI FindChoose(HMODULE /*hModule*/, LPCSTR /*pszName*/)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&Choose));
}

// Every export once, on the calling thread; returns how many did what they should.
int CallAll(const LoadedTarn& tarn, const Place& place)
{
    const CallersState before = CallersState::Now();
    int nRight = 0;
    const auto note = [&](const char* pszExport, bool bRight) {
        EXPECT_TRUE(bRight) << pszExport;
        EXPECT_EQ(CallersState::Now(), before) << pszExport;
        nRight += bRight ? 1 : 0;
    };
    const std::string caption = "wait window of " + place.name;
    tarn.DoWaitDlgModless(nullptr, caption.c_str(), "x");
    HWND const hWnd = FindTopLevel(caption);
    note("DoWaitDlgModless", ::IsWindowVisible(hWnd) != FALSE);
    note("FileCopy", Copy(tarn, place, "text").empty());
    note("Write_ch_config_File", Write(tarn, place).empty());
    note("PutInRunOnce", Put(tarn, place, "command").empty());
    note("VerifyEmail", Verify(tarn, place).empty());
    char szFolder[] = "C:\\";
    char szTitle[] = "title";
    char szFile[TARN_OPEN_PATH_SIZE] = "";
    note("DoFileOpenDialog",
         tarn.DoFileOpenDialog(szFolder, szTitle, "All|*.*||", "lic", szFile) == 1 &&
             std::strcmp(szFile, kChosen) == 0);
    tarn.CloseWaitDlg();
    note("CloseWaitDlg", hWnd != nullptr && !::IsWindow(hWnd));
    return nRight;
}

TEST(Threads, ASecondOneCanCallEveryExportAfterTheFirst)
{
    constexpr int kExports = 7;
    // Stays loaded: under Wine, each time that it is loaded anew leaves a handle behind.
    ASSERT_NE(::LoadLibraryA("comdlg32.dll"), nullptr);
    const LoadedTarn tarn;
    ASSERT_TRUE(tarn.IsComplete());
    const ImportPatch dialog(tarn.Module(), "GetProcAddress", reinterpret_cast<void*>(&FindChoose));
    ASSERT_TRUE(dialog.IsActive());
    const RegistrySandbox sandbox;
    ASSERT_TRUE(MakeKey(kRunOnce));
    const TempFolder folder;
    const Place first(folder, 1);
    const Place second(folder, 2);
    EXPECT_EQ(CallAll(tarn, first), kExports);
    ExpectCleanFault(
        kExports,
        [&] {
            int nRight = 0;
            DriverThread other([&] { nRight = CallAll(tarn, second); });
            other.Join();
            return nRight;
        },
        [&] { EXPECT_EQ(CallAll(tarn, first), kExports); }, CostOfAThreadWithADialog());
}
} // namespace
