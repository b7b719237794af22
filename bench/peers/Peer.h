// Other libraries that do what ours does, behind one small interface. What a peer does not offer returns
// false. Nothing here says how well: every result is looked at by whoever asked for it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Contest.h"

namespace bench {

enum class Form { Bmp, BmpRle, Png };

class Peer {
 public:
  Peer() = default;
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;
  virtual ~Peer() = default;
  [[nodiscard]] virtual std::string Name() const = 0;

  /// Decodes a bitmap file. The picture stays until the next one is loaded.
  virtual bool Load(const Bytes& file) = 0;
  /// Makes a second picture of the one loaded: 32 bits, red, green, blue, alpha.
  virtual bool Expand() { return false; }
  /// Makes a second picture of the one loaded: at most 256 colours of its own, with error diffusion or
  /// without.
  virtual bool Reduce(bool) { return false; }
  /// Saves the picture loaded.
  virtual bool Save(const std::string&, Form) { return false; }
  /// The second picture, or else the one loaded: red, green, blue, alpha from the top.
  virtual Bytes Pixels() = 0;

  /// Finds out how large the picture in a file is, and no more.
  virtual bool Identify(const std::string&, int&, int&) { return false; }
  /// Finds out how large every page of an icon file is. @return how many there are; 0 where it cannot
  virtual int ListPages(const std::string&) { return 0; }

  /// Processor time since it was last asked where another process does the work; below 0 where this one does.
  virtual double TakeSecondsElsewhere() { return -1; }
};

using Peers = std::vector<std::shared_ptr<Peer>>;

/// Those that this program was built with. @param folder for what a peer has to write
Peers FindPeers(const std::string& folder);

std::unique_ptr<Peer> MakeSdl();
std::unique_ptr<Peer> MakeFreeImage();
std::unique_ptr<Peer> MakeQt();
std::unique_ptr<Peer> MakeGdkPixbuf();
std::unique_ptr<Peer> MakeMagick();
std::unique_ptr<Peer> MakeStb();
std::unique_ptr<Peer> MakePillow(const std::string& folder);

}  // namespace bench
