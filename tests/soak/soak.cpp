// soak.exe ROUNDS - whole installations, one after the other, through all exports of tarn.dll, with a
// user who closes the Open dialog. Prints what the process holds as the rounds go by; the exit code is
// 0 when every call did what it should and the figures stay flat.
//
// Wine's Open dialog leaves a handle and a few blocks of memory behind each time, whoever shows it. So
// what the system's dialog costs is measured without the library first, and is all that a round may
// cost. The library's own heap must not grow by a single block.
#include "include/tarn.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/NewHeap.h"
#include "tests/support/RegistrySandbox.h"
#include "tests/support/RoundCost.h"
#include "tests/support/TempFolder.h"
#include "tests/support/WindowDriver.h"

#include <windows.h>

#include <commdlg.h>
#include <psapi.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using namespace window_driver;

namespace
{
constexpr char kWaitCaption[] = "Tarn soak: please wait";
constexpr char kOpenCaption[] = "Tarn soak: choose a file";
constexpr char kRunOnce[] = "Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce";
constexpr int kFileNameEdit = 1148;
constexpr std::size_t kFileSize = 2 << 20;
constexpr int kFewestRounds = 20;
constexpr int kWarmUps = 10;
constexpr int kSystemDialogs = 10; // in each of the blocks of the measure
constexpr int kSamplesInABlock = 3;
constexpr long long kWorkingSetTolerance = 2 << 20; // in all blocks
// More than the system's dialog alone: one handle or block of memory in ten rounds would be noticed, and
// of GDI objects more than what comes with a theme, a dozen at a time.
constexpr double kTolerance = 0.1;
constexpr double kGdiTolerance = 15; // in a block of rounds
constexpr double kBlocksTolerance = 5;

int g_nWrong = 0;

void Check(bool bRight, int nRound, const char* pszWhat)
{
    if (bRight)
        return;
    std::printf("round %d: %s\n", nRound, pszWhat);
    ++g_nWrong;
}

// The user: whenever the Open dialog is there, types a name and confirms. One thread for all rounds.
class User
{
public:
    explicit User(const std::string& name) : m_name(name), m_thread([this] { WaitOnTheDialog(); })
    {
    }
    ~User() { ::InterlockedExchange(&m_bGone, TRUE); }
    User(const User&) = delete;
    User& operator=(const User&) = delete;

private:
    void WaitOnTheDialog()
    {
        while (m_bGone == FALSE)
        {
            HWND const hDialog = FindTopLevel(kOpenCaption);
            if (hDialog != nullptr && ::IsWindowVisible(hDialog))
            {
                ::SendDlgItemMessageA(hDialog, kFileNameEdit, WM_SETTEXT, 0,
                                      reinterpret_cast<LPARAM>(m_name.c_str()));
                ::PostMessageA(hDialog, WM_COMMAND, IDOK, 0);
                WaitFor([hDialog] { return !::IsWindow(hDialog); });
            }
            ::Sleep(5);
        }
    }

    std::string m_name;
    volatile LONG m_bGone = FALSE;
    DriverThread m_thread; // last: it uses the others
};

// The context that the library's manifest makes, and the dialog runs in.
class LibrarysContext
{
public:
    LibrarysContext()
    {
        const std::string path = LoadedTarn::Path();
        ACTCTXA actctx = {};
        actctx.cbSize = sizeof(actctx);
        actctx.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID;
        actctx.lpSource = path.c_str();
        actctx.lpResourceName = MAKEINTRESOURCEA(3);
        m_hActCtx = ::CreateActCtxA(&actctx);
        m_bActive = ::ActivateActCtx(m_hActCtx, &m_nCookie);
    }
    ~LibrarysContext()
    {
        if (m_bActive)
            ::DeactivateActCtx(0, m_nCookie);
        ::ReleaseActCtx(m_hActCtx);
    }
    LibrarysContext(const LibrarysContext&) = delete;
    LibrarysContext& operator=(const LibrarysContext&) = delete;
    bool IsActive() const { return m_bActive != FALSE; }

private:
    HANDLE m_hActCtx = INVALID_HANDLE_VALUE;
    ULONG_PTR m_nCookie = 0;
    BOOL m_bActive = FALSE;
};

std::size_t WorkingSet()
{
    PROCESS_MEMORY_COUNTERS counters = {};
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof(counters));
    return counters.WorkingSetSize;
}

struct Sample
{
    int nRound = 0;
    ResourceCount count;
    std::size_t cbWorkingSet = 0;
    std::size_t nOwnBlocks = 0; // in the library's heap
};

class Installation
{
public:
    Installation() : m_currentFolder(m_folder.Path())
    {
        std::string bytes(kFileSize, '\0');
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<char>(i * 31 + i / 4096);
        m_source = m_folder / "package.dat";
        WriteBytes(m_source, bytes);
        m_target = m_folder.MakeFolder("target");
        m_folder.MakeFolder("target\\embedch");
        m_folder.MakeFolder("target\\embedch\\config");
        m_copy = m_target + "\\package.dat";
        HKEY hKey = nullptr;
        ::RegCreateKeyExA(HKEY_CURRENT_USER, kRunOnce, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                          &hKey, nullptr);
        ::RegCloseKey(hKey);
    }

    // False when the library cannot be loaded, or has no heap of its own.
    bool IsComplete()
    {
        const NewHeap heap;
        char szAddress[] = "user@example.com";
        char szMessage[TARN_EMAIL_MESSAGE_SIZE] = "";
        int nPosition = 0;
        if (!m_tarn.IsComplete() || m_tarn.VerifyEmail(szAddress, &nPosition, szMessage) != 1)
            return false;
        m_hHeap = heap.Find();
        return m_hHeap != nullptr;
    }

    Sample Measure(int nRound) const
    {
        return {nRound, ResourceCount::Now(), WorkingSet(), ResourceCount::BlocksIn(m_hHeap)};
    }

    // What a round does last, without the library.
    void ShowSystemDialog()
    {
        const LibrarysContext context;
        Check(context.IsActive(), 0, "no context");
        char szPath[MAX_PATH] = "";
        OPENFILENAMEA ofn = {};
        ofn.lStructSize = sizeof(ofn);
        ofn.hwndOwner = ::GetActiveWindow();
        ofn.lpstrFilter = "All\0*.*\0";
        ofn.lpstrFile = szPath;
        ofn.nMaxFile = sizeof(szPath);
        ofn.lpstrInitialDir = m_folder.Path().c_str();
        ofn.lpstrTitle = kOpenCaption;
        ofn.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST;
        Check(::GetOpenFileNameA(&ofn) != FALSE, 0, "the system's dialog");
    }

    // In the order in which an installer does it. Every 50th round reads back what was written.
    void Run(int nRound)
    {
        const bool bReadBack = nRound % 50 == 1;
        const std::string chrc = m_target + "\\embedch\\config\\chrc";
        m_tarn.DoWaitDlgModless(m_host.Handle(), kWaitCaption, "Please wait.");
        HWND const hWait = FindTopLevel(kWaitCaption);
        Check(hWait != nullptr && ::IsWindowVisible(hWait), nRound, "no wait window");
        PumpUntil([] { return true; });

        Check(m_tarn.FileCopy(m_source.c_str(), (m_target + "\\").c_str()) == 1, nRound,
              "FileCopy");
        if (bReadBack)
            Check(ReadBytes(m_copy) == ReadBytes(m_source), nRound, "the copy differs");
        Check(::DeleteFileA(m_copy.c_str()) != FALSE, nRound, "there is no copy");

        Check(m_tarn.Write_ch_config_File(m_target.c_str()) == 1, nRound, "Write_ch_config_File");
        if (bReadBack)
            Check(ReadBytes(chrc).size() > 1471, nRound, "the start-up file is too short");
        Check(::DeleteFileA(chrc.c_str()) != FALSE, nRound, "there is no start-up file");

        const std::string command = "\"C:\\App\\first run.exe\" " + std::to_string(nRound);
        Check(m_tarn.PutInRunOnce("Tarn soak", command.c_str()) == 1, nRound, "PutInRunOnce");
        Check(ReadValue(kRunOnce, "Tarn soak").bytes == command + '\0', nRound,
              "the value differs");

        m_tarn.CloseWaitDlg();
        Check(!::IsWindow(hWait), nRound, "the wait window is still there");

        char szAddress[64] = " user.name@example.com ";
        char szMessage[TARN_EMAIL_MESSAGE_SIZE] = "";
        int nPosition = 0;
        Check(m_tarn.VerifyEmail(szAddress, &nPosition, szMessage) == 1 &&
                  std::strcmp(szAddress, "user.name@example.com") == 0,
              nRound, "VerifyEmail of a good address");
        std::strcpy(szAddress, "us er@example.com");
        Check(m_tarn.VerifyEmail(szAddress, &nPosition, szMessage) == 0 && nPosition == 2, nRound,
              "VerifyEmail of a bad address");

        char szPath[TARN_OPEN_PATH_SIZE] = "";
        std::string folder = m_folder.Path();
        char szTitle[sizeof(kOpenCaption)];
        std::memcpy(szTitle, kOpenCaption, sizeof(kOpenCaption));
        Check(m_tarn.DoFileOpenDialog(&folder[0], szTitle, "All|*.*||", nullptr, szPath) == 1 &&
                  ::lstrcmpiA(szPath, m_source.c_str()) == 0,
              nRound, "DoFileOpenDialog");
    }

private:
    const TempFolder m_folder;
    const CurrentFolder m_currentFolder; // the Open dialog changes it
    const RegistrySandbox m_sandbox;
    const LoadedTarn m_tarn;
    const HostWindow m_host{100, 100, 700, 500};
    std::string m_source;
    std::string m_target;
    std::string m_copy;
    HANDLE m_hHeap = nullptr; // borrowed: the library's
    const User m_user{"package.dat"};
};

unsigned long Number(std::size_t n)
{
    return static_cast<unsigned long>(n);
}

void Print(const Sample& sample)
{
    std::printf("%7d %8lu %5lu %5lu %8d %11lu %12lu %11lu\n", sample.nRound, sample.count.nHandles,
                sample.count.nGdiObjects, sample.count.nUserObjects, sample.count.nThreads,
                Number(sample.nOwnBlocks), Number(sample.count.nHeapBlocks),
                Number(sample.cbWorkingSet / 1024));
    std::fflush(stdout);
}

// Of the working set, the growth of the block that takes the least: a leak is in each of them, what a theme
// brings along once is not.
bool IsFlat(const RoundCost& cost, const RoundCost::Allowance& allowed, const Sample& first,
            const Sample& last, long long cbLeastGrowth)
{
    std::cout << cost << '\n';
    bool bFlat = cost.IsWithin(allowed);
    if (!bFlat)
        std::printf("not flat: a round costs more than the system's dialog\n");
    if (last.nOwnBlocks != first.nOwnBlocks)
    {
        std::printf("not flat: blocks of the library\n");
        bFlat = false;
    }
    if (cbLeastGrowth * RoundCost::kBlocks > kWorkingSetTolerance)
    {
        std::printf("not flat: working set\n");
        bFlat = false;
    }
    return bFlat;
}

// What the system's dialog costs, and a little.
RoundCost::Allowance AllowedAfter(const RoundCost& systemDialog, int nBlock)
{
    RoundCost::Allowance allowed = systemDialog.AsAllowance();
    allowed[RoundCost::kHandles] += kTolerance;
    allowed[RoundCost::kGdiObjects] += std::max(kTolerance, kGdiTolerance / nBlock);
    allowed[RoundCost::kHeapBlocks] += std::max(kTolerance, kBlocksTolerance / nBlock);
    allowed[RoundCost::kHeapBytes] =
        RoundCost::kAnything; // that is for the blocks and the working set to say
    return allowed;
}
} // namespace

int main(int argc, char** argv)
{
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    const int nRounds = argc == 2 ? std::atoi(argv[1]) : 0;
    if (nRounds < kFewestRounds)
    {
        std::printf("usage: soak ROUNDS, at least %d\n", kFewestRounds);
        return 2;
    }
    const DWORD nStart = ::GetTickCount();
    Installation installation;
    if (!installation.IsComplete())
    {
        std::printf("cannot work with %s\n", LoadedTarn::Path().c_str());
        return 2;
    }
    for (int i = 1; i <= kWarmUps; ++i)
        installation.Run(i);
    const RoundCost systemDialog =
        RoundCost::Of(kSystemDialogs, [&installation] { installation.ShowSystemDialog(); });
    std::cout << "The system's Open dialog, without the library: " << systemDialog << '\n';

    std::printf("  round  handles   GDI  USER  threads  own blocks  heap blocks  KB in use\n");
    // By the end of the first of as many rounds as a block has, the system's caches are full.
    constexpr int kSamples = (RoundCost::kBlocks + 1) * kSamplesInABlock;
    const int nInterval = (nRounds + kSamples - 1) / kSamples;
    const int nBlock = nInterval * kSamplesInABlock;
    RoundCost cost(nBlock);
    Sample first;
    Sample last;
    Sample blockStart;
    long long cbLeastGrowth = LLONG_MAX;
    for (int i = 1; !cost.IsComplete() && g_nWrong < 10; ++i)
    {
        installation.Run(i);
        if (i % nInterval != 0)
            continue;
        last = installation.Measure(i);
        Print(last);
        if (i % nBlock != 0)
            continue;
        if (i == nBlock)
            first = last;
        else
        {
            cost.AddBlock(blockStart.count, last.count);
            cbLeastGrowth =
                std::min(cbLeastGrowth, static_cast<long long>(last.cbWorkingSet) -
                                            static_cast<long long>(blockStart.cbWorkingSet));
        }
        blockStart = last;
    }
    const bool bGood =
        IsFlat(cost, AllowedAfter(systemDialog, nBlock), first, last, cbLeastGrowth) &&
        g_nWrong == 0;
    std::printf("%s: %d rounds, %lu seconds\n", bGood ? "flat" : "NOT GOOD", last.nRound,
                (::GetTickCount() - nStart) / 1000);
    return bGood ? 0 : 1;
}
