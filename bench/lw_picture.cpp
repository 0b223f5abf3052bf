#include "bench/lw_picture.h"

#include "tests/support/ct_samples.h"

#include <algorithm>
#include <random>

namespace tympan::bench {

namespace {

constexpr std::uint8_t kColours = 48;
constexpr std::uint8_t kInkStep = 5; // 48 colours, each with an ink of its own

std::vector<std::uint8_t> ColourRecord(std::uint8_t index)
{
    std::vector<std::uint8_t> record(kLwColourBytes);
    record[0] = index;
    std::fill_n(record.begin() + 2, 4, LwPicture::Ink(index));
    return record;
}

std::vector<std::uint8_t> LwHeader(PictureSize size)
{
    test::CtSample common;
    common.width = size.width;
    common.height = size.height;
    std::vector<std::uint8_t> header = common.Header();
    test::CtSample::PutText(header, kHeaderFileType.offset, "LW");
    header[kLwColoursNumber.offset] = kColours;
    for (std::uint8_t index = 1; index <= kColours; ++index) {
        const std::vector<std::uint8_t> record = ColourRecord(index);
        header.insert(header.end(), record.begin(), record.end());
    }
    return header;
}

std::span<const std::uint8_t> BytesOf(std::span<const Run> runs)
{
    return { reinterpret_cast<const std::uint8_t*>(runs.data()), runs.size_bytes() };
}

} // namespace

LwPicture::LwPicture(const std::string& path, PictureSize size, double meanRun)
    : path_(path), size_(size), rows_{ 0 }
{
    for (unsigned int row = 0; row < size.height; ++row)
        MakeRow(meanRun, row);
    WriteFile();
    BringIntoCache(path);
}

std::uint64_t LwPicture::FileBytes() const
{
    return static_cast<std::uint64_t>(LwFirstRow(kColours)) + RowBytes();
}

std::size_t LwPicture::RowBytes() const
{
    return runs_.size() * sizeof(Run) + size_.height * kLwDelimiterBytes * kLwDelimiters;
}

std::span<const Run> LwPicture::Row(unsigned int row) const
{
    return std::span(runs_).subspan(rows_[row], rows_[row + 1] - rows_[row]);
}

std::uint8_t LwPicture::Ink(std::uint8_t index)
{
    return static_cast<std::uint8_t>(index * kInkStep);
}

// Neighbours differ in colour, so that other formats have as many runs.
void LwPicture::MakeRow(double meanRun, std::uint32_t seed)
{
    std::minstd_rand random(seed + 1);
    std::geometric_distribution<std::uint32_t> more(1.0 / meanRun);
    std::uniform_int_distribution<unsigned int> otherColour(1, kColours - 1);
    unsigned int colour = 0;
    for (std::uint32_t left = size_.width; left != 0;) {
        const std::uint32_t length =
            std::min<std::uint32_t>({ more(random) + 1, kLongestRun, left });
        colour = (colour + otherColour(random)) % kColours;
        runs_.push_back(
            { static_cast<std::uint8_t>(colour + 1), static_cast<std::uint8_t>(length) });
        left -= length;
    }
    rows_.push_back(runs_.size());
}

void LwPicture::WriteFile() const
{
    constexpr std::array<std::uint8_t, kLwDelimiterBytes> kDelimiter{};
    std::vector<std::uint8_t> block;
    const auto append = [&](std::span<const std::uint8_t> bytes) {
        block.insert(block.end(), bytes.begin(), bytes.end());
    };
    append(LwHeader(size_));
    for (unsigned int row = 0; row < size_.height; ++row) {
        append(kDelimiter);
        append(BytesOf(Row(row)));
        append(kDelimiter);
    }
    NewFile(path_).Write(block);
}

std::span<const std::uint8_t> PlainRows::Next()
{
    TakeDelimiter();
    for (std::size_t x = 0; x < pixels_.size();) {
        const Run run = Take();
        Require(run.length <= pixels_.size() - x, "a run passes the width");
        std::fill_n(pixels_.begin() + static_cast<std::ptrdiff_t>(x), run.length, run.index);
        x += run.length;
    }
    TakeDelimiter();
    return pixels_;
}

void PlainRows::TakeDelimiter()
{
    Require(IsDelimiter(Take()), "a delimiter is missing");
}

Run PlainRows::Take()
{
    Require(bytes_.size() - at_ >= sizeof(Run), "rows are missing");
    at_ += sizeof(Run);
    return { bytes_[at_ - 2], bytes_[at_ - 1] };
}

void ExpandRow(std::span<const Run> row, const std::array<std::uint8_t, 256>& values,
               std::span<std::uint8_t> pixels)
{
    for (const Run run : row) {
        std::fill_n(pixels.begin(), run.length, values[run.index]);
        pixels = pixels.subspan(run.length);
    }
}

std::array<std::uint8_t, 256> Indexes()
{
    std::array<std::uint8_t, 256> values{};
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<std::uint8_t>(i);
    return values;
}

std::array<std::uint8_t, 256> Inks()
{
    std::array<std::uint8_t, 256> values{};
    for (std::uint8_t index = 1; index <= kColours; ++index)
        values[index] = LwPicture::Ink(index);
    return values;
}

void RequireInks(const LwPicture& picture, std::span<const std::uint8_t> pixels)
{
    const std::size_t width = picture.Size().width;
    std::vector<std::uint8_t> expected(width);
    for (unsigned int row = 0; row < pixels.size() / width; ++row) {
        ExpandRow(picture.Row(row), Inks(), expected);
        const auto given = pixels.subspan(row * width, width);
        Require(std::equal(given.begin(), given.end(), expected.begin()), "the pixels are wrong");
    }
}

} // namespace tympan::bench
