// Stands in for magick_peer.cpp where ImageMagick wasn't there to build with.
#include "bench/peers.h"

namespace tympan::bench {

std::unique_ptr<Peer> MagickPeer(const std::string& /*path*/, PictureSize /*size*/)
{
    return nullptr;
}

} // namespace tympan::bench
