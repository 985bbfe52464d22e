#include "tarntool/Request.h"

#include "tarntool/Commands.h"
#include "tarntool/Failure.h"
#include "tarntool/Text.h"

#include <cwchar>

namespace
{
struct OptionName
{
    LPCWSTR pszName;
    bool bValue; // one follows
};

// In the order of the bits of Request::Option.
constexpr OptionName kOptionNames[Request::kOptions] = {
    {L"--parent", true},   {L"--title", true},  {L"--message", true},   {L"--id", true},
    {L"--folder", true},   {L"--filter", true}, {L"--extension", true}, {L"--file", true},
    {L"--patience", true}, {L"--out", true},    {L"--quiet", false}};

int FindOption(LPCWSTR psz)
{
    int i = Request::kOptions;
    while (--i >= 0 && std::wcscmp(psz, kOptionNames[i].pszName) != 0)
        ;
    return i;
}

[[noreturn]] void Wrong(const CString& strSentence)
{
    throw Failure{ExitCode::WrongArguments, strSentence};
}
} // namespace

Request::Request(LPCWSTR pszArguments) : m_line(pszArguments)
{
    if (!m_line.IsValid())
        Wrong("the quotation marks in the arguments do not match");
    Sort();
    Check();
}

LPCWSTR Request::Value(Option option) const
{
    int i = 0;
    while (1U << i != option)
        ++i;
    return m_pszValues[i];
}

// Options to their places, the rest to the operands.
void Request::Sort()
{
    const int nCount = m_line.GetCount();
    m_ppszOperands.reset(new LPCWSTR[static_cast<std::size_t>(nCount) + 1]);
    for (int i = 0; i < nCount; ++i)
    {
        const int nOption = FindOption(m_line[i]);
        if (nOption < 0)
        {
            m_ppszOperands.get()[m_nOperands++] = m_line[i];
            continue;
        }
        const CString strName = ToUtf8(m_line[i]);
        if ((m_nGiven & 1U << nOption) != 0)
            Wrong(strName + " is given twice");
        m_nGiven |= 1U << nOption;
        if (kOptionNames[nOption].bValue && ++i == nCount)
            Wrong(strName + " needs a value behind it");
        m_pszValues[nOption] = m_line[i];
    }
    if (m_nOperands == 0)
        Wrong("there is no command; \"tarntool help\" lists them");
    m_pCommand = FindCommand(m_ppszOperands[0]);
    if (m_pCommand == nullptr)
        Wrong("there is no command \"" + ToUtf8(m_ppszOperands[0]) +
              "\"; \"tarntool help\" lists them");

    if (m_line.GetTail() == nullptr || m_pCommand->bTail)
        return;
    m_pBehindDashes = std::make_unique<CommandLine>(m_line.GetTail(), false);
    const CommandLine& rest = *m_pBehindDashes;
    if (!rest.IsValid())
        Wrong("the quotation marks in the arguments do not match");
    std::unique_ptr<LPCWSTR[]> ppszAll(new LPCWSTR[static_cast<std::size_t>(m_nOperands) +
                                                   static_cast<std::size_t>(rest.GetCount())]);
    for (int i = 0; i < m_nOperands; ++i)
        ppszAll.get()[i] = m_ppszOperands.get()[i];
    for (int i = 0; i < rest.GetCount(); ++i)
        ppszAll.get()[m_nOperands++] = rest[i];
    m_ppszOperands.swap(ppszAll);
}

void Request::Check() const
{
    const CString strCommand = ToUtf8(m_pCommand->pszName);
    for (int i = 0; i < kOptions; ++i)
    {
        if ((m_nGiven & ~m_pCommand->nOptions & 1U << i) != 0)
            Wrong(strCommand + " has no option " + ToUtf8(kOptionNames[i].pszName));
    }
    const int nOperands = GetOperandCount();
    if (nOperands >= m_pCommand->nMinOperands && nOperands <= m_pCommand->nMaxOperands)
        return;
    CString strSentence = strCommand + " takes " + m_pCommand->pszNeeds;
    // The one too many is the likelier one to be wrong.
    if (nOperands > m_pCommand->nMaxOperands)
        strSentence += ", not also \"" + ToUtf8(Operand(m_pCommand->nMaxOperands)) + "\"";
    Wrong(strSentence);
}
