// The path helpers against models that go character by character.
#include "fuzz/Fuzz.h"
#include "install/PathHelpers.h"

namespace
{
std::string SeparatedModel(std::string path)
{
    if (path.find_last_of("\\/") + 1 != path.size())
        path.push_back('\\');
    return path;
}

std::string NamePartModel(const std::string& path)
{
    std::string name;
    for (const std::string& character : fuzz::Characters(path))
    {
        name += character;
        if (character == "\\" || character == "/")
            name.clear();
    }
    return name;
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pInput, std::size_t cbInput)
{
    fuzz::Input input(pInput, cbInput);
    fuzz::ChooseCodePage(input.Byte());
    const std::string path = input.Text();
    const CString strPath(path.c_str());
    fuzz::Require(SeparatedModel(path) == AddTrailingSeparator(strPath).GetString(),
                  "separated path");
    fuzz::Require(NamePartModel(path) == FileNamePart(strPath).GetString(), "file name");
    fuzz::Require(path == strPath.GetString(), "the caller's path");
    return 0;
}
