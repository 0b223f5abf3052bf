// The pictures that can be imported, whatever their file: rows of 8-bit samples from the top down.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::tool {

/// What the samples of a pixel are: 0 black and 255 white for grey and RGB, the number of a colour of
/// the palette, or 0 no ink and 255 full ink.
enum class SampleKind { Grey, Index, Rgb, CmykInk };

constexpr std::size_t SamplesPerPixel(SampleKind kind)
{
    switch (kind) {
    case SampleKind::Grey:
    case SampleKind::Index: return 1;
    case SampleKind::Rgb: return 3;
    case SampleKind::CmykInk: break;
    }
    return 4;
}

/// Pixels per inch, both above 0 and finite.
struct PixelsPerInch {
    double x, y;
};

/// What is taken for a picture that tells none.
inline constexpr PixelsPerInch kUsualResolution{ 300.0, 300.0 };

/// Red, green and blue.
using Rgb = std::array<std::uint8_t, 3>;

/// What a picture's file tells about it.
struct SourceForm {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    SampleKind kind = SampleKind::Grey;
    std::optional<PixelsPerInch> resolution; ///< nothing when the file has none
    std::vector<std::uint8_t> profile;       ///< the ICC profile in the file, often none
    std::vector<Rgb> palette;                ///< the colour of each index that a row may hold
    bool isJpeg = false;                     ///< whether it can be taken as coefficients too
    bool hasExif = false;                    ///< a JPEG's notes: Exif, XMP
    std::vector<std::string> remarks;        ///< what the person should know, though all goes on

    std::size_t RowBytes() const { return std::size_t{ width } * SamplesPerPixel(kind); }
};

/// A picture's file, open. What is transparent comes composed on white. Memory is that of some
/// rows, but for interlaced and progressive files, which are held whole.
class PictureSource {
  public:
    PictureSource() = default;
    PictureSource(const PictureSource&) = delete;
    PictureSource& operator=(const PictureSource&) = delete;
    virtual ~PictureSource() = default;

    const SourceForm& Form() const { return form_; }

    /// Reads the next row of `Form().RowBytes()` bytes.
    /// \throws FileFailure when the file ends early or is damaged.
    virtual void ReadRow(std::span<std::uint8_t> row) = 0;

  protected:
    void Remark(std::string_view text) { form_.remarks.emplace_back(text); }
    /// Remarks on a picture that the file wants turned or mirrored: 1 is the right way up.
    void RemarkOnOrientation(unsigned int orientation);

    SourceForm form_;
};

/// Opens a JPEG, PNG or TIFF file, which it knows by its first bytes and not by its name.
/// \throws FileFailure for any other, and for one that can't be read.
std::unique_ptr<PictureSource> OpenPictureSource(const std::string& path);

/// Whether the first bytes are those of a JPEG file.
/// \throws FileFailure when the file can't be read.
bool IsJpegFile(const std::string& path);

/// The same picture with the colours of its palette in place of their numbers.
std::unique_ptr<PictureSource> WithoutPalette(std::unique_ptr<PictureSource> source);

std::unique_ptr<PictureSource> OpenJpegSource(const std::string& path);
std::unique_ptr<PictureSource> OpenPngSource(const std::string& path);
std::unique_ptr<PictureSource> OpenTiffSource(const std::string& path);

/// \name What the kinds of files have in common
/// @{

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

/// Opens a plain file to be read.
/// \throws FileFailure
Stream OpenStream(const std::string& path);

/// A resolution as a file has it; nothing when a side of it is no finite number above 0.
std::optional<PixelsPerInch> ResolutionOf(double x, double y, double inchesPerUnit);

inline constexpr double kInchesPerCentimetre = 1.0 / 2.54;
inline constexpr double kInchesPerMetre = 100.0 / 2.54;

/// \throws FileFailure for a picture without pixels, or with more on a side than can be held.
void RequireSensibleSize(const std::string& path, std::uint64_t width, std::uint64_t height);

/// Refuses to take more memory at once than a file of this length can fill.
/// \param mostForByte how many bytes of the picture one of the file can stand for
void RequireHeldClaim(const std::string& path, std::uint64_t bytes, std::uint64_t mostForByte);

/// A sample over white paper.
constexpr std::uint8_t OnWhite(unsigned int sample, unsigned int alpha)
{
    return static_cast<std::uint8_t>((sample * alpha + 255U * (255U - alpha) + 127U) / 255U);
}

/// The nearest sample of 8 bits to one of 16.
constexpr std::uint8_t EightBits(unsigned int sixteen)
{
    return static_cast<std::uint8_t>((sixteen + 128U) / 257U);
}
/// @}

} // namespace tympan::tool
