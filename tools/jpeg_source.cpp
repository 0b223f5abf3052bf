// JPEG files: grey, YCbCr and RGB, and the CMYK ones, whose samples are inverted when the file is
// marked as Adobe's.
#include "exif.h"
#include "failure.h"
#include "jpeg_reader.h"
#include "picture_source.h"

#include <algorithm>
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

class JpegSource : public PictureSource {
  public:
    explicit JpegSource(const std::string& path) : reader_(path), jpeg_(reader_.Jpeg())
    {
        reader_.Do([this] { ReadHeader(); });
        Describe();
        TakeExif();
        TakeProfile();
    }

    void ReadRow(std::span<std::uint8_t> row) override
    {
        if (!isStarted_)
            Start();
        JSAMPROW rows[] = { row.data() };
        reader_.Do([this, &rows] { jpeg_read_scanlines(&jpeg_, rows, 1); });
        if (form_.kind == SampleKind::CmykInk && jpeg_.saw_Adobe_marker != 0)
            std::transform(row.begin(), row.end(), row.begin(), [](std::uint8_t sample) {
                return static_cast<std::uint8_t>(255 - sample);
            });
    }

  private:
    void ReadHeader()
    {
        jpeg_save_markers(&jpeg_, kExifMarker, kWholeMarker);
        jpeg_save_markers(&jpeg_, kProfileMarker, kWholeMarker);
        jpeg_read_header(&jpeg_, TRUE);
    }

    void Describe()
    {
        RequireSensibleSize(reader_.Path(), jpeg_.image_width, jpeg_.image_height);
        form_.isJpeg = true;
        form_.width = jpeg_.image_width;
        form_.height = jpeg_.image_height;
        switch (jpeg_.jpeg_color_space) {
        case JCS_GRAYSCALE: TakeAs(SampleKind::Grey, JCS_GRAYSCALE); break;
        case JCS_RGB:
        case JCS_YCbCr: TakeAs(SampleKind::Rgb, JCS_RGB); break;
        case JCS_CMYK:
        case JCS_YCCK: TakeAs(SampleKind::CmykInk, JCS_CMYK); break;
        default:
            throw FileFailure(reader_.Path(),
                              "has " + std::to_string(jpeg_.num_components) +
                                  " colour components; grey, RGB and CMYK are taken",
                              {}, "Save it as one of these first.");
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
            if (marker->marker == kExifMarker) {
                form_.hasExif = true;
                if (!fields.resolutionX)
                    fields = ReadExif({ marker->data, marker->data_length });
            }
        RemarkOnOrientation(fields.orientation);
        if (!form_.resolution && fields.resolutionX && fields.resolutionY)
            form_.resolution =
                ResolutionOf(*fields.resolutionX, *fields.resolutionY, fields.inchesPerUnit);
    }

    void TakeProfile()
    {
        JOCTET* bytes = nullptr;
        unsigned int count = 0;
        reader_.Do([&] { jpeg_read_icc_profile(&jpeg_, &bytes, &count); });
        const std::unique_ptr<JOCTET, FreeC> owned(bytes);
        if (bytes != nullptr)
            form_.profile.assign(bytes, bytes + count);
    }

    // Waits for the first row: a file of several scans is read and held whole by it.
    void Start()
    {
        if (jpeg_has_multiple_scans(&jpeg_) != 0)
            RequireHeldCoefficients(reader_.Path(), jpeg_);
        reader_.Do([this] { jpeg_start_decompress(&jpeg_); });
        isStarted_ = true;
    }

    JpegReader reader_;
    jpeg_decompress_struct& jpeg_;
    bool isStarted_ = false;
};

} // namespace

std::unique_ptr<PictureSource> OpenJpegSource(const std::string& path)
{
    return std::make_unique<JpegSource>(path);
}

} // namespace tympan::tool
