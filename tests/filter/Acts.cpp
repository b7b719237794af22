// What stories set up, and the calls that they make.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "Story.h"

int& Field(Rig& rig, const std::string& name) {  // all have 32 bits
  FakeKernel& kernel = rig.kernel;
  const std::map<std::string, void*> fields = {{"page", &rig.options.PageNumber},
                                               {"flags", &rig.options.Flags},
                                               {"buffer", &rig.load.ReadBufferSize},
                                               {"band", &rig.load.BandEnabled},
                                               {"first", &rig.load.BandFirstRow},
                                               {"top", &rig.load.BandTopRow},
                                               {"count", &rig.load.BandRowCount},
                                               {"has-offset", &rig.load.RawHasOffset},
                                               {"offset", &rig.load.RawOffset},
                                               {"raw", &rig.load.RawFlags},
                                               {"red", &rig.load.RedMask},
                                               {"green", &rig.load.GreenMask},
                                               {"blue", &rig.load.BlueMask},
                                               {"accepted", &kernel.rowsAccepted},
                                               {"longer", &kernel.longerMaskRows},
                                               {"width", &kernel.target.Width},
                                               {"bits", &kernel.target.BitsPerPixel},
                                               {"orientation", &kernel.target.Orientation},
                                               {"order", &kernel.target.ColorOrder},
                                               {"colors", &kernel.target.ColorCount},
                                               {"x", &kernel.target.XResolution},
                                               {"y", &kernel.target.YResolution},
                                               {"format", &rig.info.Format},
                                               {"info-page", &rig.info.PageNumber},
                                               {"pages", &rig.info.TotalPages},
                                               {"info-flags", &rig.info.Flags},
                                               {"info-x", &rig.info.XResolution},
                                               {"png-height", &kernel.png.height},
                                               {"png-bits", &kernel.png.bits},
                                               {"png-colors", &kernel.png.colors},
                                               {"png-allocated", &kernel.png.allocated},
                                               {"told-width", &kernel.pngInfo.Width},
                                               {"told-height", &kernel.pngInfo.Height},
                                               {"told-bits", &kernel.pngInfo.BitsPerPixel},
                                               {"told-orientation", &kernel.pngInfo.Orientation},
                                               {"told-order", &kernel.pngInfo.ColorOrder},
                                               {"told-y", &kernel.pngInfo.YResolution},
                                               {"save-flags", &rig.save.Flags},
                                               {"save-format", &rig.save.Format},
                                               {"save-order", &rig.bitmap.ColorOrder},
                                               {"line", &kernel.saved.converted.BytesPerLine},
                                               {"mask-line", &kernel.saved.maskBytesPerLine}};
  return *static_cast<int*>(fields.at(name));
}

std::vector<int> Numbers(const std::string& text, char separator) {
  std::vector<int> numbers;
  for (const auto& word : Split(text, separator)) numbers.push_back(Number(word));
  return numbers;
}

// ---- set-ups

namespace {

void SetFault(Rig& rig, std::vector<std::string> words) {  // KIND N [always] [RESULT]
  Fault fault{words.at(0), Number(words.at(1))};
  fault.persistent = words.size() > 2 && words[2] == "always";
  if (words.size() > (fault.persistent ? 3U : 2U)) fault.result = Number(words.back());
  rig.kernel.faults.push_back(fault);
}

}  // namespace

bool SetUp(Rig& rig, const Clause& clause) {
  const auto& [word, rest] = clause;
  const auto words = Split(rest);
  if (Build(rig.kernel.file, clause)) return true;
  if (word == "set") {
    for (const auto& each : words) {
      const std::size_t equals = each.find('=');
      Field(rig, each.substr(0, equals)) = Number(each.substr(equals + 1));
    }
  } else if (word == "target") {  // WxHxB [ORDER]
    const auto sides = Numbers(words.at(0), 'x');
    rig.Target(sides.at(0), sides.at(1), sides.at(2), words.size() > 1 ? Number(words[1]) : ORDER_BGR);
  } else if (word == "picture") {  // FORMAT WxHxB
    const auto sides = Numbers(words.at(1), 'x');
    rig.Picture(Number(words[0]), sides.at(2), sides.at(0), sides.at(1));
  } else if (word == "fault") {
    SetFault(rig, words);
  } else if (word == "compression" || word == "told-compression") {
    IMAGEINFO& info = word == "compression" ? rig.info : rig.kernel.pngInfo;
    rest.copy(info.Compression, sizeof info.Compression);
  } else if (word == "raw-palette") {
    const Bytes colors = Data(rest);
    std::memcpy(rig.load.RawPalette, colors.data(), colors.size());
  } else if (word == "no-such-file") {
    rig.load.FileName = "nothing of that name";
  } else {
    return false;
  }
  return true;
}

// ---- acts

namespace {

int Decode(Rig& rig, const std::string& rest) {
  Keys keys(rest);
  const auto take = [&](const char* key, int otherwise) {
    return static_cast<int>(keys.Take(key, static_cast<std::size_t>(otherwise)));
  };
  RowImage image;
  image.width = take("w", 1);
  image.height = take("h", 1);
  image.bits = take("bits", 8);
  image.compression = take("comp", 0);
  image.conversion = take("conversion", 0);
  image.signature = static_cast<unsigned short>(take("signature", 0x4D42));
  return rig.Decode(image);
}

int Save(Rig& rig, const std::string& rest) {  // [insert|replace|- PAGE]
  const auto numbers = Numbers(rest);
  return numbers.empty() ? rig.Save() : rig.Save(static_cast<unsigned>(numbers.at(0)), numbers.at(1));
}

int Display(Rig& rig, const std::string&) {
  rig.kernel.StartCall();
  _DISDISPATCH dispatch{};
  tagHANDLE unasked;
  HANDLE library = &unasked;  // must not be taken for an answer
  const int status = GetDisplayDispatch(&dispatch, library);
  EXPECT_EQ(dispatch.Reserved1, 1U);
  rig.kernel.stream = {static_cast<uint8_t>(library == nullptr ? 0 : library == &unasked ? 2 : 1)};
  return status;
}

// The functions beside the entry points leave in the stream what they fill in beside their answer.

int ReadHeader(Rig& rig,
               const std::string& rest) {  // CAPACITY SIZE; then the buffer, and the file's position
  const auto numbers = Numbers(rest);
  Bytes buffer(10, 9);
  const int result =
      rig.ReadHeader(buffer, static_cast<unsigned>(numbers.at(0)), static_cast<unsigned>(numbers.at(1)));
  rig.kernel.stream = buffer;
  return result;
}

int VerifyMasks(Rig& rig,
                const std::string& rest) {  // BITS RED GREEN BLUE; then conversion and whether 5-6-5, of 7
  const auto numbers = Numbers(rest);
  unsigned masks[3];
  std::copy(numbers.begin() + 1, numbers.end(), masks);
  int conversion = 7;
  int is565 = 7;
  const int status = VerifyColorMasks(masks, &conversion, &is565, numbers.at(0));
  rig.kernel.stream = {static_cast<uint8_t>(conversion), static_cast<uint8_t>(is565)};
  return status;
}

int Invert(Rig& rig, const std::string& rest) {  // COUNT DATA
  rig.kernel.stream = Data(rest.substr(rest.find(' ')));
  InvertBuffer(rig.kernel.stream.data(), static_cast<unsigned>(std::stoi(rest)));
  return 0;
}

int Mask(Rig& rig, const std::string&) {
  rig.kernel.StartCall();
  const auto* mask = CreateMaskBitmap(&rig.bitmap);
  EXPECT_EQ(rig.kernel.Verdict(), "");
  return mask != nullptr ? 1 : 0;
}

const std::map<std::string, int (*)(Rig&, const std::string&)> kActs = {
    {"identify", [](Rig& rig, const std::string&) { return rig.Identify(); }},
    {"load", [](Rig& rig, const std::string&) { return rig.Load(); }},
    {"decode", Decode},
    {"save", Save},
    {"delete", [](Rig& rig, const std::string& page) { return rig.Delete(Number(page)); }},
    {"display", Display},
    {"read-header", ReadHeader},
    {"verify-masks", VerifyMasks},
    {"invert", Invert},
    {"create-mask", Mask},
    {"is-png", [](Rig&, const std::string& data) { return IsPNGHeader(Data(data).data()); }},
    {"bytes-per-line", [](Rig&, const std::string& bits) {
       return GetBytesPerLine(Numbers(bits).at(0), Numbers(bits).at(1), INT_MIN);
     }}};

}  // namespace

std::optional<Act> ActOf(const Clause& clause) {
  if (kActs.count(clause.word) == 0) return std::nullopt;
  const std::size_t blank = clause.rest.find(' ');
  return Act{clause.word, clause.rest.substr(0, blank),
             blank == std::string::npos ? "" : clause.rest.substr(blank + 1)};
}

int Perform(Rig& rig, const Act& act) {
  const int status = kActs.at(act.word)(rig, act.rest);
  if (act.word == "load") {
    const std::string last = rig.kernel.LastEvent();
    EXPECT_TRUE(last == "close" || last.empty() || (last == "open" && status == STATUS_OPEN_ERROR)) << last;
  }
  return status;
}

std::optional<Act> Prepare(Rig& rig, const Story& story) {
  for (const auto& clause : story.clauses) {
    if (auto act = ActOf(clause)) return act;
    (void)SetUp(rig, clause);
  }
  return std::nullopt;
}
