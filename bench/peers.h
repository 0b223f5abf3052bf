// Other libraries that decode pictures of runs, and the files that they decode: the same rows.
#pragma once

#include "bench/lw_picture.h"

#include <memory>
#include <span>
#include <string>

namespace tympan::bench {

/// Writes the inks of the picture's first rows, run by run, as a grey bitmap in RLE8 or a grey TIFF
/// in PackBits, and has it in the page cache.
void WriteRle8Bitmap(const LwPicture& picture, unsigned int rows, const std::string& path);
void WritePackBitsTiff(const LwPicture& picture, unsigned int rows, const std::string& path);

/// A library that decodes one file again and again.
class Peer {
  public:
    virtual ~Peer() = default;

    /// Opens the file and decodes all of it into memory: what is timed.
    virtual void Decode() = 0;
    /// Frees what `Decode` made, if anything.
    virtual void Forget() {}
    /// Throws unless `Decode` gave the picture's pixels.
    virtual void Verify(const LwPicture& picture) = 0;
};

/// Null where the library isn't on this machine.
std::unique_ptr<Peer> LibtiffPeer(const std::string& path, PictureSize size);
std::unique_ptr<Peer> GdalPeer(const std::string& path, PictureSize size);
std::unique_ptr<Peer> MagickPeer(const std::string& path, PictureSize size);

} // namespace tympan::bench
