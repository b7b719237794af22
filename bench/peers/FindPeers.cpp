#include "Peer.h"

namespace bench {

Peers FindPeers([[maybe_unused]] const std::string& folder) {
  Peers peers;
#ifdef BENCH_SDL
  peers.push_back(MakeSdl());
#endif
#ifdef BENCH_FREEIMAGE
  peers.push_back(MakeFreeImage());
#endif
#ifdef BENCH_QT
  peers.push_back(MakeQt());
#endif
#ifdef BENCH_GDKPIXBUF
  peers.push_back(MakeGdkPixbuf());
#endif
#ifdef BENCH_MAGICK
  peers.push_back(MakeMagick());
#endif
#ifdef BENCH_STB
  peers.push_back(MakeStb());
#endif
#ifdef BENCH_PILLOW
  peers.push_back(MakePillow(folder));
#endif
  return peers;
}

}  // namespace bench
