// A folder that lives as long as a test.
#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace tympan::test {

class TemporaryFolder {
  public:
    TemporaryFolder()
    {
        std::random_device seed;
        folder_ = std::filesystem::temp_directory_path() /
                  ("tympan-test-" + std::to_string(seed()) + std::to_string(seed()));
        std::filesystem::create_directories(folder_);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    const std::filesystem::path& Path() const { return folder_; }
    std::string Path(const std::string& name) const { return (folder_ / name).string(); }
    std::string operator/(const std::string& name) const { return Path(name); }

    /// How many files and folders stand in it.
    std::size_t Entries() const
    {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder_), {}));
    }

    /// Writes a file and gives its path.
    std::string File(const std::string& name, std::span<const unsigned char> bytes) const
    {
        std::ofstream out(Path(name), std::ios::binary);
        out.write(reinterpret_cast<const char*>(bytes.data()),
                  static_cast<std::streamsize>(bytes.size()));
        return Path(name);
    }

  private:
    std::filesystem::path folder_;
};

inline std::vector<unsigned char> BytesOf(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>() };
}

} // namespace tympan::test
