// What several rows have in common.
#pragma once

#include <functional>
#include <string>
#include <vx/image.hpp>

#include "Contest.h"
#include "Samples.h"
#include "peers/Peer.h"

namespace bench {

/// A peer as a contender.
Contender PeerContender(const std::shared_ptr<Peer>& peer, std::function<bool()> work,
                        std::function<Finding()> look);

/// What peer or bitmap shows against what it should.
Finding CompareTo(const Sample& sample, const Bytes& rgba, int tolerance = 0);
/// Reads a file by the library: it shows the sample, at that depth if one is given, in run-length codes or
/// not.
Finding CompareFile(const Sample& sample, const std::string& path, int bitsPerPixel = 0,
                    bool isCoded = false);

double PixelsOf(const Sample& sample);

}  // namespace bench
