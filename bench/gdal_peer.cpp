// GDAL decoding a bitmap of runs: it expands all of it while it opens the file.
#include "bench/peers.h"

#include <gdal.h>

namespace tympan::bench {

namespace {

struct CloseDataset {
    void operator()(void* dataset) const { GDALClose(dataset); }
};

class GdalBitmap : public Peer {
  public:
    GdalBitmap(const std::string& path, PictureSize size)
        : path_(path), size_(size), pixels_(TouchedMemory(std::size_t{ size.width } * size.height))
    {
        GDALAllRegister();
    }

    void Decode() override
    {
        const char* const drivers[] = { "BMP", nullptr };
        const std::unique_ptr<void, CloseDataset> dataset(GDALOpenEx(
            path_.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, drivers, nullptr, nullptr));
        Require(dataset != nullptr, "GDAL can't open the bitmap");
        const int width = static_cast<int>(size_.width);
        const int height = static_cast<int>(size_.height);
        Require(GDALRasterIO(GDALGetRasterBand(dataset.get(), 1), GF_Read, 0, 0, width, height,
                             pixels_.data(), width, height, GDT_Byte, 0, 0) == CE_None,
                "GDAL can't read the bitmap");
    }
    void Verify(const LwPicture& picture) override { RequireInks(picture, pixels_); }

  private:
    std::string path_;
    PictureSize size_;
    std::vector<std::uint8_t> pixels_;
};

} // namespace

std::unique_ptr<Peer> GdalPeer(const std::string& path, PictureSize size)
{
    return std::make_unique<GdalBitmap>(path, size);
}

} // namespace tympan::bench
