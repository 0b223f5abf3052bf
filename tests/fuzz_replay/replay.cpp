// Stands in the place of libFuzzer: gives a fuzz target each file of a folder once.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" [[gnu::weak]] int LLVMFuzzerInitialize(int* count, char*** arguments);

namespace {

std::vector<char> ContentsOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(file), {} };
}

/// In a block of the very size, so that a sanitizer sees what reaches over its end.
void Feed(const std::filesystem::path& path)
{
    std::printf("%s\n", path.filename().string().c_str());
    std::fflush(stdout); // the last name is that of the input that ended the program
    std::vector<char> bytes = ContentsOf(path);
    bytes.shrink_to_fit();
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

} // namespace

int main(int count, char** arguments)
{
    if (LLVMFuzzerInitialize != nullptr)
        LLVMFuzzerInitialize(&count, &arguments);
    if (count != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    int fed = 0;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
        Feed(entry.path());
        ++fed;
    }
    std::printf("%d inputs\n", fed);
    return fed != 0 ? 0 : 1;
}
