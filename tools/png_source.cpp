// PNG files of all colour types and depths, brought to 8 bits.
#include "bit_spreader.h"
#include "failure.h"
#include "jump_guard.h"
#include "picture_source.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <optional>
#include <string>

namespace tympan::tool {

namespace {

// Whole numbers of pixels per inch don't fit the file's whole numbers of pixels per metre: the one
// that gives the file's number was meant.
double PerInch(png_uint_32 perMetre)
{
    const double perInch = perMetre / kInchesPerMetre;
    const double whole = std::round(perInch);
    return std::round(whole * kInchesPerMetre) == perMetre ? whole : perInch;
}

struct Decoder {
    Decoder() = default;
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    ~Decoder() { png_destroy_read_struct(&png, &info, nullptr); }

    png_structp png = nullptr;
    png_infop info = nullptr;
};

class PngSource : public PictureSource {
  public:
    explicit PngSource(const std::string& path) : path_(path), stream_(OpenStream(path))
    {
        MakeDecoder();
        Do([this] { png_read_info(png_.png, png_.info); });
        Do([this] { AskForBytes(); });
        Describe();
        TakePalette();
        TakeProfile();
        if (interlaced_)
            ReadWhole();
    }

    void ReadRow(std::span<std::uint8_t> row) override
    {
        const bool asItIs = !spreader_ && stored_.size() == row.size();
        ReadStored(asItIs ? row : stored_);
        if (spreader_)
            spreader_->Spread(stored_, row);
        else if (!asItIs)
            ComposeOnWhite(row);
    }

  private:
    static void Fail(png_structp png, png_const_charp text)
    {
        auto& source = *static_cast<PngSource*>(png_get_error_ptr(png));
        std::snprintf(source.text_.data(), source.text_.size(), "%s", text);
        std::longjmp(source.jump_, 1); // NOLINT(cert-err52-cpp): libpng wants it so
    }
    static void DropWarning(png_structp, png_const_charp) {}
    static void Read(png_structp png, png_bytep bytes, std::size_t count)
    {
        auto& source = *static_cast<PngSource*>(png_get_io_ptr(png));
        if (std::fread(bytes, 1, count, source.stream_.get()) == count)
            return;
        source.readError_ = std::ferror(source.stream_.get()) != 0 ? errno : 0;
        png_error(png, "the file ends too early");
    }

    template <typename Calls>
    void Do(const Calls& calls)
    {
        if (ComesBack(jump_, calls))
            return;
        if (readError_ != 0)
            throw SystemFailure(path_, readError_);
        throw FileFailure(path_, std::string("the PNG data can't be read: ") + text_.data(), {},
                          "The file is damaged or was cut short.");
    }

    void MakeDecoder()
    {
        Do([this] {
            png_.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, Fail, DropWarning);
            png_.info = png_.png == nullptr ? nullptr : png_create_info_struct(png_.png);
        });
        if (png_.info == nullptr)
            throw std::bad_alloc();
        png_set_read_fn(png_.png, this, Read);
    }

    bool HasPalette() const
    {
        return png_get_color_type(png_.png, png_.info) == PNG_COLOR_TYPE_PALETTE;
    }

    // Few bits stay packed, for the spreader is faster.
    void AskForBytes()
    {
        const unsigned int bits = png_get_bit_depth(png_.png, png_.info);
        const bool hasKey = png_get_valid(png_.png, png_.info, PNG_INFO_tRNS) != 0;
        if (!HasPalette() && hasKey)
            png_set_expand(png_.png); // a transparent colour becomes alpha
        else if (bits < 8)
            spreader_.emplace(bits, HasPalette() ? LevelScale::Numbers : LevelScale::BlackIsZero);
        png_set_scale_16(png_.png);
        png_set_interlace_handling(png_.png);
        png_read_update_info(png_.png, png_.info);
    }

    void Describe()
    {
        form_.width = png_get_image_width(png_.png, png_.info);
        form_.height = png_get_image_height(png_.png, png_.info);
        RequireSensibleSize(path_, form_.width, form_.height);
        const png_byte type = png_get_color_type(png_.png, png_.info);
        form_.kind = HasPalette()                         ? SampleKind::Index
                     : (type & PNG_COLOR_MASK_COLOR) != 0 ? SampleKind::Rgb
                                                          : SampleKind::Grey;
        channels_ = png_get_channels(png_.png, png_.info);
        interlaced_ = png_get_interlace_type(png_.png, png_.info) != PNG_INTERLACE_NONE;
        stored_.resize(png_get_rowbytes(png_.png, png_.info));

        png_uint_32 x = 0;
        png_uint_32 y = 0;
        int unit = PNG_RESOLUTION_UNKNOWN;
        png_get_pHYs(png_.png, png_.info, &x, &y, &unit);
        if (unit == PNG_RESOLUTION_METER)
            form_.resolution = ResolutionOf(PerInch(x), PerInch(y), 1.0);
    }

    // On white where it is transparent. A number that the file gives no colour is black.
    void TakePalette()
    {
        if (!HasPalette())
            return;
        png_colorp colours = nullptr;
        png_bytep alphas = nullptr;
        int count = 0;
        int alphaCount = 0;
        png_get_PLTE(png_.png, png_.info, &colours, &count);
        png_get_tRNS(png_.png, png_.info, &alphas, &alphaCount, nullptr);
        form_.palette.resize(PNG_MAX_PALETTE_LENGTH);
        for (int i = 0; i < count; ++i) {
            const unsigned int alpha = i < alphaCount ? alphas[i] : 255U;
            form_.palette[static_cast<std::size_t>(i)] = { OnWhite(colours[i].red, alpha),
                                                           OnWhite(colours[i].green, alpha),
                                                           OnWhite(colours[i].blue, alpha) };
        }
    }

    void TakeProfile()
    {
        png_charp name = nullptr;
        int compression = 0;
        png_bytep bytes = nullptr;
        png_uint_32 count = 0;
        if (png_get_iCCP(png_.png, png_.info, &name, &compression, &bytes, &count) != 0)
            form_.profile.assign(bytes, bytes + count);
    }

    // Each pass over an interlaced picture fills some pixels of all its rows.
    void ReadWhole()
    {
        constexpr std::uint64_t kMostForByte = 1032UL * 8UL; // Deflate's most, and 1 bit a pixel
        const std::uint64_t bytes = std::uint64_t{ stored_.size() } * form_.height;
        RequireHeldClaim(path_, bytes, kMostForByte);
        whole_.resize(bytes);
        Do([this] {
            const int passes = png_set_interlace_handling(png_.png);
            for (int pass = 0; pass < passes; ++pass)
                for (std::size_t at = 0; at < whole_.size(); at += stored_.size())
                    png_read_row(png_.png, whole_.data() + at, nullptr);
            png_read_end(png_.png, nullptr);
        });
    }

    void ReadStored(std::span<std::uint8_t> row)
    {
        const std::size_t at = std::size_t{ nextRow_++ } * row.size();
        if (interlaced_) {
            std::copy_n(whole_.data() + at, row.size(), row.data());
            return;
        }
        const bool last = nextRow_ == form_.height;
        Do([this, row, last] {
            png_read_row(png_.png, row.data(), nullptr);
            if (last)
                png_read_end(png_.png, nullptr);
        });
    }

    void ComposeOnWhite(std::span<std::uint8_t> row) const
    {
        const std::size_t colours = channels_ - 1;
        const std::uint8_t* pixel = stored_.data();
        for (std::size_t at = 0; at < row.size(); at += colours, pixel += channels_)
            for (std::size_t i = 0; i < colours; ++i)
                row[at + i] = OnWhite(pixel[i], pixel[colours]);
    }

    std::string path_;
    Stream stream_;
    std::jmp_buf jump_{};
    std::array<char, 256> text_{};
    int readError_ = 0;
    Decoder png_;
    std::size_t channels_ = 0; // alpha included
    std::optional<BitSpreader> spreader_;
    bool interlaced_ = false;
    std::uint32_t nextRow_ = 0;
    std::vector<std::uint8_t> stored_; // a row as libpng gives it
    std::vector<std::uint8_t> whole_;  // all of them
};

} // namespace

std::unique_ptr<PictureSource> OpenPngSource(const std::string& path)
{
    return std::make_unique<PngSource>(path);
}

} // namespace tympan::tool
