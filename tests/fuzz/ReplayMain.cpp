#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

void replay(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string input{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    // Named before it runs: a harness that fails does so by ending the program.
    std::printf("%s\n", path.filename().c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

} // namespace

/// Runs every file of the folders given as arguments through the harness. Fails when there is none: a corpus that was
/// not found would otherwise look like one that passes.
int main(int argc, char** argv)
{
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            if (!entry.is_regular_file())
                continue;
            replay(entry.path());
            ++count;
        }
    }
    std::printf("%zu inputs\n", count);
    return count > 0 ? 0 : 1;
}
