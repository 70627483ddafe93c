// The list of the peers that were found.

#include "bench/peers/peer.h"

namespace tavo::bench {

std::vector<Peer> FoundPeers() {
    return {
#ifdef TAVO_WITH_LIBYUV
        LibyuvPeer(),
#endif
#ifdef TAVO_WITH_SWSCALE
        SwscalePeer(),
#endif
#ifdef TAVO_WITH_OPENCV
        OpencvPeer(),
#endif
#ifdef TAVO_WITH_ZIMG
        ZimgPeer(),
#endif
    };
}

}  // namespace tavo::bench
