// Nothing the outside does may unbalance a call: every event of every kind fails once and for good,
// files are cut and bent at random.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "Rig.h"

namespace {

struct Sample {
  const char* name;
  Bytes file;
  int format;  // for raw data; else what identification tells
};

std::vector<Sample> Samples() {
  const Bytes masks = Words({0xF00, 0xF0, 0xF});
  Bytes fields = BitmapFile{{.size = 64, .bits = 16, .compression = 3}, {}, Repeat(16, 0x5A)}.Encode();
  std::copy(masks.begin(), masks.end(), fields.begin() + 54);
  const Bytes icon = Join({Header{.height = 4, .bits = 8, .colorsUsed = 2}.Encode(), Repeat(8 + 8 + 8, 1)});
  const Bytes codedIcon = Join({Header{.height = 4, .bits = 4, .compression = 2}.Encode(), Repeat(64, 1),
                                Hex("0412 0000 0412 0001"), Repeat(8, 0xF0)});
  return {
      {"plain", BitmapFile{{.xPixelsPerMetre = 2835}, {}, Repeat(24, 7)}.Encode(), 0},
      {"array", BitmapFile{{.bits = 1}, Repeat(8, 1), Repeat(8, 7), true}.Encode(), 0},
      {"core", BitmapFile{{.size = 12, .bits = 4}, Repeat(48, 1), Repeat(8, 7)}.Encode(), 0},
      {"OS/2", BitmapFile{{.size = 108, .bits = 1}, Repeat(8, 1), Repeat(8, 7), false}.Encode(), 0},
      {"fields", fields, 0},
      {"RLE8",
       BitmapFile{{.bits = 8, .compression = 1}, Repeat(1024, 1), Hex("0003 010203ee 0000 0407 0001")}
           .Encode(),
       0},
      {"icon", IconFile(1, {{icon}, {codedIcon}}), 0},
      {"cursor", IconFile(2, {{codedIcon}}), 0},
      {"PNG", IconFile(1, {{PngBody(), 0, 0, 2, 8}, {icon}}), 0},
      {"raw", Repeat(24, 5), FMT_RAW},
  };
}

void Prepare(Rig& rig, const Sample& sample) {
  rig.kernel.file = sample.file;
  rig.load.ReadBufferSize = 6;
  rig.kernel.rowsAccepted = 40;
  rig.kernel.png = {.width = 4, .height = 2, .bits = 8, .colors = 2};
  rig.kernel.pngInfo.Width = 4;
  rig.kernel.pngInfo.Height = 2;
  rig.kernel.pngInfo.BitsPerPixel = 8;
  rig.options.PageNumber = 1;
  if (sample.format == 0) {
    EXPECT_EQ(rig.Identify(), STATUS_OK);
  } else {
    rig.info.Format = sample.format;
    rig.info.Width = 4;
    rig.info.Height = 2;
    rig.info.BitsPerPixel = 24;
  }
  rig.Target(rig.info.Width, rig.info.Height, rig.info.BitsPerPixel, rig.info.ColorOrder);
}

constexpr int kInjected = -1234;

struct Injection {
  Kind kind;
  int result;
  std::vector<int> statuses;  // what the call may answer
};

const std::vector<Injection>& Injections() {
  static const std::vector<int> spoilt = {STATUS_OK,         STATUS_READ_ERROR, STATUS_BAD_FORMAT,
                                          STATUS_SEEK_ERROR, STATUS_FAILURE,    STATUS_NO_MEMORY};
  static const std::vector<int> readSpoilt = {STATUS_OK, STATUS_READ_ERROR, STATUS_BAD_FORMAT, STATUS_FAILURE,
                                              STATUS_NO_MEMORY};
  static const std::vector<Injection> all = {
      {Kind::kAlloc, 0, {STATUS_NO_MEMORY}},
      {Kind::kOpen, 0, {STATUS_OPEN_ERROR}},
      {Kind::kRead, Fault::kHalf, readSpoilt},
      {Kind::kRead, 0, readSpoilt},
      {Kind::kRead, -1, readSpoilt},
      {Kind::kSeek, -1, spoilt},
      {Kind::kSeek, Fault::kElsewhere, spoilt},
      {Kind::kInitBitmap, kInjected, {kInjected}},
      {Kind::kAllocateBitmap, kInjected, {kInjected}},
      {Kind::kAccess, kInjected, {STATUS_NO_MEMORY}},
      {Kind::kRelease, kInjected, {kInjected}},
      {Kind::kRegion, kInjected, {kInjected}},
      {Kind::kPut, kInjected, {STATUS_OK}},
      {Kind::kGet, kInjected, {STATUS_OK}},
      {Kind::kPalette, kInjected, {STATUS_OK}},
      {Kind::kRow, kInjected, {kInjected}},
      {Kind::kPngLoad, kInjected, {kInjected}},
      {Kind::kPngInfo, kInjected, {kInjected}},
  };
  return all;
}

bool Among(const std::vector<int>& statuses, int status) {
  return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

// Fails the n-th event of the injection's kind for every n that the operation reaches.
template <class Operation>
int FailEach(const Sample& sample, const Injection& injection, bool persistent, Operation operation) {
  for (int n = 1;; ++n) {
    SCOPED_TRACE(testing::Message() << sample.name << ", kind " << static_cast<int>(injection.kind)
                                    << " result " << injection.result << (persistent ? " from " : " at ")
                                    << n);
    Rig rig;
    Prepare(rig, sample);
    rig.kernel.fault = Fault{injection.kind, n, persistent, injection.result};
    const int status = operation(rig);
    if (!rig.kernel.faultStruck) {
      EXPECT_EQ(status, STATUS_OK);
      return n - 1;
    }
    EXPECT_PRED2(Among, injection.statuses, status);
    if (testing::Test::HasFailure()) return 0;
  }
}

TEST(Faults, EveryEventOfEveryKindFailsOnceAndForGood) {
  std::map<Kind, int> struck;
  for (const auto& sample : Samples()) {
    for (const auto& injection : Injections()) {
      for (const bool persistent : {false, true}) {
        struck[injection.kind] += FailEach(sample, injection, persistent, [](Rig& rig) {
          const int status = rig.Load();
          const Kind last = rig.kernel.LastEvent();
          EXPECT_TRUE(last == Kind::kClose || (last == Kind::kOpen && status == STATUS_OPEN_ERROR));
          return status;
        });
        if (sample.format != 0) continue;
        struck[injection.kind] +=
            FailEach(sample, injection, persistent, [](Rig& rig) { return rig.Identify(); });
      }
    }
  }
  for (const auto& injection : Injections())
    EXPECT_GT(struck[injection.kind], 0) << "no sample reaches kind " << static_cast<int>(injection.kind);
}

void SurvivesAs(Rig& rig, const Bytes& file) {
  static const std::vector<int> identified = {STATUS_OK, STATUS_READ_ERROR, STATUS_BAD_FORMAT, STATUS_FAILURE,
                                              STATUS_NO_MEMORY};
  static const std::vector<int> loaded = {STATUS_OK,         STATUS_READ_ERROR, STATUS_BAD_FORMAT,
                                          STATUS_SEEK_ERROR, STATUS_NO_MEMORY,  FakeKernel::kRefused};
  rig.kernel.file = file;
  const int format = rig.info.Format;
  if (format != FMT_RAW) {
    EXPECT_PRED2(Among, identified, rig.Identify());
  }
  rig.info.Format = format;
  EXPECT_PRED2(Among, loaded, rig.Load());
}

TEST(Faults, CutAndBentFilesAreSurvived) {
  static constexpr std::uint8_t kExtremes[] = {0, 1, 2, 3, 0x7F, 0x80, 0xFE, 0xFF};
  std::mt19937 dice(20);
  for (const auto& sample : Samples()) {
    for (int round = 0; round < 2000 && !testing::Test::HasFailure(); ++round) {
      SCOPED_TRACE(testing::Message() << sample.name << " round " << round);
      Rig rig;
      Prepare(rig, sample);
      rig.options.PageNumber = static_cast<int>(dice() % 4);
      if (dice() % 2 == 0) rig.options.Flags = LOAD_ALLOW_TRUNCATED;
      Bytes bent = sample.file;
      if (dice() % 2 == 0) bent.resize(1 + dice() % bent.size());
      for (unsigned edits = 1 + dice() % 4; edits > 0; --edits) {
        const std::size_t at = dice() % std::min<std::size_t>(bent.size(), 120);
        const bool whole = dice() % 3 == 0;  // a whole word of the same byte makes hostile numbers
        const std::uint8_t value = kExtremes[dice() % std::size(kExtremes)];
        for (std::size_t i = at; i < std::min(bent.size(), at + (whole ? 4 : 1)); ++i) bent[i] = value;
      }
      SurvivesAs(rig, bent);
    }
  }
}

// Heights that no int can negate, in both places where a height stands.
TEST(Faults, LeastHeight) {
  const Header header{.height = INT_MIN};
  Rig rig;
  rig.kernel.file = BitmapFile{header, {}, Repeat(90, 0)}.Encode();
  EXPECT_EQ(rig.Identify(), STATUS_OK);
  EXPECT_EQ(rig.info.Orientation, ORIENT_TOP_DOWN);
  EXPECT_EQ(rig.Load(), STATUS_OK);
  rig.kernel.file = IconFile(1, {{header.Encode()}});
  EXPECT_EQ(rig.Identify(), STATUS_OK);
  EXPECT_EQ(rig.info.Height, 1 << 30);
}

}  // namespace
