// Writing rows of line work: from grey pixels, and from runs and rows that the caller made.
#include "lw/lw_file.h"
#include "lw/lw_layout.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <vector>

namespace {

using tympan::Run;

// How many pixels from `first` on are like it, eight at a time.
std::size_t LikeFirst(std::span<const unsigned char> pixels)
{
    std::size_t count = 1;
    std::array<unsigned char, 8> like{};
    like.fill(pixels[0]);
    while (count + like.size() <= pixels.size() &&
           std::memcmp(pixels.data() + count, like.data(), like.size()) == 0)
        count += like.size();
    while (count < pixels.size() && pixels[count] == pixels[0])
        ++count;
    return count;
}

std::vector<Run> RunsOf(std::span<const unsigned char> pixels)
{
    std::vector<Run> runs;
    while (!pixels.empty()) {
        const std::size_t length =
            LikeFirst(pixels.first(std::min<std::size_t>(pixels.size(), tympan::kLongestRun)));
        runs.push_back({ tympan::LwIndexOfGrey(pixels[0]), static_cast<std::uint8_t>(length) });
        pixels = pixels.subspan(length);
    }
    return runs;
}

void WriteAll(CFile& file, std::span<const unsigned char> bytes)
{
    constexpr std::size_t kMostAtOnce = 1U << 30U;
    while (!bytes.empty()) {
        const std::size_t count = std::min(bytes.size(), kMostAtOnce);
        file.Write(bytes.data(), static_cast<unsigned int>(count));
        bytes = bytes.subspan(count);
    }
}

} // namespace

unsigned int LWFileInterface::SetLWPictureRow(unsigned char* pixels, CFile& file,
                                              unsigned long count)
{
    if (count == 0)
        return 0;
    std::vector<Run> row = RunsOf({ pixels, count });
    const std::size_t runs = row.size();
    row.insert(row.begin(), Run{});
    row.push_back({});
    WriteAll(file,
             { reinterpret_cast<const unsigned char*>(row.data()), row.size() * sizeof(Run) });
    return static_cast<unsigned int>(runs);
}

void LWFileInterface::SaveLWRun(CFile& file, unsigned char index, unsigned char length)
{
    const std::array<unsigned char, 2> run{ index, length };
    file.Write(run.data(), sizeof run);
}

void LWFileInterface::SaveLWRow(CFile& file, unsigned char* data, long size)
{
    if (size > 0)
        WriteAll(file, { data, static_cast<std::size_t>(size) });
}
