#include "picture_source.h"

#include "failure.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string_view>
#include <system_error>

namespace tympan::tool {

namespace {

using namespace std::string_view_literals;

struct Kind {
    std::string_view firstBytes;
    std::unique_ptr<PictureSource> (*open)(const std::string& path);
};

constexpr Kind kJpeg{ "\xFF\xD8\xFF"sv, OpenJpegSource };
constexpr std::array kKinds{
    kJpeg,
    Kind{ "\x89PNG\r\n\x1A\n"sv, OpenPngSource },
    Kind{ "II*\0"sv, OpenTiffSource },
    Kind{ "MM\0*"sv, OpenTiffSource },
    Kind{ "II+\0"sv, OpenTiffSource }, // beyond 4 GiB
    Kind{ "MM\0+"sv, OpenTiffSource },
};

bool IsOf(const Kind& kind, const std::string& bytes)
{
    return std::string_view(bytes).substr(0, kind.firstBytes.size()) == kind.firstBytes;
}

std::string FirstBytes(const std::string& path)
{
    const Stream stream = OpenStream(path);
    std::array<char, 8> bytes{};
    const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), stream.get());
    if (std::ferror(stream.get()) != 0)
        throw SystemFailure(path, errno);
    return { bytes.data(), count };
}

class ColoursOfPalette : public PictureSource {
  public:
    explicit ColoursOfPalette(std::unique_ptr<PictureSource> source)
        : source_(std::move(source)), indexes_(source_->Form().RowBytes())
    {
        form_ = source_->Form();
        form_.kind = SampleKind::Rgb;
    }

    void ReadRow(std::span<std::uint8_t> row) override
    {
        source_->ReadRow(indexes_);
        std::uint8_t* sample = row.data();
        for (const std::uint8_t index : indexes_) {
            const Rgb& colour = form_.palette[index];
            sample = std::copy(colour.begin(), colour.end(), sample);
        }
    }

  private:
    std::unique_ptr<PictureSource> source_;
    std::vector<std::uint8_t> indexes_;
};

} // namespace

Stream OpenStream(const std::string& path)
{
    struct stat found {};
    if (stat(path.c_str(), &found) != 0)
        throw SystemFailure(path, errno);
    if (!S_ISREG(found.st_mode))
        throw FileFailure(path, S_ISDIR(found.st_mode) ? "is a folder" : "is not a plain file", {},
                          "Give the name of a picture file.");
    Stream stream(std::fopen(path.c_str(), "rbe"));
    if (stream == nullptr)
        throw SystemFailure(path, errno);
    return stream;
}

bool IsJpegFile(const std::string& path)
{
    return IsOf(kJpeg, FirstBytes(path));
}

std::unique_ptr<PictureSource> OpenPictureSource(const std::string& path)
{
    const std::string bytes = FirstBytes(path);
    for (const Kind& kind : kKinds)
        if (IsOf(kind, bytes))
            return kind.open(path);
    throw FileFailure(path, bytes.empty() ? "is empty" : "is not a JPEG, PNG or TIFF picture", {},
                      "Pictures of other kinds have to be turned into one of these first.");
}

std::unique_ptr<PictureSource> WithoutPalette(std::unique_ptr<PictureSource> source)
{
    if (source->Form().kind != SampleKind::Index)
        return source;
    return std::make_unique<ColoursOfPalette>(std::move(source));
}

std::optional<PixelsPerInch> ResolutionOf(double x, double y, double inchesPerUnit)
{
    const PixelsPerInch resolution{ x / inchesPerUnit, y / inchesPerUnit };
    const auto good = [](double side) { return std::isfinite(side) && side > 0.0; };
    return good(resolution.x) && good(resolution.y) ? std::optional(resolution) : std::nullopt;
}

void RequireSensibleSize(const std::string& path, std::uint64_t width, std::uint64_t height)
{
    constexpr std::uint64_t kMostWidth = 4U << 20U; // a row is held in memory
    constexpr std::uint64_t kMostHeight = std::numeric_limits<std::int32_t>::max();
    if (width == 0 || height == 0 || width > kMostWidth || height > kMostHeight)
        throw FileFailure(path,
                          "its header claims " + std::to_string(width) + " x " +
                              std::to_string(height) + " pixels; pictures from 1 x 1 to " +
                              std::to_string(kMostWidth) + " x " + std::to_string(kMostHeight) +
                              " are taken",
                          {}, "Make it smaller first, or part it.");
}

void RequireHeldClaim(const std::string& path, std::uint64_t bytes, std::uint64_t mostForByte)
{
    constexpr std::uint64_t kFree = 64U << 20U;
    if (bytes <= kFree)
        return;
    std::error_code error;
    const std::uint64_t length = std::filesystem::file_size(path, error);
    if (error)
        throw SystemFailure(path, error.value());
    if (bytes / mostForByte > length)
        throw FileFailure(path,
                          "its header claims a size that a file of " + std::to_string(length) +
                              " bytes can't hold",
                          {}, "The file is damaged or was cut short.");
}

void PictureSource::RemarkOnOrientation(unsigned int orientation)
{
    constexpr unsigned int kRightWayUp = 1;
    constexpr unsigned int kLast = 8;
    if (orientation > kRightWayUp && orientation <= kLast)
        Remark("the picture is taken as it is stored, though the file asks to show it turned or "
               "mirrored (orientation " +
               std::to_string(orientation) + ")");
}

} // namespace tympan::tool
