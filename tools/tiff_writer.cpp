#include "tiff_writer.h"

#include <algorithm>
#include <cerrno>
#include <cmath>

namespace tympan::tool {

namespace {

constexpr int PhotometricOf(TiffColour colour)
{
    switch (colour) {
    case TiffColour::Grey: break;
    case TiffColour::Rgb: return PHOTOMETRIC_RGB;
    case TiffColour::Ink: return PHOTOMETRIC_SEPARATED;
    }
    return PHOTOMETRIC_MINISBLACK;
}

// A plain TIFF has places of 32 bits. Compressed rows can be a little longer than plain ones.
const char* ModeFor(const WrittenForm& form, const TiffSamples& samples)
{
    constexpr std::uint64_t kMost = std::uint64_t{ 4000 } << 20U;
    const std::uint64_t rowBytes = form.width * std::uint64_t{ samples.Count() };
    return form.height > kMost / std::max<std::uint64_t>(rowBytes, 1) ? "w8" : "w";
}

std::uint32_t RowsPerStrip(const WrittenForm& form, const TiffSamples& samples)
{
    constexpr std::uint64_t kStripBytes = 256U << 10U;
    const std::uint64_t rowBytes = form.width * std::uint64_t{ samples.Count() };
    return static_cast<std::uint32_t>(
        std::max<std::uint64_t>(kStripBytes / std::max<std::uint64_t>(rowBytes, 1), 1));
}

} // namespace

std::size_t TiffSamples::Count() const
{
    switch (colour) {
    case TiffColour::Grey: break;
    case TiffColour::Rgb: return 3;
    case TiffColour::Ink: return inks.size();
    }
    return 1;
}

TiffWriter::TiffWriter(const OutputFile& output, const WrittenForm& form,
                       const TiffSamples& samples)
    : tiff_(output.WritingPath(), ModeFor(form, samples), output.Path())
{
    if (!SetTags(form, samples) || !SetResolution(form))
        tiff_.Fail("can't be written as TIFF");
}

bool TiffWriter::SetTags(const WrittenForm& form, const TiffSamples& samples)
{
    TIFF* const tiff = tiff_.Handle();
    return TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, form.width) == 1 &&
           TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, form.height) == 1 &&
           TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8) == 1 &&
           TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(samples.Count())) == 1 &&
           TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PhotometricOf(samples.colour)) == 1 &&
           TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == 1 &&
           TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE) == 1 &&
           TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL) == 1 &&
           TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, RowsPerStrip(form, samples)) == 1 &&
           (samples.inks.empty() || SetInks(samples.inks));
}

bool TiffWriter::SetInks(const std::vector<std::string>& inks)
{
    TIFF* const tiff = tiff_.Handle();
    std::string names;
    for (const std::string& ink : inks)
        names.append(ink.c_str(), ink.size() + 1); // with the zero byte behind it
    return TIFFSetField(tiff, TIFFTAG_INKSET, inks == CmykInks() ? INKSET_CMYK : INKSET_MULTIINK) ==
               1 &&
           TIFFSetField(tiff, TIFFTAG_NUMBEROFINKS, static_cast<int>(inks.size())) == 1 &&
           TIFFSetField(tiff, TIFFTAG_INKNAMES, static_cast<int>(names.size()), names.data()) == 1;
}

bool TiffWriter::SetResolution(const WrittenForm& form)
{
    const auto held = [](double perInch) { return std::isfinite(perInch) && perInch > 0.0; };
    if (!held(form.resolutionX) || !held(form.resolutionY))
        return true;
    TIFF* const tiff = tiff_.Handle();
    return TIFFSetField(tiff, TIFFTAG_XRESOLUTION, form.resolutionX) == 1 &&
           TIFFSetField(tiff, TIFFTAG_YRESOLUTION, form.resolutionY) == 1 &&
           TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH) == 1;
}

void TiffWriter::Write(std::span<const std::uint8_t> row)
{
    row_.assign(row.begin(), row.end()); // libtiff wants bytes that it may change
    errno = 0;                           // libtiff doesn't tell what the system said
    if (TIFFWriteScanline(tiff_.Handle(), row_.data(), nextRow_++, 0) != 1)
        tiff_.FailWriting();
}

void TiffWriter::Finish()
{
    tiff_.CloseWritten();
}

} // namespace tympan::tool
