// TIFF files: grey, palette, RGB and CMYK, in strips or tiles, samples together or in planes.
#include "bit_spreader.h"
#include "failure.h"
#include "names.h"
#include "picture_source.h"
#include "tiff_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string>

namespace tympan::tool {

namespace {

constexpr std::uint16_t kMostSamples = 16;
constexpr char kCutShort[] = "the TIFF data can't be read";

template <typename Number>
Number Field(TIFF* tiff, std::uint32_t tag)
{
    Number value{};
    TIFFGetFieldDefaulted(tiff, tag, &value);
    return value;
}

enum class Transparency { None, Straight, Multiplied };

// What the tags say about samples.
struct Layout {
    std::uint32_t width, height;
    std::uint16_t bits, samples, photometric, planarity;
    std::uint16_t colours; // samples of a pixel that are its colour
    Transparency transparency;

    bool InPlanes() const { return planarity == PLANARCONFIG_SEPARATE && samples > 1; }
    std::uint16_t Planes() const { return InPlanes() ? samples : std::uint16_t{ 1 }; }
    std::uint16_t SamplesOfPlane() const { return InPlanes() ? std::uint16_t{ 1 } : samples; }
    bool HasPalette() const { return photometric == PHOTOMETRIC_PALETTE; }
    bool IsOneSmallNumber() const { return samples == 1 && bits <= 8; } // each pixel
    std::uint64_t BytesFor(std::uint64_t pixels) const
    {
        return (pixels * SamplesOfPlane() * bits + 7) / 8;
    }
};

// ---- what the tags say

[[noreturn]] void Refuse(const std::string& path, const std::string& what)
{
    throw FileFailure(path, what + " aren't taken", {},
                      "Save the picture as grey, RGB or CMYK of 8 or 16 bits a sample.");
}

std::uint16_t ColoursOf(const std::string& path, std::uint16_t photometric)
{
    switch (photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_PALETTE: return 1;
    case PHOTOMETRIC_RGB: return 3;
    case PHOTOMETRIC_SEPARATED: return 4;
    case PHOTOMETRIC_YCBCR: Refuse(path, "YCbCr samples without JPEG compression");
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
    case PHOTOMETRIC_ITULAB: Refuse(path, "Lab colours");
    default: Refuse(path, "samples of photometric kind " + std::to_string(photometric));
    }
}

// What stands behind the colours of a pixel; only a first alpha has an effect.
Transparency TransparencyOf(TIFF* tiff)
{
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds);
    if (count == 0 || kinds == nullptr || kinds[0] == EXTRASAMPLE_UNSPECIFIED)
        return Transparency::None;
    return kinds[0] == EXTRASAMPLE_ASSOCALPHA ? Transparency::Multiplied : Transparency::Straight;
}

void RequireDepth(const std::string& path, TIFF* tiff, const Layout& layout)
{
    const bool few = layout.colours == 1 && layout.samples == 1 &&
                     (layout.bits == 1 || layout.bits == 2 || layout.bits == 4);
    if (!few && layout.bits != 8 && layout.bits != 16)
        Refuse(path, "samples of " + std::to_string(layout.bits) + " bits");
    const auto format = Field<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT);
    if (format != SAMPLEFORMAT_UINT && format != SAMPLEFORMAT_VOID)
        Refuse(path, "samples with a sign or a fraction");
}

// libtiff holds the names as texts one behind the other, each with a terminator.
std::vector<std::string> InkNames(TIFF* tiff)
{
    std::vector<std::string> names;
    const char* name = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_INKNAMES, &name) != 1 || name == nullptr)
        return names;
    const auto count = Field<std::uint16_t>(tiff, TIFFTAG_NUMBEROFINKS);
    for (std::uint16_t i = 0; i < count; ++i, name += names.back().size() + 1)
        names.emplace_back(name);
    return names;
}

// "Orange, ink 6": the inks that none of the four is; one without a name by its number.
std::string OtherInks(TIFF* tiff, const Layout& layout)
{
    std::vector<std::string> names = InkNames(tiff);
    names.resize(layout.samples - (layout.transparency == Transparency::None ? 0U : 1U));
    std::string others;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string name = !names[i].empty() ? names[i] : "ink " + std::to_string(i + 1);
        if (std::find(CmykInks().begin(), CmykInks().end(), name) == CmykInks().end())
            others += (others.empty() ? "" : ", ") + name;
    }
    return others;
}

void RequireFourInks(const std::string& path, TIFF* tiff, const Layout& layout)
{
    if (layout.photometric != PHOTOMETRIC_SEPARATED)
        return;
    const auto set = Field<std::uint16_t>(tiff, TIFFTAG_INKSET);
    if (set == INKSET_CMYK && layout.samples > 4 && layout.transparency == Transparency::None)
        throw FileFailure(path, "has a fifth channel that is marked neither as ink nor as alpha",
                          {}, "Save the picture without it, or with it marked as alpha.");
    if (set == 0 || set == INKSET_CMYK)
        return;
    const std::string others = OtherInks(tiff, layout);
    throw FileFailure(path,
                      "has inks other than cyan, magenta, yellow and black" +
                          (others.empty() ? others : ", which would be lost: " + Shown(others)),
                      {},
                      "CT, LW and JPEG files hold these four; merge the others into them first, or "
                      "keep all in a TIFF by `tympan export`.");
}

Layout ReadLayout(const std::string& path, TIFF* tiff)
{
    Layout layout{};
    layout.width = Field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH);
    layout.height = Field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH);
    RequireSensibleSize(path, layout.width, layout.height);
    layout.bits = Field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE);
    layout.samples = Field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL);
    layout.planarity = Field<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG);
    if (TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric) != 1)
        throw FileFailure(path, "the TIFF file doesn't tell what its samples are", {},
                          "Save it anew, as grey, RGB or CMYK.");
    if (layout.photometric == PHOTOMETRIC_YCBCR && layout.planarity == PLANARCONFIG_CONTIG &&
        Field<std::uint16_t>(tiff, TIFFTAG_COMPRESSION) == COMPRESSION_JPEG)
        layout.photometric = PHOTOMETRIC_RGB; // as the decoder is told to give it
    layout.colours = ColoursOf(path, layout.photometric);
    layout.transparency = TransparencyOf(tiff);
    if (layout.samples < layout.colours || layout.samples > kMostSamples)
        Refuse(path, "pixels of " + std::to_string(layout.samples) + " samples");
    if (layout.samples == layout.colours)
        layout.transparency = Transparency::None;
    RequireDepth(path, tiff, layout);
    RequireFourInks(path, tiff, layout);
    return layout;
}

// ---- rows as they are stored

std::unique_ptr<TiffFile> OpenTiff(const std::string& path)
{
    auto file = std::make_unique<TiffFile>(path, "rm", path); // read, not mapped into memory
    TIFF* const tiff = file->Handle();
    if (Field<std::uint16_t>(tiff, TIFFTAG_COMPRESSION) == COMPRESSION_JPEG)
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    return file;
}

/// The rows of one plane, or of all samples where they stand together. Each plane has the file open
/// for itself, so that none has to go back for another.
class PlaneRows {
  public:
    PlaneRows(const std::string& path, const Layout& layout, std::uint16_t plane)
        : file_(OpenTiff(path)), layout_(layout), plane_(plane), row_(layout.BytesFor(layout.width))
    {}
    PlaneRows(const PlaneRows&) = delete;
    PlaneRows& operator=(const PlaneRows&) = delete;
    virtual ~PlaneRows() = default;

    virtual std::span<const std::uint8_t> Next() = 0;

  protected:
    TIFF* Handle() const { return file_->Handle(); }
    [[noreturn]] void Fail() const { file_->Fail(kCutShort); }

    std::unique_ptr<TiffFile> file_;
    Layout layout_;
    std::uint16_t plane_;
    std::vector<std::uint8_t> row_;
    std::uint32_t nextRow_ = 0;
};

class StripRows : public PlaneRows {
  public:
    StripRows(const std::string& path, const Layout& layout, std::uint16_t plane)
        : PlaneRows(path, layout, plane)
    {
        if (TIFFIsTiled(Handle()) != 0 || TIFFScanlineSize64(Handle()) != row_.size())
            file_->Fail("the TIFF file's rows don't have the size that its tags say");
    }

    std::span<const std::uint8_t> Next() override
    {
        if (TIFFReadScanline(Handle(), row_.data(), nextRow_++, plane_) != 1)
            Fail();
        return row_;
    }
};

// Holds the tiles that a row of pixels crosses.
class TileRows : public PlaneRows {
  public:
    TileRows(const std::string& path, const Layout& layout, std::uint16_t plane)
        : PlaneRows(path, layout, plane),
          tileWidth_(Field<std::uint32_t>(Handle(), TIFFTAG_TILEWIDTH)),
          tileHeight_(Field<std::uint32_t>(Handle(), TIFFTAG_TILELENGTH))
    {
        RequireSensibleSize(path, tileWidth_, tileHeight_);
        const std::uint64_t bits =
            std::uint64_t{ tileWidth_ } * layout.SamplesOfPlane() * layout.bits;
        tileRowBytes_ = bits / 8;
        const std::uint64_t across = (std::uint64_t{ layout.width } + tileWidth_ - 1) / tileWidth_;
        tileBytes_ = tileRowBytes_ * tileHeight_;
        if (bits % 8 != 0 || TIFFTileSize64(Handle()) != tileBytes_)
            file_->Fail("the TIFF file's tiles don't have the size that its tags say");
        RequireHeldClaim(path, across * tileBytes_, kMostForTiffByte);
        tiles_.resize(across * tileBytes_);
    }

    std::span<const std::uint8_t> Next() override
    {
        const std::uint32_t rowInTile = nextRow_ % tileHeight_;
        if (rowInTile == 0)
            ReadTiles();
        ++nextRow_;
        const std::uint8_t* from = tiles_.data() + rowInTile * tileRowBytes_;
        for (std::size_t at = 0; at < row_.size(); at += tileRowBytes_, from += tileBytes_)
            std::copy_n(from, std::min<std::size_t>(tileRowBytes_, row_.size() - at), &row_[at]);
        return row_;
    }

  private:
    void ReadTiles()
    {
        std::uint64_t column = 0;
        for (std::size_t at = 0; at < tiles_.size(); at += tileBytes_, column += tileWidth_)
            if (TIFFReadTile(Handle(), &tiles_[at], static_cast<std::uint32_t>(column), nextRow_, 0,
                             plane_) < 0)
                Fail();
    }

    std::uint32_t tileWidth_, tileHeight_;
    std::uint64_t tileRowBytes_ = 0;
    std::uint64_t tileBytes_ = 0;
    std::vector<std::uint8_t> tiles_;
};

std::unique_ptr<PlaneRows> MakeRows(const std::string& path, const Layout& layout, bool tiled,
                                    std::uint16_t plane)
{
    if (tiled)
        return std::make_unique<TileRows>(path, layout, plane);
    return std::make_unique<StripRows>(path, layout, plane);
}

// ---- from stored bytes to samples

// The number in the i-th place of a row of numbers of 8 or 16 bits.
unsigned int StoredNumber(const std::uint8_t* row, std::size_t i, unsigned int bits)
{
    if (bits == 8)
        return row[i];
    std::uint16_t number = 0;
    std::memcpy(&number, row + 2 * i, sizeof number); // libtiff gives them in our order
    return number;
}

std::uint8_t ToEightBits(unsigned int number, unsigned int bits)
{
    return bits == 16 ? EightBits(number) : static_cast<std::uint8_t>(number);
}

LevelScale ScaleOf(const Layout& layout)
{
    if (layout.HasPalette())
        return LevelScale::Numbers;
    return layout.photometric == PHOTOMETRIC_MINISWHITE ? LevelScale::WhiteIsZero
                                                        : LevelScale::BlackIsZero;
}

std::vector<Rgb> ReadPalette(TIFF* tiff, const Layout& layout)
{
    std::array<std::uint16_t*, 3> channels{};
    if (TIFFGetField(tiff, TIFFTAG_COLORMAP, &channels[0], &channels[1], &channels[2]) != 1)
        return {};
    const std::size_t count = std::size_t{ 1 } << layout.bits;
    const bool narrow = std::all_of(channels.begin(), channels.end(), [&](const auto* channel) {
        return std::all_of(channel, channel + count, [](auto value) { return value < 256; });
    }); // some programs write bytes
    std::vector<Rgb> palette(count);
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t channel = 0; channel < channels.size(); ++channel)
            palette[i][channel] = narrow ? static_cast<std::uint8_t>(channels[channel][i])
                                         : EightBits(channels[channel][i]);
    return palette;
}

class TiffSource : public PictureSource {
  public:
    explicit TiffSource(const std::string& path) : path_(path)
    {
        const std::unique_ptr<TiffFile> file = OpenTiff(path);
        TIFF* const tiff = file->Handle();
        layout_ = ReadLayout(path, tiff);
        form_.width = layout_.width;
        form_.height = layout_.height;
        form_.kind = KindOf(layout_);
        TakeResolution(tiff);
        TakeProfile(tiff);
        TakePalette(*file);
        RemarkOnOrientation(Field<std::uint16_t>(tiff, TIFFTAG_ORIENTATION));
        if (layout_.samples > layout_.colours && layout_.transparency == Transparency::None)
            Remark("has a further channel that isn't marked as alpha; it is left out");
        if (TIFFLastDirectory(tiff) == 0)
            Remark("holds several pictures; the first is taken");
        if (layout_.IsOneSmallNumber())
            spreader_.emplace(layout_.bits, ScaleOf(layout_));
        for (std::uint16_t plane = 0; plane < layout_.Planes(); ++plane)
            planes_.push_back(MakeRows(path, layout_, TIFFIsTiled(tiff) != 0, plane));
        samples_.resize(std::size_t{ layout_.width } * layout_.samples);
    }

    void ReadRow(std::span<std::uint8_t> row) override
    {
        if (spreader_)
            return spreader_->Spread(planes_[0]->Next(), row);
        if (layout_.HasPalette())
            return ReadColoursOfPalette(row);
        for (std::uint16_t plane = 0; plane < layout_.Planes(); ++plane)
            Unpack(planes_[plane]->Next(), plane);
        for (std::size_t x = 0; x < layout_.width; ++x)
            for (std::size_t i = 0; i < layout_.colours; ++i)
                row[x * layout_.colours + i] = Sample(&samples_[x * layout_.samples], i);
    }

  private:
    static SampleKind KindOf(const Layout& layout)
    {
        if (layout.HasPalette())
            return layout.IsOneSmallNumber() ? SampleKind::Index : SampleKind::Rgb;
        if (layout.colours == 4)
            return SampleKind::CmykInk;
        return layout.colours == 3 ? SampleKind::Rgb : SampleKind::Grey;
    }

    void TakeResolution(TIFF* tiff)
    {
        float x = 0.0F;
        float y = 0.0F;
        const auto unit = Field<std::uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT);
        if (TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x) == 1 &&
            TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y) == 1 && unit != RESUNIT_NONE)
            form_.resolution =
                ResolutionOf(x, y, unit == RESUNIT_CENTIMETER ? kInchesPerCentimetre : 1.0);
    }

    void TakeProfile(TIFF* tiff)
    {
        std::uint32_t count = 0;
        std::uint8_t* bytes = nullptr;
        if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &count, &bytes) == 1 && bytes != nullptr)
            form_.profile.assign(bytes, bytes + count);
    }

    void TakePalette(const TiffFile& file)
    {
        if (!layout_.HasPalette())
            return;
        form_.palette = ReadPalette(file.Handle(), layout_);
        if (form_.palette.empty())
            file.Fail("the TIFF file's palette is missing");
    }

    // Of numbers that an index has no room for, or that other samples stand beside.
    void ReadColoursOfPalette(std::span<std::uint8_t> row)
    {
        const std::uint8_t* const stored = planes_[0]->Next().data();
        for (std::size_t x = 0; x < layout_.width; ++x) {
            const std::size_t place = x * layout_.SamplesOfPlane();
            const Rgb& colour = form_.palette[StoredNumber(stored, place, layout_.bits)];
            std::copy(colour.begin(), colour.end(), &row[x * colour.size()]);
        }
    }

    // Puts a plane's numbers into their places, as 8 bits and with white as 255 or no ink as 0.
    void Unpack(std::span<const std::uint8_t> stored, std::uint16_t plane)
    {
        const std::size_t together = layout_.SamplesOfPlane();
        const std::size_t step = layout_.samples / together;
        for (std::size_t i = 0; i < layout_.width * together; ++i)
            samples_[i * step + plane] =
                ToEightBits(StoredNumber(stored.data(), i, layout_.bits), layout_.bits);
    }

    // A colour of a pixel, on white where it is transparent.
    std::uint8_t Sample(const std::uint8_t* pixel, std::size_t colour) const
    {
        const bool inverse = layout_.photometric == PHOTOMETRIC_MINISWHITE;
        const unsigned int sample = inverse ? 255U - pixel[colour] : pixel[colour];
        const unsigned int alpha =
            layout_.transparency == Transparency::None ? 255U : pixel[layout_.colours];
        const bool straight = layout_.transparency == Transparency::Straight;
        if (form_.kind == SampleKind::CmykInk)
            return static_cast<std::uint8_t>(straight ? (sample * alpha + 127U) / 255U : sample);
        return straight ? OnWhite(sample, alpha)
                        : static_cast<std::uint8_t>(std::min(sample + 255U - alpha, 255U));
    }

    std::string path_;
    Layout layout_{};
    std::optional<BitSpreader> spreader_; // for one small number each pixel
    std::vector<std::unique_ptr<PlaneRows>> planes_;
    std::vector<std::uint8_t> samples_; // a row, all samples of a pixel together
};

} // namespace

std::unique_ptr<PictureSource> OpenTiffSource(const std::string& path)
{
    return std::make_unique<TiffSource>(path);
}

} // namespace tympan::tool
