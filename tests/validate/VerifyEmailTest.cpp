#include "include/tarn.h"

#include "tests/support/GuardedBuffer.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LoadedTarn.h"
#include "tests/validate/EmailModel.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
class VerifyEmail : public testing::Test
{
protected:
    // Loaded once for all.
    static void SetUpTestSuite() { s_pTarn = std::make_unique<LoadedTarn>(); }
    static void TearDownTestSuite() { s_pTarn.reset(); }
    void SetUp() override { ASSERT_TRUE(s_pTarn->IsComplete()); }

    // Calls with buffers of the smallest allowed sizes and compares everything with the outcome.
    static void Expect(const std::string& text, const email_model::Outcome& expected)
    {
        GuardedBuffer address(text.size() + 1);
        GuardedBuffer position(sizeof(int));
        GuardedBuffer message(TARN_EMAIL_MESSAGE_SIZE);
        std::memcpy(address.Data(), text.c_str(), text.size() + 1);
        const int nResult = s_pTarn->VerifyEmail(
            address.Data(), reinterpret_cast<int*>(position.Data()), message.Data());

        int nPosition = 0;
        std::memcpy(&nPosition, position.Data(), sizeof(nPosition));
        ASSERT_EQ(nResult, expected.nResult);
        ASSERT_EQ(nPosition, expected.nPosition);
        ASSERT_EQ(std::strlen(address.Data()), expected.address.size());
        ASSERT_TRUE(expected.address == address.Data());
        ASSERT_TRUE(address.IsFrontIntact());
        ASSERT_TRUE(position.IsFrontIntact());
        ASSERT_TRUE(message.IsFrontIntact());
        if (expected.message.empty())
        {
            ASSERT_TRUE(message.IsUntouchedFrom(0));
        }
        else
        {
            ASSERT_EQ(expected.message, message.Data());
            ASSERT_TRUE(message.IsUntouchedFrom(expected.message.size() + 1));
        }
    }

    static std::unique_ptr<LoadedTarn> s_pTarn;
};

std::unique_ptr<LoadedTarn> VerifyEmail::s_pTarn;

TEST_F(VerifyEmail, GivesResultPositionAndMessageForEachRule)
{
    for (const email_model::Case& example : email_model::Cases())
    {
        SCOPED_TRACE(example.pszSentence);
        Expect(example.text,
               {example.address, example.nResult, example.nPosition, example.message});
    }
}

TEST_F(VerifyEmail, LeavesTheMessageBufferAloneWhenThereIsNoMessage)
{
    for (const char* const pszText : {"", "  \t", "a@b.c"})
    {
        char szAddress[8];
        std::strcpy(szAddress, pszText);
        char szMessage[] = "what was there before";
        int nPosition = 0;
        s_pTarn->VerifyEmail(szAddress, &nPosition, szMessage);
        EXPECT_STREQ(szMessage, "what was there before");
        EXPECT_EQ(nPosition, TARN_NO_ERROR_POSITION);
    }
}

TEST_F(VerifyEmail, WritesTheLongestMessageIntoABufferOfTheDocumentedSize)
{
    const std::string text = "a@" + std::string(65, 'x');
    Expect(text, {text, 0, 3, email_model::kLongLabel});
    EXPECT_EQ(email_model::kLongLabel.size() + 1, std::size_t{TARN_EMAIL_MESSAGE_SIZE});
}

TEST_F(VerifyEmail, AgreesWithTheModelOnGeneratedAddresses)
{
    email_model::Generator generator;
    for (int i = 0; i < 20000; ++i)
    {
        const std::string text = generator.Next();
        SCOPED_TRACE(text);
        ASSERT_NO_FATAL_FAILURE(Expect(text, email_model::Expect(text)));
    }
}

// Around the length up to which an address needs no heap.
TEST_F(VerifyEmail, AgreesWithTheModelOnAddressesOfEveryLength)
{
    for (std::size_t nLength = 0; nLength < 600; ++nLength)
    {
        for (const std::string& text :
             {std::string(nLength, 'x') + "@b.c", " " + std::string(nLength, '.') + "@b.c\t",
              std::string(nLength, ' ') + "@"})
            ASSERT_NO_FATAL_FAILURE(Expect(text, email_model::Expect(text)));
    }
}

TEST_F(VerifyEmail, AgreesWithTheModelOnAddressesOf100KB)
{
    for (const std::string& text : email_model::LongAddresses())
        ASSERT_NO_FATAL_FAILURE(Expect(text, email_model::Expect(text)));
}
int g_nAllocations = 0;

LPVOID WINAPI CountingAlloc(HANDLE hHeap, DWORD nFlags, SIZE_T cb)
{
    ++g_nAllocations;
    return ::HeapAlloc(hHeap, nFlags, cb);
}

TEST_F(VerifyEmail, TakesMemoryForAnAddressOfMoreThan255BytesOnly)
{
    Expect("a@b.c", email_model::Expect("a@b.c")); // what the thread needs has been made
    const ImportPatch patch(s_pTarn->Module(), "HeapAlloc",
                            reinterpret_cast<void*>(&CountingAlloc));
    ASSERT_TRUE(patch.IsActive());
    const std::string domain = "@b.c";
    for (const std::size_t cb : {5U, 100U, 254U, 255U, 256U, 1000U})
    {
        const std::string address = std::string(cb - domain.size(), 'a') + domain;
        g_nAllocations = 0;
        Expect(address, email_model::Expect(address));
        EXPECT_EQ(g_nAllocations, cb > 255 ? 1 : 0) << cb;
    }
}
} // namespace
