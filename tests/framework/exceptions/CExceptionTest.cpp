#include <afxwin.h>

#include "tests/support/AllocationFaults.h"
#include "tests/support/MessageBoxDriver.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <string>
#include <type_traits>

namespace
{
static_assert(!std::is_copy_constructible_v<CException>, "it is thrown by pointer");

bool g_bDeleted = false;

class CountedException : public CException
{
public:
    using CException::CException;
    ~CountedException() override { g_bDeleted = true; }
};

std::string MessageOf(const CException& exception)
{
    char szMessage[512];
    exception.GetErrorMessage(szMessage, sizeof(szMessage));
    return szMessage;
}

class CountedSimpleException : public CSimpleException
{
public:
    CountedSimpleException() : CSimpleException("There is a reason.") {}
    ~CountedSimpleException() override { g_bDeleted = true; }
};

TEST(CException, IsFreedByDeleteWhenItIsOnTheHeap)
{
    g_bDeleted = false;
    (new CountedException)->Delete();
    EXPECT_TRUE(g_bDeleted);
    g_bDeleted = false;
    {
        CountedException exception(FALSE);
        exception.Delete();
        EXPECT_FALSE(g_bDeleted);
    }
    EXPECT_TRUE(g_bDeleted);
}

TEST(CException, IsCaughtByItsBase)
{
    EXPECT_THROW(AfxThrowMemoryException(), CException*);
    EXPECT_THROW(AfxThrowInvalidArgException(), CException*);
    try
    {
        AfxThrowFileException(CFileException::diskFull, 112, "file");
    }
    catch (CException* pException)
    {
        EXPECT_NE(MessageOf(*pException).find("file"), std::string::npos);
        pException->Delete();
    }
}

TEST(CException, WithoutAMessageSaysSo)
{
    CException exception(FALSE);
    char szMessage[] = "before";
    UINT nHelp = 4711;
    EXPECT_FALSE(exception.GetErrorMessage(szMessage, sizeof(szMessage), &nHelp));
    EXPECT_STREQ(szMessage, "");
    EXPECT_EQ(nHelp, 0U);
}

TEST(CException, OfAFixedMessageStaysWhereItIs)
{
    CountedSimpleException exception;
    g_bDeleted = false;
    exception.Delete();
    EXPECT_FALSE(g_bDeleted);
    EXPECT_EQ(MessageOf(exception), "There is a reason.");
}

// Into buffers of each size that matters, of which nothing behind the end is touched.
void ExpectCutsItsMessageToFit(const CException& exception)
{
    const std::string whole = MessageOf(exception);
    ASSERT_FALSE(whole.empty());
    for (std::size_t nSize = 1; nSize <= whole.size() + 2; ++nSize)
    {
        SCOPED_TRACE(nSize);
        std::string buffer(whole.size() + 8, '#');
        EXPECT_TRUE(exception.GetErrorMessage(&buffer[0], static_cast<UINT>(nSize)));
        EXPECT_EQ(std::string(buffer.c_str()), whole.substr(0, nSize - 1));
        EXPECT_EQ(buffer.find_first_not_of('#', nSize), std::string::npos);
    }
    char chUntouched = '#';
    EXPECT_FALSE(exception.GetErrorMessage(&chUntouched, 0));
    EXPECT_EQ(chUntouched, '#');
    EXPECT_FALSE(exception.GetErrorMessage(nullptr, 10));
}

TEST(CException, CutsItsMessageToFit)
{
    ExpectCutsItsMessageToFit(
        CFileException(CFileException::fileNotFound, 2, "C:\\folder\\file.txt"));
    ExpectCutsItsMessageToFit(CMemoryException());
}

TEST(CException, OfEachKindHasAMessage)
{
    const auto expect = [](void (*pfnThrow)(), const char* pszMessage) {
        try
        {
            pfnThrow();
            FAIL() << "nothing was thrown";
        }
        catch (CException* pException)
        {
            char szMessage[512] = "";
            UINT nHelp = 4711;
            EXPECT_TRUE(pException->GetErrorMessage(szMessage, sizeof(szMessage), &nHelp));
            EXPECT_NE(std::strstr(szMessage, pszMessage), nullptr) << szMessage;
            EXPECT_EQ(nHelp, 0U) << "there is no help";
            EXPECT_EQ(MessageOf(*pException), szMessage);
            pException->Delete();
        }
    };
    expect(&AfxThrowMemoryException, "not enough memory");
    expect(&AfxThrowInvalidArgException, "argument is not valid");
    expect([] { AfxThrowFileException(CFileException::diskFull, 112, "a.txt"); }, "a.txt");
}

TEST(CMemoryException, IsThrownWithoutMemory)
{
    AllocationFaults faults(::GetModuleHandleA(nullptr));
    for (int i = 0; i < 100; ++i)
    {
        bool bCaught = false;
        faults.Arm(1, AllocationFaults::After::StaysOut);
        try
        {
            AfxThrowMemoryException();
        }
        catch (CMemoryException* pException)
        {
            bCaught = true;
            pException->Delete();
        }
        EXPECT_FALSE(faults.Disarm()) << "something was allocated";
        ASSERT_TRUE(bCaught);
    }
}

TEST(CMemoryException, ComesFromOperatorNew)
{
    AllocationFaults faults(::GetModuleHandleA(nullptr));
    void* volatile p = nullptr;
    int nCaught = 0;
    faults.Arm(1, AllocationFaults::After::StaysOut);
    try
    {
        p = ::operator new(16);
    }
    catch (CMemoryException* pException)
    {
        ++nCaught;
        pException->Delete();
    }
    try
    {
        p = ::operator new[](16);
    }
    catch (CMemoryException* pException)
    {
        ++nCaught;
        pException->Delete();
    }
    EXPECT_TRUE(faults.Disarm());
    EXPECT_EQ(nCaught, 2);
    EXPECT_EQ(p, nullptr);
}

TEST(CMemoryException, LeavesAStringAsItWas)
{
    AllocationFaults faults(::GetModuleHandleA(nullptr));
    const std::string longText(1000, 'x');
    CString str("before");
    int nCaught = 0;
    const auto expect = [&](void (*pfn)(CString&, LPCSTR)) {
        faults.Arm(1, AllocationFaults::After::StaysOut);
        try
        {
            pfn(str, longText.c_str());
        }
        catch (CMemoryException* pException)
        {
            ++nCaught;
            pException->Delete();
        }
        faults.Disarm();
        EXPECT_STREQ(str, "before");
    };
    expect([](CString& s, LPCSTR psz) { s = psz; });
    expect([](CString& s, LPCSTR psz) { s += psz; });
    expect([](CString& s, LPCSTR psz) { s.Replace("e", psz); });
    expect([](CString& s, LPCSTR) { s.GetBuffer(1000); });
    expect([](CString& s, LPCSTR psz) { s = s + psz; });
    EXPECT_EQ(nCaught, 5);
}

TEST(CFileException, HasTheDocumentedCauses)
{
    EXPECT_EQ(CFileException::none, 0);
    EXPECT_EQ(CFileException::genericException, 1);
    EXPECT_EQ(CFileException::fileNotFound, 2);
    EXPECT_EQ(CFileException::badPath, 3);
    EXPECT_EQ(CFileException::tooManyOpenFiles, 4);
    EXPECT_EQ(CFileException::accessDenied, 5);
    EXPECT_EQ(CFileException::invalidFile, 6);
    EXPECT_EQ(CFileException::removeCurrentDir, 7);
    EXPECT_EQ(CFileException::directoryFull, 8);
    EXPECT_EQ(CFileException::badSeek, 9);
    EXPECT_EQ(CFileException::hardIO, 10);
    EXPECT_EQ(CFileException::sharingViolation, 11);
    EXPECT_EQ(CFileException::lockViolation, 12);
    EXPECT_EQ(CFileException::diskFull, 14);
    EXPECT_EQ(CFileException::endOfFile, 15);
}

TEST(CFileException, KnowsTheCauseOfTheSystemsErrors)
{
    const struct
    {
        LONG lOsError;
        int cause;
    } cases[] = {{ERROR_FILE_NOT_FOUND, CFileException::fileNotFound},
                 {ERROR_PATH_NOT_FOUND, CFileException::badPath},
                 {ERROR_INVALID_NAME, CFileException::badPath},
                 {ERROR_TOO_MANY_OPEN_FILES, CFileException::tooManyOpenFiles},
                 {ERROR_ACCESS_DENIED, CFileException::accessDenied},
                 {ERROR_INVALID_HANDLE, CFileException::invalidFile},
                 {ERROR_CANNOT_MAKE, CFileException::directoryFull},
                 {ERROR_WRITE_FAULT, CFileException::hardIO},
                 {ERROR_SHARING_VIOLATION, CFileException::sharingViolation},
                 {ERROR_LOCK_VIOLATION, CFileException::lockViolation},
                 {ERROR_DISK_FULL, CFileException::diskFull},
                 {ERROR_HANDLE_DISK_FULL, CFileException::diskFull},
                 {-1, CFileException::genericException},
                 {123456, CFileException::genericException}};
    for (const auto& each : cases)
        EXPECT_EQ(CFileException::OsErrorToException(each.lOsError), each.cause) << each.lOsError;
}

TEST(CFileException, KeepsWhatItIsMadeWith)
{
    const CFileException nothing;
    EXPECT_EQ(nothing.m_cause, CFileException::none);
    EXPECT_EQ(nothing.m_lOsError, -1);
    EXPECT_STREQ(nothing.m_strFileName, "");
    const CFileException exception(CFileException::hardIO, 29, "name");
    EXPECT_EQ(exception.m_cause, CFileException::hardIO);
    EXPECT_EQ(exception.m_lOsError, 29);
    EXPECT_STREQ(exception.m_strFileName, "name");
}

TEST(CFileException, SaysEachCauseInWordsOfItsOwnAndNamesTheFile)
{
    std::string seen = "|";
    // Those that opening, writing and closing a file end with.
    for (const int cause :
         {CFileException::genericException, CFileException::fileNotFound, CFileException::badPath,
          CFileException::tooManyOpenFiles, CFileException::accessDenied,
          CFileException::invalidFile, CFileException::directoryFull, CFileException::hardIO,
          CFileException::sharingViolation, CFileException::lockViolation,
          CFileException::diskFull})
    {
        const std::string message = MessageOf(CFileException(cause, -1, "C:\\file.txt"));
        EXPECT_NE(message.find("C:\\file.txt"), std::string::npos) << message;
        EXPECT_EQ(seen.find("|" + message + "|"), std::string::npos) << message;
        seen += message + "|";
        EXPECT_GT(MessageOf(CFileException(cause)).size(), 10U) << cause;
    }
}

TEST(CFileException, SpeaksOfAnErrorWhenItKnowsNoCause)
{
    const std::string general = MessageOf(CFileException(CFileException::genericException));
    for (const int cause : {-1, 0, 7, 9, 13, 15, 4711})
        EXPECT_EQ(MessageOf(CFileException(cause)), general) << cause;
}

TEST(ReportError, ShowsABoxWithOneButtonThatTellsTheCauseAndNamesTheFile)
{
    CFileException exception(CFileException::accessDenied, 5, "C:\\folder\\file.txt");
    MessageBoxDriver driver;
    EXPECT_EQ(exception.ReportError(), IDOK);
    const std::vector<SeenMessageBox>& boxes = driver.Stop();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_EQ(boxes[0].nButtons, 1);
    EXPECT_EQ(boxes[0].text, MessageOf(exception));
    EXPECT_NE(boxes[0].text.find("Access was denied"), std::string::npos);
    EXPECT_NE(boxes[0].text.find("C:\\folder\\file.txt"), std::string::npos);
}

UINT g_nBoxType = 0;

int WINAPI NoteBox(HWND /*hWnd*/, LPCSTR /*lpText*/, LPCSTR /*lpCaption*/, UINT nType)
{
    g_nBoxType = nType;
    return IDYES;
}

TEST(AfxMessageBox, WarnsUnlessItIsGivenAnIcon)
{
    const ImportPatch patch(::GetModuleHandleA(nullptr), "MessageBoxA",
                            reinterpret_cast<void*>(&NoteBox));
    ASSERT_TRUE(patch.IsActive());
    EXPECT_EQ(AfxMessageBox("text"), IDYES);
    EXPECT_EQ(g_nBoxType, static_cast<UINT>(MB_OK | MB_ICONEXCLAMATION));
    EXPECT_EQ(AfxMessageBox("text", MB_YESNO | MB_ICONQUESTION), IDYES);
    EXPECT_EQ(g_nBoxType, static_cast<UINT>(MB_YESNO | MB_ICONQUESTION));
}

TEST(ReportError, HasSomethingToSayForAnExceptionWithoutAMessage)
{
    CException exception(FALSE);
    MessageBoxDriver driver;
    EXPECT_EQ(exception.ReportError(), IDOK);
    const std::vector<SeenMessageBox>& boxes = driver.Stop();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_FALSE(boxes[0].text.empty());
}
} // namespace
