// The line-work comparisons: each operation on a sparse and a dense picture.
#include "bench/benches.h"
#include "bench/lw_sides.h"

namespace tympan::bench {

namespace {

constexpr unsigned int kMagickRows = 1000; // at ten bytes for each pixel
constexpr int kRounds = 15;
constexpr int kPeerRounds = 7;

struct Kind {
    std::string name;
    double meanRun; // pixels
    double opening; // the ratios wanted
    double rows;
    double gdal;
};

const Kind kKinds[] = {
    { "sparse", 60, 0.65, 0.55, 8 },
    { "dense", 6, 0.75, 0.20, 6 },
};

const PeerOfRows kLibtiff{ "libtiff's PackBits", LibtiffPeer, WritePackBitsTiff, kLwSize.height };
const PeerOfRows kGdal{ "GDAL's RLE8", GdalPeer, WriteRle8Bitmap, kLwSize.height };
const PeerOfRows kMagick{ "ImageMagick's RLE8", MagickPeer, WriteRle8Bitmap, kMagickRows };

class Group {
  public:
    Group(const Kind& kind, const std::string& folder)
        : name_("LW " + kind.name + ": "), folder_(folder),
          picture_(MadeOnce<LwPicture>(folder + kind.name + ".lw", kLwSize, kind.meanRun))
    {}

    void Add(const std::string& what, Sides (*sides)(const Picture&),
             std::optional<double> wanted = {}) const
    {
        Register({ name_ + what, [=, picture = picture_] { return sides(picture()); }, wanted,
                   kRounds });
    }
    void AddCrop(const std::string& what, Sides (*sides)(const Picture&, const std::string&),
                 std::optional<double> wanted = {}) const
    {
        Register({ name_ + what + " / pwrite",
                   [=, picture = picture_, folder = folder_] { return sides(picture(), folder); },
                   wanted, kRounds });
    }
    void AddHuge(const std::string& what, Sides (*sides)(const Picture&, const std::string&)) const
    {
        Register({ name_ + std::to_string(kHugeRows) + " rows, " + what,
                   [=, picture = picture_, folder = folder_] { return sides(picture(), folder); },
                   {},
                   kRounds });
    }
    void AddPeer(const std::string& what, const PeerOfRows& peer, Opened opened,
                 std::optional<double> wanted = {}) const
    {
        Register({ name_ + what + " / " + peer.name,
                   [=, picture = picture_, path = folder_ + "peer"] {
                       return AgainstPeer(picture(), peer, opened, path);
                   },
                   wanted, kPeerRounds });
    }

  private:
    std::string name_;
    std::string folder_;
    Source<LwPicture> picture_;
};

void RegisterKind(const Kind& kind, const std::string& folder)
{
    const Group group(kind, folder);
    group.Add("opening / pread", Opening, kind.opening);
    group.Add("rows / memset", RowsAtOnce, kind.rows);
    group.AddPeer("rows", kLibtiff, Opened::Before, 1);
    group.AddPeer("rows", kGdal, Opened::Before, kind.gdal);
    group.AddPeer("opening and rows", kGdal, Opened::Timed);
    group.AddPeer("1000 rows", kMagick, Opened::Before);
    group.Add("run stream / memcpy", Streaming, 0.25);
    group.Add("index stream / pread and memcpy", StreamingIndexes, 0.3);
    group.AddHuge("opening by the header / opening", OpeningByHeader);
    group.AddCrop("crop of the middle", CropMiddle, 0.7);
    group.AddCrop("crop, full width", CropFullWidth);
    group.Add("validity check / pread", Checking);
    group.Add("size of the run stream / pread", CountingRoom);
    group.Add("rows one by one / memset", RowsOneByOne);
    group.Add("display of 1000 rows / memset", Drawing);
}

} // namespace

void RegisterLineWork(const std::string& folder)
{
    for (const Kind& kind : kKinds)
        RegisterKind(kind, folder);
}

} // namespace tympan::bench
