// The address check against a model that cuts the address into pieces first.
#include "fuzz/Fuzz.h"
#include "tests/validate/EmailModel.h"
#include "validate/EmailSyntax.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* pInput, std::size_t cbInput)
{
    fuzz::Input input(pInput, cbInput);
    fuzz::ChooseCodePage(input.Byte());
    const std::string text = input.Text();
    const email_model::Outcome expected = email_model::Expect(text);

    CString strAddress(text.c_str());
    CString strMessage("from before");
    int nPosition = 4711;
    const int nResult = CheckEmailSyntax(strAddress, &nPosition, strMessage);
    fuzz::Require(nResult == expected.nResult, "result");
    fuzz::Require(nPosition == expected.nPosition, "position");
    fuzz::Require(expected.message == strMessage.GetString(), "message");
    fuzz::Require(expected.address == strAddress.GetString(), "address");
    return 0;
}
