// JPEG files: grey, YCbCr and RGB, and the CMYK ones, whose samples are inverted when the file is
// marked as Adobe's.
#include "exif.h"
#include "failure.h"
#include "jump_guard.h"
#include "picture_source.h"

#include <jerror.h>
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

namespace tympan::tool {

namespace {

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kProfileMarker = JPEG_APP0 + 2;
constexpr unsigned int kWholeMarker = 0xFFFF;
constexpr UINT8 kDotsPerInch = 1;
constexpr UINT8 kDotsPerCentimetre = 2;

struct FreeC {
    void operator()(JOCTET* bytes) const { std::free(bytes); } // NOLINT: libjpeg's malloc
};

// What libjpeg has to say. Its own handlers print and end the program.
struct Messages {
    jpeg_error_mgr manager{}; // first, for libjpeg hands out its address
    std::jmp_buf jump{};
    std::array<char, JMSG_LENGTH_MAX> text{};

    static Messages& Of(j_common_ptr jpeg) { return *reinterpret_cast<Messages*>(jpeg->err); }

    [[noreturn]] static void Fail(j_common_ptr jpeg)
    {
        Messages& messages = Of(jpeg);
        (*jpeg->err->format_message)(jpeg, messages.text.data());
        std::longjmp(messages.jump, 1); // NOLINT(cert-err52-cpp): the only way out
    }

    // Libjpeg goes on with grey pixels where the data is damaged or ends.
    static void Tell(j_common_ptr jpeg, int level)
    {
        const auto lost = { JWRN_JPEG_EOF, JWRN_HIT_MARKER, JWRN_HUFF_BAD_CODE };
        if (level < 0 && std::find(lost.begin(), lost.end(), jpeg->err->msg_code) != lost.end())
            Fail(jpeg);
    }
};

struct Decoder : jpeg_decompress_struct {
    Decoder() : jpeg_decompress_struct{} {}
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    ~Decoder() { jpeg_destroy_decompress(this); }
};

class JpegSource : public PictureSource {
  public:
    explicit JpegSource(const std::string& path) : path_(path), stream_(OpenStream(path))
    {
        jpeg_.err = jpeg_std_error(&messages_.manager);
        messages_.manager.error_exit = Messages::Fail;
        messages_.manager.emit_message = Messages::Tell;
        Do([this] { ReadHeader(); });
        Describe();
        TakeExif();
        TakeProfile();
        RequireMemory();
        Do([this] { jpeg_start_decompress(&jpeg_); });
    }

    void ReadRow(std::span<std::uint8_t> row) override
    {
        JSAMPROW rows[] = { row.data() };
        Do([this, &rows] { jpeg_read_scanlines(&jpeg_, rows, 1); });
        if (form_.kind == SampleKind::CmykInk && jpeg_.saw_Adobe_marker != 0)
            std::transform(row.begin(), row.end(), row.begin(), [](std::uint8_t sample) {
                return static_cast<std::uint8_t>(255 - sample);
            });
    }

  private:
    template <typename Calls>
    void Do(const Calls& calls)
    {
        if (!ComesBack(messages_.jump, calls))
            throw FileFailure(path_,
                              std::string("the JPEG data can't be read: ") + messages_.text.data(),
                              {}, "The file is damaged or was cut short.");
    }

    void ReadHeader()
    {
        jpeg_create_decompress(&jpeg_);
        jpeg_stdio_src(&jpeg_, stream_.get());
        jpeg_save_markers(&jpeg_, kExifMarker, kWholeMarker);
        jpeg_save_markers(&jpeg_, kProfileMarker, kWholeMarker);
        jpeg_read_header(&jpeg_, TRUE);
    }

    void Describe()
    {
        RequireSensibleSize(path_, jpeg_.image_width, jpeg_.image_height);
        form_.width = jpeg_.image_width;
        form_.height = jpeg_.image_height;
        switch (jpeg_.jpeg_color_space) {
        case JCS_GRAYSCALE: TakeAs(SampleKind::Grey, JCS_GRAYSCALE); break;
        case JCS_RGB:
        case JCS_YCbCr: TakeAs(SampleKind::Rgb, JCS_RGB); break;
        case JCS_CMYK:
        case JCS_YCCK: TakeAs(SampleKind::CmykInk, JCS_CMYK); break;
        default:
            throw FileFailure(path_, "has " + std::to_string(jpeg_.num_components) +
                                         " colour components; grey, RGB and CMYK are taken");
        }
        if (jpeg_.saw_JFIF_marker != 0 && jpeg_.density_unit == kDotsPerInch)
            form_.resolution = ResolutionOf(jpeg_.X_density, jpeg_.Y_density, 1.0);
        if (jpeg_.saw_JFIF_marker != 0 && jpeg_.density_unit == kDotsPerCentimetre)
            form_.resolution = ResolutionOf(jpeg_.X_density, jpeg_.Y_density, kInchesPerCentimetre);
    }

    void TakeAs(SampleKind kind, J_COLOR_SPACE samples)
    {
        form_.kind = kind;
        jpeg_.out_color_space = samples;
    }

    void TakeExif()
    {
        ExifFields fields;
        for (const auto* marker = jpeg_.marker_list; marker != nullptr; marker = marker->next)
            if (marker->marker == kExifMarker && !fields.resolutionX)
                fields = ReadExif({ marker->data, marker->data_length });
        RemarkOnOrientation(fields.orientation);
        if (!form_.resolution && fields.resolutionX && fields.resolutionY)
            form_.resolution =
                ResolutionOf(*fields.resolutionX, *fields.resolutionY, fields.inchesPerUnit);
    }

    void TakeProfile()
    {
        JOCTET* bytes = nullptr;
        unsigned int count = 0;
        Do([&] { jpeg_read_icc_profile(&jpeg_, &bytes, &count); });
        const std::unique_ptr<JOCTET, FreeC> owned(bytes);
        if (bytes != nullptr)
            form_.profile.assign(bytes, bytes + count);
    }

    // A file of several scans is held whole, as coefficients of 2 bytes.
    void RequireMemory()
    {
        constexpr std::uint64_t kMostForByte = 512; // a flat block of 64 needs 2 bits
        if (jpeg_has_multiple_scans(&jpeg_) == 0)
            return;
        const auto components = static_cast<std::uint64_t>(jpeg_.num_components);
        RequireHeldClaim(path_, 2 * components * form_.width * form_.height, kMostForByte);
    }

    std::string path_;
    Stream stream_;
    Messages messages_;
    Decoder jpeg_;
};

} // namespace

std::unique_ptr<PictureSource> OpenJpegSource(const std::string& path)
{
    return std::make_unique<JpegSource>(path);
}

} // namespace tympan::tool
