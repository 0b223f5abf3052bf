// Stands in for gdal_peer.cpp where GDAL wasn't there to build with.
#include "bench/peers.h"

namespace tympan::bench {

std::unique_ptr<Peer> GdalPeer(const std::string& /*path*/, PictureSize /*size*/)
{
    return nullptr;
}

} // namespace tympan::bench
