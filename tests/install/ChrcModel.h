// The start-up file once more, by other means than the library's, for comparing.
#pragma once

#include "install/ChrcTemplate.h"
#include "tests/support/LeadBytes.h"

#include <cstddef>
#include <string>

// The template with something standing where the five markers are.
inline std::string TemplateWith(const std::string& inserted)
{
    std::string text;
    const std::string source(kChrcTemplate);
    const std::string marker("[KELDPATH]");
    std::size_t nBegin = 0;
    for (std::size_t i = source.find(marker); i != std::string::npos;
         i = source.find(marker, nBegin))
    {
        text += source.substr(nBegin, i - nBegin) + inserted;
        nBegin = i + marker.size();
    }
    return text + source.substr(nBegin);
}

// What is inserted for a folder: a run of k backslashes becomes one of 2k - floor(2k / 3), after
// the separators at the end have gone, byte by byte.
inline std::string EscapedModel(std::string folder, unsigned int nCodePage)
{
    while (!folder.empty() && (folder.back() == '\\' || folder.back() == '/'))
        folder.pop_back();
    std::string escaped;
    std::size_t nRun = 0;
    for (std::size_t i = 0; i < folder.size();)
    {
        const std::size_t cb = CharacterLength(nCodePage, folder, i);
        if (cb == 1 && folder[i] == '\\')
            ++nRun;
        else
        {
            escaped += std::string(2 * nRun - 2 * nRun / 3, '\\') + folder.substr(i, cb);
            nRun = 0;
        }
        i += cb;
    }
    return escaped;
}

// The whole file for a folder in the process's own code page.
inline std::string FileModel(const std::string& folder)
{
    return TemplateWith(EscapedModel(folder, OwnCodePage()));
}
