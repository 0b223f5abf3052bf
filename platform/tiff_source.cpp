#include "platform/tiff_source.h"

#include "platform/claims.h"
#include "platform/file_system.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <new>
#include <vector>

namespace tympan {

namespace {

// The largest piece that libtiff may allocate.
tmsize_t LargestPiece(std::uint64_t fileLength)
{
    constexpr std::uint64_t kMost = std::numeric_limits<tmsize_t>::max();
    const std::uint64_t claim =
        fileLength > kMost / kMostExpansion ? kMost : fileLength * kMostExpansion;
    return static_cast<tmsize_t>(std::max(kFreeClaim, claim));
}

struct FreeOptions {
    void operator()(TIFFOpenOptions* options) const noexcept { TIFFOpenOptionsFree(options); }
};

// libtiff holds the names as texts one behind the other, each with a terminator.
std::vector<std::string> InkNames(TIFF* open)
{
    std::vector<std::string> names;
    const char* name = nullptr;
    std::uint16_t count = 0;
    if (TIFFGetField(open, TIFFTAG_INKNAMES, &name) == 0 || name == nullptr ||
        TIFFGetField(open, TIFFTAG_NUMBEROFINKS, &count) == 0)
        return names;
    for (; count != 0; --count, name += names.back().size() + 1)
        names.emplace_back(name);
    return names;
}

std::vector<std::uint16_t> ExtraSamples(TIFF* open)
{
    std::uint16_t count = 0;
    const std::uint16_t* kinds = nullptr;
    if (TIFFGetFieldDefaulted(open, TIFFTAG_EXTRASAMPLES, &count, &kinds) == 0 || kinds == nullptr)
        return {};
    return { kinds, kinds + count };
}

std::vector<std::array<std::uint16_t, 3>> ColourMap(TIFF* open, const tiff& record)
{
    constexpr unsigned int kMostBits = 8;
    const std::uint16_t* red = nullptr;
    const std::uint16_t* green = nullptr;
    const std::uint16_t* blue = nullptr;
    std::vector<std::array<std::uint16_t, 3>> colours;
    if (record.BitsPerSample > kMostBits ||
        TIFFGetField(open, TIFFTAG_COLORMAP, &red, &green, &blue) == 0)
        return colours;
    for (std::size_t i = 0; i != std::size_t{ 1 } << record.BitsPerSample; ++i)
        colours.push_back({ red[i], green[i], blue[i] });
    return colours;
}

} // namespace

int TiffReport::TakeError(TIFF*, void* report, const char*, const char* format,
                          std::va_list arguments) noexcept
{
    TiffReport& self = *static_cast<TiffReport*>(report);
    self.hasFailed_ = true;
    KeepTiffMessage([&] { return self.Named(FormatTiffMessage(format, arguments)); });
    return 1;
}

// A warning that comes behind an error would hide the reason of the failure.
int TiffReport::TakeWarning(TIFF*, void* report, const char*, const char* format,
                            std::va_list arguments) noexcept
{
    const TiffReport& self = *static_cast<const TiffReport*>(report);
    if (!self.hasFailed_)
        KeepTiffMessage([&] { return self.Named(FormatTiffMessage(format, arguments)); });
    return 1;
}

SeamFile::~SeamFile()
{
    if (owner_ == TiffOwner::library)
        CurrentFileSystem().Close(number_);
}

std::uint64_t SeamFile::Length() noexcept
{
    const IoResult size = CurrentFileSystem().Size(number_);
    if (!size)
        error_ = size.error;
    return static_cast<std::uint64_t>(size.value);
}

bool SeamFile::ReadAt(std::uint64_t position, std::span<std::byte> buffer) noexcept
{
    const IoResult read =
        CurrentFileSystem().ReadAt(number_, buffer, static_cast<std::int64_t>(position));
    if (!read)
        error_ = read.error;
    return static_cast<std::uint64_t>(read.value) == buffer.size();
}

tmsize_t SeamFile::Read(thandle_t file, void* buffer, tmsize_t size) noexcept
{
    return static_cast<SeamFile*>(file)->ReadOn(
        std::span(static_cast<std::byte*>(buffer), static_cast<std::size_t>(size)));
}

toff_t SeamFile::Seek(thandle_t file, toff_t offset, int from) noexcept
{
    return static_cast<SeamFile*>(file)->SeekTo(offset, from);
}

// Gives 0 for a failure too: libtiff takes a negative count into its sums.
tmsize_t SeamFile::ReadOn(std::span<std::byte> buffer) noexcept
{
    if (buffer.size() > allowance_)
        return 0;
    const IoResult read = CurrentFileSystem().ReadAt(number_, buffer, position_);
    if (!read)
        error_ = read.error;
    position_ += read.value;
    if (allowance_ != kUnlimited)
        allowance_ -= static_cast<std::uint64_t>(read.value);
    return static_cast<tmsize_t>(read.value);
}

toff_t SeamFile::SeekTo(toff_t offset, int from) noexcept
{
    // Leaves room for the largest read, so that no position wraps.
    constexpr toff_t kFarthest = std::numeric_limits<std::int64_t>::max() / 2;
    const toff_t start = from == SEEK_SET   ? 0
                         : from == SEEK_CUR ? static_cast<toff_t>(position_)
                                            : Length();
    if (offset > kFarthest || start > kFarthest - offset)
        return static_cast<toff_t>(-1);
    position_ = static_cast<std::int64_t>(start + offset);
    return start + offset;
}

bool TiffSource::Open()
{
    // Tags that all point at the same bytes would be read, and kept, once each: what a directory
    // makes libtiff read is held against the file.
    constexpr std::uint64_t kFewTags = 1U << 20U;
    Close();
    const std::uint64_t length = file.Length();
    const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
    if (!options)
        throw std::bad_alloc();
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), LargestPiece(length));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), &TiffReport::TakeError, &report);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), &TiffReport::TakeWarning, &report);
    file.Rewind();
    file.Allow(2 * length + kFewTags);
    libtiff_.reset(TIFFClientOpenExt(report.FileName().c_str(), "r", &file, &SeamFile::Read,
                                     &SeamFile::Write, &SeamFile::Seek, &SeamFile::Close,
                                     &SeamFile::Size, nullptr, nullptr, options.get()));
    file.Allow(SeamFile::kUnlimited);
    return libtiff_ != nullptr;
}

void FillRecord(tiff& record, TIFF* open)
{
    record.ImageWidth = TiffField<std::uint32_t>(open, TIFFTAG_IMAGEWIDTH);
    record.ImageLength = TiffField<std::uint32_t>(open, TIFFTAG_IMAGELENGTH);
    record.BitsPerSample = TiffField<std::uint16_t>(open, TIFFTAG_BITSPERSAMPLE);
    record.Compression = TiffField<std::uint16_t>(open, TIFFTAG_COMPRESSION);
    record.PhotometricInterpretation = TiffField<std::uint16_t>(open, TIFFTAG_PHOTOMETRIC);
    record.SamplesPerPixel = TiffField<std::uint16_t>(open, TIFFTAG_SAMPLESPERPIXEL);
    record.XResolution = TiffField<float>(open, TIFFTAG_XRESOLUTION);
    record.YResolution = TiffField<float>(open, TIFFTAG_YRESOLUTION);
}

TiffInfo InfoOf(TIFF* open, const tiff& record)
{
    return { TiffField<std::uint16_t>(open, TIFFTAG_RESOLUTIONUNIT), InkNames(open),
             ExtraSamples(open), ColourMap(open, record) };
}

} // namespace tympan
