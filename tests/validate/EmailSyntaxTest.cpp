#include "validate/EmailSyntax.h"

#include "framework/text/CodePage.h"
#include "tests/validate/EmailModel.h"

#include <gtest/gtest.h>

#include <cctype>

namespace
{
struct Checked
{
    int nResult;
    int nPosition;
    std::string message;
    std::string address;
};

Checked Check(const std::string& text)
{
    CString strAddress(text.c_str());
    CString strMessage("left over from before");
    int nPosition = 4711;
    const int nResult = CheckEmailSyntax(strAddress, &nPosition, strMessage);
    return {nResult, nPosition, strMessage.GetString(), strAddress.GetString()};
}

// Bytes that do not print come out as numbers.
std::string Printable(const std::string& text)
{
    std::string printable;
    for (const char ch : text.substr(0, 200))
    {
        const auto byte = static_cast<unsigned char>(ch);
        printable +=
            std::isprint(byte) != 0 ? std::string(1, ch) : "<" + std::to_string(byte) + ">";
    }
    return printable;
}

void ExpectModel(const std::string& text, int* pnAccepted = nullptr)
{
    const email_model::Outcome expected = email_model::Expect(text);
    const Checked checked = Check(text);
    ASSERT_EQ(checked.nResult, expected.nResult) << Printable(text);
    ASSERT_EQ(checked.nPosition, expected.nPosition) << Printable(text);
    ASSERT_EQ(checked.message, expected.message) << Printable(text);
    ASSERT_TRUE(checked.address == expected.address) << Printable(text);
    if (pnAccepted != nullptr)
        *pnAccepted += expected.nResult;
}

// Elsewhere the code page is the process's, and the test runs once under each.
class EmailSyntax : public testing::TestWithParam<unsigned>
{
#ifndef _WIN32
protected:
    EmailSyntax()
    {
        SetNativeCodePage(GetParam());
    }
    ~EmailSyntax() override
    {
        SetNativeCodePage(1252);
    }
#endif
};

#ifdef _WIN32
INSTANTIATE_TEST_SUITE_P(ProcessCodePage, EmailSyntax, testing::Values(0U));
#else
INSTANTIATE_TEST_SUITE_P(BothCodePages, EmailSyntax, testing::Values(1252U, 932U));
#endif

TEST_P(EmailSyntax, GivesResultPositionAndMessageForEachRule)
{
    for (const email_model::Case& example : email_model::Cases())
    {
        SCOPED_TRACE(example.pszSentence);
        const Checked checked = Check(example.text);
        EXPECT_EQ(checked.nResult, example.nResult);
        EXPECT_EQ(checked.nPosition, example.nPosition);
        EXPECT_EQ(checked.message, example.message);
        EXPECT_EQ(checked.address, example.address);
    }
}

TEST_P(EmailSyntax, TakesEveryByteForWhatItIsInTheLocalPart)
{
    for (int nByte = 1; nByte <= 255; ++nByte)
    {
        SCOPED_TRACE(nByte);
        const char ch = static_cast<char>(nByte);
        const Checked checked = Check(std::string("a") + ch + "b@c.d");
        const bool bAllowed =
            nByte < 128 && (std::isalnum(nByte) != 0 || ch == '_' || ch == '-' || ch == '.');
        if (ch == '@') // what follows is then the domain, and its second byte a second at sign
        {
            EXPECT_EQ(checked.nPosition, 4);
            continue;
        }
        EXPECT_EQ(checked.nResult, bAllowed ? 1 : 0);
        EXPECT_EQ(checked.nPosition, bAllowed ? -1 : 1);
        EXPECT_EQ(checked.message, bAllowed ? "" : email_model::kBadByte);
    }
}

TEST_P(EmailSyntax, TakesEveryByteForWhatItIsInTheDomain)
{
    for (int nByte = 1; nByte <= 255; ++nByte)
    {
        SCOPED_TRACE(nByte);
        const char ch = static_cast<char>(nByte);
        const Checked checked = Check(std::string("a@b") + ch + "c.d");
        const bool bAllowed =
            nByte < 128 && (std::isalnum(nByte) != 0 || ch == '_' || ch == '-' || ch == '.');
        EXPECT_EQ(checked.nResult, bAllowed ? 1 : 0);
        EXPECT_EQ(checked.nPosition, bAllowed ? -1 : 4);
        EXPECT_EQ(checked.message, bAllowed ? "" : email_model::kBadByte);
    }
}

TEST_P(EmailSyntax, RemovesTheSixKindsOfWhiteSpaceAndNoOthers)
{
    for (int nByte = 1; nByte <= 255; ++nByte)
    {
        SCOPED_TRACE(nByte);
        const std::string byte(1, static_cast<char>(nByte));
        const bool bSpace = nByte == 32 || (nByte >= 9 && nByte <= 13);
        EXPECT_EQ(Check(byte + "a").address, bSpace ? "a" : byte + "a");
        EXPECT_EQ(Check("a" + byte).address, bSpace ? "a" : "a" + byte);
    }
}

TEST_P(EmailSyntax, AgreesWithTheModelOnGeneratedAddresses)
{
    email_model::Generator generator;
    int nAccepted = 0;
    for (int i = 0; i < 40000 && !HasFatalFailure(); ++i)
        ExpectModel(generator.Next(), &nAccepted);
    // Otherwise the addresses would say little about acceptance, or little about refusal.
    EXPECT_GT(nAccepted, 4000);
    EXPECT_LT(nAccepted, 30000);
}

TEST_P(EmailSyntax, AgreesWithTheModelOnLabelsAroundTheLimit)
{
    for (std::size_t nFirst = 0; nFirst <= 66; ++nFirst)
    {
        for (const std::size_t nSecond : {0U, 1U, 63U, 64U, 65U})
        {
            const std::string domain = std::string(nFirst, 'x') + "." + std::string(nSecond, '-');
            ASSERT_NO_FATAL_FAILURE(ExpectModel("user@" + domain));
            ASSERT_NO_FATAL_FAILURE(ExpectModel("user@" + domain + ".com"));
            ASSERT_NO_FATAL_FAILURE(ExpectModel("user@a." + domain));
        }
        ASSERT_NO_FATAL_FAILURE(ExpectModel("user@" + std::string(nFirst, 'x')));
    }
}

TEST_P(EmailSyntax, AgreesWithTheModelOnAddressesOf100KB)
{
    for (const std::string& text : email_model::LongAddresses())
        ASSERT_NO_FATAL_FAILURE(ExpectModel(text));
}

TEST_P(EmailSyntax, LeavesCopiesOfTheAddressAlone)
{
    CString strAddress(" a@b.c ");
    const CString strCopy(strAddress);
    CString strMessage;
    int nPosition = 0;
    EXPECT_EQ(CheckEmailSyntax(strAddress, &nPosition, strMessage), 1);
    EXPECT_STREQ(strAddress, "a@b.c");
    EXPECT_STREQ(strCopy, " a@b.c ");
}

TEST(EmailMessage, HasTheDocumentedLength)
{
    EXPECT_EQ(Check("a").message.size(), 12U);
    EXPECT_EQ(Check("@").message.size(), 35U);
    EXPECT_EQ(Check("!@").message.size(), 27U);
    EXPECT_EQ(Check("a@" + std::string(65, 'x')).message.size(), 72U);
    EXPECT_EQ(Check("a@").message.size(), 38U);
    EXPECT_EQ(Check("a@b").message.size(), 20U);
}
} // namespace
