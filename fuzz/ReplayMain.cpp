// Runs a fuzz target over files and folders of inputs, for compilers without libFuzzer.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace {

void replay(std::filesystem::path const& file)
{
    std::ifstream in(file, std::ios::binary);
    std::vector<char> const bytes{std::istreambuf_iterator<char>(in), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char** argv)
{
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        std::filesystem::path const input(argv[i]);
        if (!std::filesystem::is_directory(input)) {
            replay(input);
            ++count;
            continue;
        }
        for (auto const& entry : std::filesystem::recursive_directory_iterator(input)) {
            if (entry.is_regular_file()) {
                replay(entry.path());
                ++count;
            }
        }
    }
    std::cout << "replayed " << count << " inputs\n";
    return count == 0 ? 1 : 0;
}
