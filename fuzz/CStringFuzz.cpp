// Sequences of string operations, on a few strings that copy from each other, against std::string.
#include <afx.h>

#include "fuzz/Fuzz.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace
{
constexpr std::size_t kMaxLength = 2000; // longer strings are emptied
constexpr std::size_t kMaxText = 12;
constexpr std::size_t npos = std::string::npos;

std::string UpToZero(const std::string& text)
{
    return text.substr(0, text.find('\0'));
}

int Index(std::size_t n)
{
    return n == npos ? -1 : static_cast<int>(n);
}

// Positions, in bytes, of all matches that are made of whole characters and do not overlap.
std::vector<std::size_t> Matches(const std::string& text, const std::string& sub)
{
    const std::vector<std::string> in = fuzz::Characters(text);
    std::vector<std::size_t> matches;
    std::size_t nOffset = 0;
    for (std::size_t i = 0; i < in.size();)
    {
        std::string joined;
        std::size_t n = i;
        while (n < in.size() && joined.size() < sub.size())
            joined += in[n++];
        if (joined == sub && !sub.empty())
        {
            matches.push_back(nOffset);
            nOffset += joined.size();
            i = n;
        }
        else
            nOffset += in[i++].size();
    }
    return matches;
}

std::size_t FindModel(const std::string& text, const std::string& sub, int iStart)
{
    if (iStart < 0 || static_cast<std::size_t>(iStart) > text.size())
        return npos;
    const auto nStart = static_cast<std::size_t>(iStart);
    if (sub.empty())
        return nStart;
    const std::vector<std::size_t> matches = Matches(text.substr(nStart), sub);
    return matches.empty() ? npos : nStart + matches.front();
}

std::string ReplaceModel(const std::string& text, const std::vector<std::size_t>& matches,
                         std::size_t cbOld, const std::string& by)
{
    std::string replaced;
    std::size_t nDone = 0;
    for (const std::size_t nMatch : matches)
    {
        replaced += text.substr(nDone, nMatch - nDone) + by;
        nDone = nMatch + cbOld;
    }
    return replaced + text.substr(nDone);
}

std::string MidModel(const std::string& text, int iFirst, int nCount)
{
    const std::size_t nFirst = iFirst < 0 ? 0 : static_cast<std::size_t>(iFirst);
    if (nFirst >= text.size() || nCount <= 0)
        return "";
    return text.substr(nFirst, static_cast<std::size_t>(nCount));
}

std::size_t SpacesAtStart(const std::string& text)
{
    return std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
}

class Session
{
public:
    explicit Session(fuzz::Input& input) : m_input(input) {}

    void Run()
    {
        for (int nSteps = 0; !m_input.IsEmpty() && nSteps < 64; ++nSteps)
        {
            Step();
            for (std::size_t i = 0; i < m_models.size(); ++i)
                CompareWithModel(i);
        }
    }

private:
    void CompareWithModel(std::size_t i)
    {
        CString& str = *m_strings[i];
        std::string& model = m_models[i];
        fuzz::Require(str.GetLength() == static_cast<int>(model.size()), "length");
        fuzz::Require(std::memcmp(str.GetString(), model.data(), model.size()) == 0, "bytes");
        fuzz::Require(str.GetString()[model.size()] == '\0', "terminator");
        fuzz::Require(str.IsEmpty() == model.empty(), "emptiness");
        if (model.size() > kMaxLength)
        {
            str.Empty();
            model.clear();
        }
    }

    // An index in and a little outside of a text.
    int Position(const std::string& text)
    {
        const auto nSpan = static_cast<unsigned>(text.size()) + 5;
        return static_cast<int>(m_input.Byte() % nSpan) - 2;
    }

    char Char() { return static_cast<char>(m_input.Byte()); }

    std::string Text() { return m_input.Bytes(m_input.Byte() % (kMaxText + 1)); }

    void Step()
    {
        const unsigned nOperation = m_input.Byte();
        const unsigned nOperands = m_input.Byte();
        const std::size_t i = nOperands % m_models.size();
        const std::size_t j = nOperands / 16 % m_models.size();
        CString& str = *m_strings[i];
        CString& strOther = *m_strings[j];
        std::string& model = m_models[i];
        const std::string other = m_models[j]; // a copy: the operation may change it
        switch (nOperation % 26)
        {
        case 0:
        {
            const std::string text = Text();
            str = CString(text.data(), static_cast<int>(text.size()));
            model = text;
            break;
        }
        case 1:
        {
            const std::string text = Text();
            str = text.c_str();
            model = UpToZero(text);
            break;
        }
        case 2:
            str = strOther;
            model = other;
            break;
        case 3:
            AssignFromWithin(str, model, strOther, other);
            break;
        case 4:
            str += strOther;
            model += other;
            break;
        case 5:
        {
            const std::string text = Text();
            str += text.c_str();
            model += UpToZero(text);
            break;
        }
        case 6:
        {
            const char ch = Char();
            str += ch;
            model += ch;
            break;
        }
        case 7:
        {
            const std::size_t n = m_input.Byte() % (other.size() + 1);
            str += strOther.GetString() + n;
            model += UpToZero(other.substr(n));
            break;
        }
        case 8:
        {
            const int iFirst = Position(other);
            const int nCount = Position(other);
            str = strOther.Mid(iFirst, nCount);
            model = MidModel(other, iFirst, nCount);
            break;
        }
        case 9:
        {
            const int iFirst = Position(other);
            str = strOther.Mid(iFirst);
            model = MidModel(other, iFirst, static_cast<int>(other.size()));
            break;
        }
        case 10:
        {
            const int nCount = Position(other);
            str = strOther.Left(nCount);
            model = MidModel(other, 0, nCount);
            break;
        }
        case 12:
        {
            const char ch = Char();
            const int iStart = Position(model);
            fuzz::Require(str.Find(ch, iStart) == FindCharModel(model, ch, iStart), "Find(char)");
            break;
        }
        case 14:
        {
            const char ch = Char();
            const std::vector<std::size_t> matches = Matches(model, std::string(1, ch));
            fuzz::Require(str.ReverseFind(ch) == Index(matches.empty() ? npos : matches.back()),
                          "ReverseFind");
            break;
        }
        case 15:
        {
            const char chOld = Char();
            const char chNew = Char();
            const std::vector<std::size_t> matches = Matches(model, std::string(1, chOld));
            const std::size_t nCount = chOld == chNew ? 0 : matches.size();
            fuzz::Require(str.Replace(chOld, chNew) == static_cast<int>(nCount), "Replace(char)");
            model = ReplaceModel(model, matches, 1, std::string(1, chNew));
            break;
        }
        case 16:
        {
            const std::string textOld = Text();
            const std::string textNew = Text();
            Replace(str, model, textOld.c_str(), textNew.c_str());
            break;
        }
        case 17:
            // Texts that lie inside the string itself.
            Replace(str, model, str.GetString() + m_input.Byte() % (model.size() + 1),
                    str.GetString() + m_input.Byte() % (model.size() + 1));
            break;
        case 18:
            str.TrimLeft();
            model.erase(0, SpacesAtStart(model));
            break;
        case 19:
            str.TrimRight();
            std::reverse(model.begin(), model.end());
            model.erase(0, SpacesAtStart(model));
            std::reverse(model.begin(), model.end());
            break;
        case 20:
            str.Empty();
            model.clear();
            break;
        case 21:
            GetAt(str, model);
            break;
        case 22:
            WriteToBuffer(str, model);
            break;
        case 24:
            Concatenate(str, model, strOther, other);
            break;
        default: // the numbers stay, for the sake of the seeds
            break;
        }
    }

    // The text given may be the end of the very string that it is given to.
    void AssignFromWithin(CString& str, std::string& model, const CString& strOther,
                          const std::string& other)
    {
        const std::size_t n = m_input.Byte() % (other.size() + 1);
        str = strOther.GetString() + n;
        model = UpToZero(other.substr(n));
    }

    // A zero is found, too, where it stands inside the text.
    static int FindCharModel(const std::string& model, char ch, int iStart)
    {
        return Index(FindModel(model, std::string(1, ch), iStart));
    }

    static void Replace(CString& str, std::string& model, const char* pszOld, const char* pszNew)
    {
        const std::string textOld = pszOld;
        const std::string textNew = pszNew;
        const std::vector<std::size_t> matches = Matches(model, textOld);
        fuzz::Require(str.Replace(pszOld, pszNew) == static_cast<int>(matches.size()),
                      "Replace(text)");
        model = ReplaceModel(model, matches, textOld.size(), textNew);
    }

    void GetAt(const CString& str, const std::string& model)
    {
        const int i = Position(model);
        bool bRefused = false;
        try
        {
            const char ch = str.GetAt(i);
            fuzz::Require(ch == model.c_str()[i], "GetAt");
        }
        catch (CInvalidArgException* pException)
        {
            pException->Delete();
            bRefused = true;
        }
        fuzz::Require(bRefused == (i < 0 || i > static_cast<int>(model.size())), "bounds");
    }

    void WriteToBuffer(CString& str, std::string& model)
    {
        const std::size_t cbBuffer = m_input.Byte() % 40;
        const std::string text = m_input.Bytes(std::min(cbBuffer, kMaxText));
        char* const pBuffer = str.GetBuffer(static_cast<int>(cbBuffer));
        fuzz::Require(std::memcmp(pBuffer, model.c_str(), model.size() + 1) == 0, "buffer");
        std::memcpy(pBuffer, text.data(), text.size());
        std::string written = model;
        written.replace(0, std::min(text.size(), model.size()), text);
        if (m_input.Byte() % 2 != 0)
        {
            pBuffer[text.size()] = '\0';
            str.ReleaseBuffer();
            model = UpToZero(text);
        }
        else
        {
            str.ReleaseBuffer(static_cast<int>(written.size()));
            model = written;
        }
    }

    void Concatenate(CString& str, std::string& model, const CString& strOther,
                     const std::string& other)
    {
        const std::string zero = UpToZero(other);
        const CString strSums[] = {str + strOther, str + strOther.GetString(),
                                   strOther.GetString() + str};
        const std::string sums[] = {model + other, model + zero, zero + model};
        const std::size_t n = m_input.Byte() % 3;
        str = strSums[n];
        model = sums[n];
    }

    fuzz::Input& m_input;
    CString m_str[3];
    CFixedStringT<CString, 8> m_strFixed;
    std::array<CString*, 4> m_strings{&m_str[0], &m_str[1], &m_str[2], &m_strFixed};
    std::array<std::string, 4> m_models;
};
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pInput, std::size_t cbInput)
{
    fuzz::Input input(pInput, cbInput);
    fuzz::ChooseCodePage(input.Byte());
    Session(input).Run();
    return 0;
}
