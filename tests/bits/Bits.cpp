// Prints a hash of what the operations of each room compute: the same number under every compiler and at
// every optimisation level. The models are made of numbers by chance and of exact ones, since a generator's
// own arithmetic is not under test.

#include <cstdio>
#include <filesystem>
#include <random>

#include "selfcheck/Record.h"

int main() {
    namespace fs = std::filesystem;
    std::random_device random;
    fs::path folder;
    do {
        folder = fs::temp_directory_path() / ("varnet-bits-" + std::to_string(random()));
    } while (!fs::create_directory(folder));
    selfcheck::Record record;
    selfcheck::CheckLibrary(record, folder);
    fs::remove_all(folder);
    for (auto const& [name, hash] : record.Rooms())
        std::printf("%s = %016llx\n", name.c_str(), static_cast<unsigned long long>(hash));
}
