// The sides of the line-work comparisons: what each limit does and what the library does beside it.
#pragma once

#include "bench/comparison.h"
#include "bench/lw_picture.h"
#include "bench/peers.h"
#include "lw/lw_file.h"

#include <memory>
#include <string>
#include <vector>

namespace tympan::bench {

using Picture = std::shared_ptr<const LwPicture>;

inline constexpr PictureSize kLwSize{ 20000, 10000 };
inline constexpr unsigned char kWhite = 255;

/// A new object on the picture.
std::unique_ptr<LWFileInterface> Open(const LwPicture& picture);

/// What both sides of a comparison work on: an object, and memory for what it gives.
struct Working {
    Working(Picture lwPicture, std::size_t bytes);

    Picture picture;
    std::unique_ptr<LWFileInterface> object;
    std::vector<std::uint8_t> buffer;
    std::vector<unsigned long> offsets; // of each row in `buffer`
};

// Against reading the file in blocks.

Sides Opening(const Picture& picture);
Sides Checking(const Picture& picture);
Sides CountingRoom(const Picture& picture);

/// The placing run stream of the whole picture, against copying its bytes.
Sides Streaming(const Picture& picture);

/// The stream of colour indexes of the whole file, against reading its rows in blocks and copying them.
Sides StreamingIndexes(const Picture& picture);

/// Opening by the header, against the opening that walks the rows, of a file in `folder` that has the
/// picture's rows many times.
inline constexpr unsigned int kHugeRows = 8 * kLwSize.height;
Sides OpeningByHeader(const Picture& picture, const std::string& folder);

/// A contender that reads the picture's file through, in blocks of the size that is fastest, and hands
/// each to `use`.
Contender ReadingInBlocks(const Picture& picture,
                          const std::function<void(std::span<const std::uint8_t>)>& use = {});

/// Against writing the bytes of the crop in blocks to a new file. Both make theirs in `folder`.
Sides CropMiddle(const Picture& picture, const std::string& folder);
Sides CropFullWidth(const Picture& picture, const std::string& folder);

// Against filling memory as large as what comes out.

Sides RowsAtOnce(const Picture& picture);
Sides RowsOneByOne(const Picture& picture);
Sides Drawing(const Picture& picture);

/// A decoder of the picture's first rows from a file of its own.
struct PeerOfRows {
    std::string name;
    std::unique_ptr<Peer> (*make)(const std::string& path, PictureSize size);
    void (*write)(const LwPicture& picture, unsigned int rows, const std::string& path);
    unsigned int rows;
};

/// Whether the library's time holds that for opening the picture.
enum class Opened { Before, Timed };

/// All rows in one call, against the peer. `path` is where its file is put.
Sides AgainstPeer(const Picture& picture, const PeerOfRows& peer, Opened opened,
                  const std::string& path);

} // namespace tympan::bench
