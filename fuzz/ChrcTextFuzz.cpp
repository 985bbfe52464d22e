// The start-up file's text against a model that counts runs of backslashes and joins the pieces of the
// template.
#include "fuzz/Fuzz.h"
#include "install/ChrcTemplate.h"
#include "install/ChrcText.h"

#include <cstring>

namespace
{
// What stands for a folder: a run of k backslashes becomes one of 2k less a third of that, rounded down.
std::string EscapedModel(const std::string& folder)
{
    std::string escaped;
    std::size_t nRun = 0;
    for (const std::string& character : fuzz::Characters(folder))
    {
        if (character == "\\")
        {
            ++nRun;
            continue;
        }
        escaped.append(2 * nRun - 2 * nRun / 3, '\\').append(character);
        nRun = 0;
    }
    return escaped;
}

std::vector<std::string> CutAtMarkers()
{
    std::vector<std::string> pieces(1);
    for (const char* p = kChrcTemplate; *p != '\0'; ++p)
    {
        if (*p == '[')
        {
            pieces.emplace_back();
            p = std::strchr(p, ']');
        }
        else
            pieces.back() += *p;
    }
    fuzz::Require(pieces.size() == 6, "five markers");
    return pieces;
}

std::string FileModel(const std::string& folder)
{
    static const std::vector<std::string> pieces = CutAtMarkers();
    const std::string escaped = EscapedModel(folder);
    std::string text = pieces[0];
    for (std::size_t i = 1; i < pieces.size(); ++i)
        text.append(escaped).append(pieces[i]);
    return text;
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pInput, std::size_t cbInput)
{
    fuzz::Input input(pInput, cbInput);
    fuzz::ChooseCodePage(input.Byte());
    const std::string folder = input.Text();
    // By bytes, whatever the code page.
    const std::size_t nLength = folder.find_last_not_of("\\/") + 1;
    bool bRefused = false;
    try
    {
        const CString strText = MakeChrcText(folder.c_str());
        fuzz::Require(FileModel(folder.substr(0, nLength)) == strText.GetString(), "text");
    }
    catch (CInvalidArgException* pException)
    {
        pException->Delete();
        bRefused = true;
    }
    fuzz::Require(bRefused == (nLength == 0 && !folder.empty()), "refusal");
    return 0;
}
