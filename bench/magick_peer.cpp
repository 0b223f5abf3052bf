// ImageMagick decoding a bitmap of runs into the pixels that it works with, palette indexes and
// colours; getting bytes from there would take it as long again.
#include "bench/peers.h"

#include <magick/MagickCore.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace tympan::bench {

namespace {

// The rules that Debian brings refuse a picture as wide as ours.
constexpr std::string_view kPolicy = R"(<policymap>
  <policy domain="resource" name="width" value="32KP"/>
  <policy domain="resource" name="memory" value="1GiB"/>
</policymap>
)";

// Once for the program: the library can't be started a second time.
bool StartLibrary(const std::filesystem::path& folder)
{
    NewFile(folder / "policy.xml")
        .Write({ reinterpret_cast<const std::uint8_t*>(kPolicy.data()), kPolicy.size() });
    setenv("MAGICK_CONFIGURE_PATH", folder.c_str(), 1);
    MagickCoreGenesis(nullptr, MagickFalse);
    SetMagickResourceLimit(ThreadResource, 1); // the time is that of one thread
    return true;
}

struct DestroyAny {
    void operator()(Image* image) const { DestroyImage(image); }
    void operator()(ImageInfo* info) const { DestroyImageInfo(info); }
    void operator()(ExceptionInfo* failure) const { DestroyExceptionInfo(failure); }
};

class MagickBitmap : public Peer {
  public:
    MagickBitmap(const std::string& path, PictureSize size)
        : size_(size), info_(CloneImageInfo(nullptr)), failure_(AcquireExceptionInfo())
    {
        CopyMagickString(info_->filename, ("BMP:" + path).c_str(), MaxTextExtent);
    }

    void Decode() override
    {
        image_.reset(ReadImage(info_.get(), failure_.get()));
        Require(image_ != nullptr, "ImageMagick can't read the bitmap");
    }
    void Forget() override { image_.reset(); }
    void Verify(const LwPicture& picture) override
    {
        GetVirtualPixels(image_.get(), 0, 0, size_.width, size_.height, failure_.get());
        const IndexPacket* const indexes = GetVirtualIndexQueue(image_.get());
        Require(indexes != nullptr, "ImageMagick gave no palette picture");
        std::vector<std::uint8_t> pixels(std::size_t{ size_.width } * size_.height);
        std::transform(indexes, indexes + pixels.size(), pixels.begin(),
                       [](IndexPacket index) { return static_cast<std::uint8_t>(index); });
        RequireInks(picture, pixels);
    }

  private:
    PictureSize size_;
    std::unique_ptr<ImageInfo, DestroyAny> info_;
    std::unique_ptr<ExceptionInfo, DestroyAny> failure_;
    std::unique_ptr<Image, DestroyAny> image_;
};

} // namespace

std::unique_ptr<Peer> MagickPeer(const std::string& path, PictureSize size)
{
    [[maybe_unused]] static const bool started =
        StartLibrary(std::filesystem::path(path).parent_path());
    return std::make_unique<MagickBitmap>(path, size);
}

} // namespace tympan::bench
