// The address check, natively, beside a regular expression of the same rules and the bare pass by
// hand, over addresses of 10 to 100,000 bytes.
#include "bench/Addresses.h"
#include "bench/BareAddressCheck.h"
#include "validate/EmailSyntax.h"

#include <benchmark/benchmark.h>

#include <pthread.h>

#include <cstdio>
#include <regex>
#include <string>

namespace
{
const std::regex& Rules()
{
    static const std::regex s_rules("[ \\t-\\r]*[A-Za-z0-9_.-]+@[A-Za-z0-9_-]{1,64}"
                                    "(?:\\.[A-Za-z0-9_-]{1,64})+[ \\t-\\r]*",
                                    std::regex::optimize);
    return s_rules;
}

bool ByLibrary(const std::string& address)
{
    CFixedStringT<CString, 255> strAddress(address.c_str());
    CFixedStringT<CString, 73> strMessage;
    int nPosition = 0;
    return CheckEmailSyntax(strAddress, &nPosition, strMessage) != 0;
}

bool ByHand(std::string& address)
{
    int nPosition = 0;
    const char* pszMessage = nullptr;
    return BareAddressCheck(address.data(), &nPosition, &pszMessage) != 0;
}

bool ByRegex(const std::string& address)
{
    return std::regex_match(address, Rules());
}

template <class Check>
void Run(benchmark::State& state, Check check)
{
    std::string address = MakeAddress(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
    {
        bool bAccepted = check(address);
        if (!bAccepted)
        {
            state.SkipWithError("not accepted");
            break;
        }
        benchmark::DoNotOptimize(bAccepted);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
    state.SetComplexityN(state.range(0));
}

void Library(benchmark::State& state)
{
    Run(state, ByLibrary);
}

void Hand(benchmark::State& state)
{
    Run(state, ByHand);
}

void Regex(benchmark::State& state)
{
    Run(state, ByRegex);
}

BENCHMARK(Library)->RangeMultiplier(10)->Range(10, 100000)->Complexity(benchmark::oN);
BENCHMARK(Hand)->RangeMultiplier(10)->Range(10, 100000)->Complexity(benchmark::oN);
BENCHMARK(Regex)->RangeMultiplier(10)->Range(10, 100000)->Complexity(benchmark::oN);

// All three must say the same, or there is nothing to compare: every text of up to five of these
// bytes, and labels around the longest.
bool Agree(const std::string& text)
{
    std::string copy = text;
    const bool bLibrary = ByLibrary(text);
    if (bLibrary == ByHand(copy) && bLibrary == ByRegex(text))
        return true;
    std::fprintf(stderr, "the checks differ about \"%s\"\n", text.c_str());
    return false;
}

bool AllAgree()
{
    static const std::string kBytes = "a@. \x80";
    for (int n = 0; n < 3125; ++n)
    {
        std::string text;
        for (int rest = n, i = 0; i < 5; ++i, rest /= 5)
            text += kBytes[static_cast<std::size_t>(rest % 5)];
        if (!Agree(text) || !Agree("a@" + text))
            return false;
    }
    for (std::size_t cb = 63; cb < 67; ++cb)
    {
        if (!Agree("a@b." + std::string(cb, 'c')) || !Agree("a@" + std::string(cb, 'c') + ".b"))
            return false;
    }
    return true;
}

void* RunAll(void* pResult)
{
    if (AllAgree())
    {
        benchmark::RunSpecifiedBenchmarks();
        *static_cast<int*>(pResult) = 0;
    }
    return nullptr;
}
} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    // The regular expression recurses once a byte, and the longest address needs more stack than a
    // program gets.
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{1} << 30);
    int nResult = 1;
    pthread_t thread;
    if (pthread_create(&thread, &attributes, &RunAll, &nResult) == 0)
        pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return nResult;
}
