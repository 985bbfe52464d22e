// What the address check must say, worked out another way than the library does: by cutting the
// address into pieces first and asking each piece for its fault. And the addresses to try.
#pragma once

#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace email_model
{
struct Outcome
{
    std::string address; // as it is handed back
    int nResult = 0;
    int nPosition = -1;
    std::string message;
};

inline const std::string kMissingAt = "Missing  @  ";
inline const std::string kAtFirst = "@  is in invalid location in email.";
inline const std::string kBadByte = "invalid character in email.";
inline const std::string kLongLabel =
    "Invalid Domain name. Domain name length must be less than 64 characters.";
inline const std::string kDot = "Character  \".\" is in Invalid location.";
inline const std::string kNoDot = "Invalid Domain name.";

// Made by the compiler: Clang's programs for Windows construct the last of several inline variables first.
inline constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
inline constexpr std::string_view kLocalBytes =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.";
inline constexpr std::string_view kLabelBytes = kLocalBytes.substr(0, kLocalBytes.size() - 1);

inline Outcome Expect(const std::string& text)
{
    constexpr std::size_t npos = std::string::npos;
    Outcome outcome;
    const std::size_t nFirst = text.find_first_not_of(kWhiteSpace);
    if (nFirst == npos)
        return outcome;
    outcome.address = text.substr(nFirst, text.find_last_not_of(kWhiteSpace) + 1 - nFirst);
    const auto fault = [&outcome](std::size_t nPosition, const std::string& message) {
        outcome.nPosition = static_cast<int>(nPosition);
        outcome.message = message;
        return outcome;
    };

    const std::size_t nAt = outcome.address.find('@');
    if (nAt == npos)
        return fault(npos, kMissingAt);
    if (nAt == 0)
        return fault(0, kAtFirst);
    const std::string local = outcome.address.substr(0, nAt);
    if (local.find_first_not_of(kLocalBytes) != npos)
        return fault(local.find_first_not_of(kLocalBytes), kBadByte);

    std::vector<std::string> labels(1);
    for (const char ch : outcome.address.substr(nAt + 1))
    {
        if (ch == '.')
            labels.emplace_back();
        else
            labels.back() += ch;
    }
    std::size_t nStart = nAt + 1; // counted from 0
    for (const std::string& label : labels)
    {
        if (label.size() > 64)
            return fault(nStart + 1, kLongLabel);
        if (label.empty())
            return fault(nStart + 1, kDot);
        const std::size_t nBad = label.find_first_not_of(kLabelBytes);
        if (nBad != npos)
            return fault(nStart + nBad + 1, kBadByte);
        nStart += label.size() + 1;
    }
    if (labels.size() == 1)
        return fault(nAt + 1, kNoDot);
    outcome.nResult = 1;
    return outcome;
}

// Addresses at random, always the same ones: wild bytes, bytes that matter, sound addresses with
// a few bytes changed, and labels around the limit.
class Generator
{
public:
    std::string Next()
    {
        switch (m_nNext++ % 4)
        {
        case 0:
            return WildBytes(Below(24));
        case 1:
            return From("ab@.@._-@. \t\r+\x81\x40\x5C\xE0\xFC", Below(16));
        case 2:
            return Changed(Sound());
        default:
            return Changed(NearLimit());
        }
    }

private:
    std::size_t Below(std::size_t nLimit) { return m_random() % nLimit; }

    std::string WildBytes(std::size_t nLength)
    {
        std::string text;
        while (text.size() < nLength)
            text += static_cast<char>(1 + Below(255));
        return text;
    }
    std::string From(std::string_view bytes, std::size_t nLength)
    {
        std::string text;
        while (text.size() < nLength)
            text += bytes[Below(bytes.size())];
        return text;
    }
    std::string Sound()
    {
        std::string text = From(kWhiteSpace, Below(3)) + From(kLocalBytes, 1 + Below(9)) + '@';
        text += From(kLabelBytes, 1 + Below(6));
        for (std::size_t n = Below(4); n > 0; --n)
            text += '.' + From(kLabelBytes, 1 + Below(5));
        return text + From(kWhiteSpace, Below(3));
    }
    std::string NearLimit()
    {
        std::string text = From(kLocalBytes, 1 + Below(70)) + '@';
        for (std::size_t n = 1 + Below(3); n > 0; --n)
            text += From(kLabelBytes, 63 + Below(3)) + '.';
        return text + "com";
    }
    std::string Changed(std::string text)
    {
        for (std::size_t n = Below(3); n > 0; --n)
            text[Below(text.size())] = static_cast<char>(1 + Below(255));
        return text;
    }

    std::mt19937 m_random{20};
    unsigned m_nNext = 0;
};

struct Case
{
    const char* pszSentence;
    std::string text;
    int nResult;
    int nPosition;
    std::string message;
    std::string address; // as it is handed back
};

// Each rule and each order of rules by hand, so that a mistake in the model shows, too.
inline std::vector<Case> Cases()
{
    const std::string long64(64, 'x');
    const std::string long65(65, 'x');
    return {
        {"white space around is removed", "  user.name@example.com  ", 1, -1, "",
         "user.name@example.com"},
        {"all six kinds of white space are removed", " \t\n\v\f\ra@b.c\r\f\v\n\t ", 1, -1, "",
         "a@b.c"},
        {"nothing at all has no message", "", 0, -1, "", ""},
        {"white space alone is nothing at all", " \t\n\v\f\r", 0, -1, "", ""},
        {"no at sign", "username.com", 0, -1, kMissingAt, "username.com"},
        {"no at sign outranks a bad byte", "user name+", 0, -1, kMissingAt, "user name+"},
        {"the at sign comes first", "@example.com", 0, 0, kAtFirst, "@example.com"},
        {"the at sign comes first, after white space", "\t@example.com", 0, 0, kAtFirst,
         "@example.com"},
        {"an at sign alone", "@", 0, 0, kAtFirst, "@"},
        {"at signs alone", "@@", 0, 0, kAtFirst, "@@"},
        {"a space in the local part is counted from 0", "us er@example.com", 0, 2, kBadByte,
         "us er@example.com"},
        {"positions count the trimmed address", "   us er@example.com", 0, 2, kBadByte,
         "us er@example.com"},
        {"a plus sign", "user+tag@example.com", 0, 4, kBadByte, "user+tag@example.com"},
        {"the first byte is bad", "'user@example.com", 0, 0, kBadByte, "'user@example.com"},
        {"the last byte of the local part is bad", "user!@example.com", 0, 4, kBadByte,
         "user!@example.com"},
        {"the leftmost of two bad bytes", "u!s!@example.com", 0, 1, kBadByte, "u!s!@example.com"},
        {"the local part outranks the domain", "us er@.", 0, 2, kBadByte, "us er@."},
        {"a space in the domain is counted from 1", "user@exa mple.com", 0, 9, kBadByte,
         "user@exa mple.com"},
        {"a tab inside is not white space around", "user@exa\tmple.com", 0, 9, kBadByte,
         "user@exa\tmple.com"},
        {"nothing after the at sign", "user@", 0, 6, kDot, "user@"},
        {"a dot after the at sign", "user@.com", 0, 6, kDot, "user@.com"},
        {"two dots together", "user@example..com", 0, 14, kDot, "user@example..com"},
        {"a dot at the end, one past the last byte", "user@example.com.", 0, 18, kDot,
         "user@example.com."},
        {"a dot alone", "user@.", 0, 6, kDot, "user@."},
        {"a domain without a dot", "user@localhost", 0, 5, kNoDot, "user@localhost"},
        {"a bad byte outranks the missing dot", "user@exam!ple", 0, 10, kBadByte, "user@exam!ple"},
        {"a second at sign is a bad byte", "user@a@b.com", 0, 7, kBadByte, "user@a@b.com"},
        {"two at signs together", "ab@@x.com", 0, 4, kBadByte, "ab@@x.com"},
        {"a label of 64 bytes passes", "a@" + long64 + ".com", 1, -1, "", "a@" + long64 + ".com"},
        {"a label of 65 bytes does not", "a@" + long65 + ".com", 0, 3, kLongLabel,
         "a@" + long65 + ".com"},
        {"a later label of 65 bytes", "a@b." + long65, 0, 5, kLongLabel, "a@b." + long65},
        {"a last label of 64 bytes passes", "a@b." + long64, 1, -1, "", "a@b." + long64},
        {"only the label counts, not the domain", "a@" + long64 + "." + long64 + "." + long64, 1,
         -1, "", "a@" + long64 + "." + long64 + "." + long64},
        {"a long label outranks its bad byte", "a@!" + long64 + ".com", 0, 3, kLongLabel,
         "a@!" + long64 + ".com"},
        {"a bad byte outranks a later long label", "a@b!." + long65, 0, 4, kBadByte,
         "a@b!." + long65},
        {"an empty label outranks a later bad byte", "a@b..!", 0, 5, kDot, "a@b..!"},
        {"a long label outranks the missing dot", "a@" + long65, 0, 3, kLongLabel, "a@" + long65},
        {"a label of 64 bytes without a dot", "a@" + long64, 0, 2, kNoDot, "a@" + long64},
        {"the local part has no limit", long65 + long65 + "@b.c", 1, -1, "",
         long65 + long65 + "@b.c"},
        {"dots are free in the local part", ".user..name.@example.com", 1, -1, "",
         ".user..name.@example.com"},
        {"a local part of one dot", ".@b.c", 1, -1, "", ".@b.c"},
        {"labels may begin and end with - and _", "user@-example-.c_m", 1, -1, "",
         "user@-example-.c_m"},
        {"a last label of one letter", "user@example.c", 1, -1, "", "user@example.c"},
        {"a last label of digits", "user@example.1", 1, -1, "", "user@example.1"},
        {"case is kept", "User.Name@Example.COM", 1, -1, "", "User.Name@Example.COM"},
        {"a byte above 127 in the local part", "us\xE9r@example.com", 0, 2, kBadByte,
         "us\xE9r@example.com"},
        {"a byte above 127 in the domain", "user@ex\xE9mple.com", 0, 8, kBadByte,
         "user@ex\xE9mple.com"},
        {"byte 128", "\x80@b.c", 0, 0, kBadByte, "\x80@b.c"},
        {"byte 255", "a@b.\xFF", 0, 5, kBadByte, "a@b.\xFF"},
        {"a no-break space is not white space", "\xA0user@b.c", 0, 0, kBadByte, "\xA0user@b.c"},
        {"an at sign is one after a lead byte, too", "us\x81@example.com", 0, 2, kBadByte,
         "us\x81@example.com"},
        {"a lead byte alone before the at sign", "\x81@b.c", 0, 0, kBadByte, "\x81@b.c"},
        {"an at sign that could be a trail byte is the only one", "\x81@", 0, 0, kBadByte, "\x81@"},
        {"a lead byte in front of a dot in the domain", "a@b\x81.c", 0, 4, kBadByte, "a@b\x81.c"},
        {"a lead byte before white space at the end", "a@b.c\x81 ", 0, 6, kBadByte, "a@b.c\x81"},
        {"a backslash as a trail byte", "\x95\x5C@b.c", 0, 0, kBadByte, "\x95\x5C@b.c"},
    };
}

// Addresses of 100 KB, one for each outcome that can be that long.
inline std::vector<std::string> LongAddresses()
{
    constexpr std::size_t kLength = 100 * 1024;
    const std::string letters(kLength, 'x');
    std::string labels = "a@b";
    while (labels.size() < kLength)
        labels += "." + letters.substr(0, 64);
    return {letters,
            std::string(kLength, ' '),
            std::string(kLength, '@'),
            letters + "@b.c",
            letters + "!@b.c",
            "a@" + letters,
            labels,
            labels + "x",
            labels + ".",
            labels + ".!",
            std::string(kLength, '\t') + "a@b.c" + std::string(kLength, '\r'),
            "a@" + std::string(kLength, '.'),
            std::string(kLength, '.') + "@b.c"};
}
} // namespace email_model
