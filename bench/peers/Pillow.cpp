// Pillow, in a process of its own, which is asked line by line and tells how much processor time it took.
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

#include "Child.h"
#include "Peer.h"
#include "TightLoops.h"

namespace bench {
namespace {

class Pillow : public Peer {
 public:
  explicit Pillow(const std::string& folder)
      : process_({BENCH_PYTHON, BENCH_PILLOW_SCRIPT}),
        file_(folder + "/for-pillow"),
        pixels_(folder + "/of-pillow") {}
  [[nodiscard]] std::string Name() const override { return "Pillow"; }

  bool Load(const Bytes& file) override {
    if (file.data() != sent_ || file.size() != sentSize_) {
      CopyAndWrite(file_, file.data(), file.size());
      if (!Ask("take " + file_)) return false;
    }
    sent_ = file.data();
    sentSize_ = file.size();
    return Ask("load");
  }
  bool Expand() override { return Ask("expand"); }
  bool Reduce(bool diffuse) override { return Ask(diffuse ? "diffuse" : "reduce"); }
  bool Save(const std::string& path, Form form) override {
    return form != Form::BmpRle && Ask((form == Form::Png ? "png " : "bmp ") + path);
  }
  Bytes Pixels() override {
    if (!Ask("pixels " + pixels_)) return {};
    std::ifstream file(pixels_, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
  }
  bool Identify(const std::string& path, int& width, int& height) override {
    if (!Ask("identify " + path)) return false;
    std::istringstream(answer_) >> width >> height;
    return true;
  }
  int ListPages(const std::string& path) override {
    int count = 0;
    if (Ask("pages " + path)) std::istringstream(answer_) >> count;
    return count;
  }
  double TakeSecondsElsewhere() override { return std::exchange(seconds_, 0); }

 private:
  /// Says the seconds, 0 for what is not to be timed, and then the answer; or "no".
  bool Ask(const std::string& request) {
    std::istringstream said(process_.Ask(request));
    double seconds = 0;
    if (!(said >> seconds)) return false;
    seconds_ += seconds;
    std::getline(said, answer_);
    return true;
  }

  Conversation process_;
  std::string file_;
  std::string pixels_;
  std::string answer_;
  double seconds_ = 0;
  const uint8_t* sent_ = nullptr;
  size_t sentSize_ = 0;
};

}  // namespace

std::unique_ptr<Peer> MakePillow(const std::string& folder) {
  return std::make_unique<Pillow>(folder);
}

}  // namespace bench
