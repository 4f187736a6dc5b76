// Runs a fuzzer on files, and on all files of folders, one after the other.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize);

namespace {

namespace fs = std::filesystem;

int g_nRun = 0;

void Run(fs::path const& path) {
    std::ifstream file(path, std::ios::binary);
    std::string const bytes(std::istreambuf_iterator<char>(file), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size());
    ++g_nRun;
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (!fs::is_directory(argv[i])) {
            Run(argv[i]);
            continue;
        }
        for (auto const& entry : fs::recursive_directory_iterator(argv[i])) {
            if (entry.is_regular_file()) Run(entry.path());
        }
    }
    std::printf("%d inputs\n", g_nRun);
    return g_nRun > 0 ? 0 : 1;
}
