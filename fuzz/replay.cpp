// Entry point of a fuzz target without a fuzzer: runs every file of the folders given, once. Fails
// when a folder holds none.
#include "fuzz/Fuzz.h"

#include <filesystem>
#include <fstream>
#include <iterator>

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i)
    {
        int nFiles = 0;
        for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
        {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), {}};
            // Last on the screen when the target ends the program.
            std::printf("%s\n", entry.path().filename().c_str());
            std::fflush(stdout);
            // Allocated to size: a read behind the end does not go unseen.
            const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
            LLVMFuzzerTestOneInput(input.data(), input.size());
            ++nFiles;
        }
        if (nFiles == 0)
        {
            std::fprintf(stderr, "%s holds no inputs\n", argv[i]);
            return 1;
        }
    }
    return argc > 1 ? 0 : 1;
}
