// Reads stories, and makes the files that they speak of.
#include "Story.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace {

/// The constants of the contract, read from its header: STATUS_BAD_FORMAT is bad-format, FMT_ICO is ico.
std::map<std::string, int> Constants() {
  std::map<std::string, int> constants = {{"-", 0}, {"min", INT_MIN}, {"max", INT_MAX}};
  constants["half"] = Fault::kHalf;
  constants["elsewhere"] = Fault::kElsewhere;
  constants["refused"] = FakeKernel::kRefused;
  std::ifstream header(VX_CONTRACT);
  for (std::string line; std::getline(header, line);) {
    const auto words = Split(line);
    if (words.size() < 3 || words[0] != "#define") continue;
    for (const char* prefix :
         {"STATUS_", "FMT_", "ORIENT_", "ORDER_", "LOAD_", "RAW_", "SAVE_PAGE_", "SAVE_"}) {
      if (!words[1].starts_with(prefix)) continue;
      std::string name = words[1].substr(std::strlen(prefix));
      for (char& c : name) c = c == '_' ? '-' : static_cast<char>(std::tolower(c));
      constants.emplace(name,
                        static_cast<int>(std::stol(words[2].substr(words[2][0] == '(' ? 1 : 0), nullptr, 0)));
    }
  }
  return constants;
}

}  // namespace

int Number(const std::string& text) {
  static const auto constants = Constants();
  if (const auto found = constants.find(text); found != constants.end()) return found->second;
  char* end = nullptr;
  const long long number = std::strtoll(text.c_str(), &end, 0);
  if (*end != '\0' || text.empty()) ADD_FAILURE() << "nobody knows " << text;
  return static_cast<int>(number);
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) {
    const std::size_t begin = part.find_first_not_of(' ');
    if (begin != std::string::npos) part = part.substr(begin, part.find_last_not_of(' ') + 1 - begin);
    if (begin != std::string::npos || separator != ' ')
      parts.push_back(begin == std::string::npos ? "" : part);
  }
  return parts;
}

std::vector<Story> ReadStories(const std::string& path) {
  std::ifstream stream(path);
  EXPECT_TRUE(stream) << path;
  std::vector<std::string> paragraphs;
  for (std::string line; std::getline(stream, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (line[0] == ' ') {
      paragraphs.back() += line.substr(line.find_first_not_of(' ') - 1);
    } else {
      paragraphs.push_back(line);
    }
  }
  std::vector<Story> stories;
  std::vector<Clause> given;
  for (const auto& paragraph : paragraphs) {
    const auto parts = Split(paragraph, ';');
    Story story{parts[0], parts[0] == "given" ? std::vector<Clause>{} : given};
    for (const auto& part : std::vector(parts.begin() + 1, parts.end())) {
      const std::size_t blank = part.find(' ');
      story.clauses.push_back(
          {part.substr(0, blank), blank == std::string::npos ? "" : part.substr(blank + 1)});
    }
    if (story.name == "given") {
      given = story.clauses;
    } else {
      stories.push_back(story);
    }
  }
  return stories;
}

Keys::Keys(const std::string& text) {
  for (const auto& word : Split(text)) {
    const std::size_t equals = word.find('=');
    left_[word.substr(0, equals)] = static_cast<uint32_t>(Number(word.substr(equals + 1)));
  }
}

Keys::~Keys() {
  for (const auto& key : left_) ADD_FAILURE() << "nobody knows " << key.first;
}

uint32_t Keys::Take(const std::string& key, std::size_t otherwise) {
  const auto node = left_.extract(key);
  return node ? node.mapped() : static_cast<uint32_t>(otherwise);
}

Bytes Data(const std::string& text) {
  Bytes bytes;
  for (const auto& word : Split(text)) {
    const std::size_t times = word.find_first_of("*+");
    if (word.back() == '.') {
      Put(bytes, std::stoull(word, nullptr, 16), 4);
    } else if (times == std::string::npos) {
      Append(bytes, Hex(word));
    } else {
      const int step = word[times] == '+' ? 7 : 0;
      for (int i = 0; i < std::stoi(word); ++i) {
        Append(bytes, Hex(word.substr(times + 1)));
        bytes.back() = static_cast<uint8_t>(bytes.back() + step * i + i / 256 * step);
      }
    }
  }
  return bytes;
}

Bytes Header::Encode() const {
  Bytes bytes;
  Put(bytes, size, 4);
  Put(bytes, width, size == 12 ? 2 : 4);
  Put(bytes, height, size == 12 ? 2 : 4);
  Put(bytes, 1, 2);
  Put(bytes, bits, 2);
  for (const auto word : {compression, imageSize, xPixelsPerMetre, yPixelsPerMetre, colorsUsed, 0U})
    Put(bytes, word, 4);
  bytes.resize(std::min<std::size_t>(size, 128));
  return bytes;
}

namespace {

Bytes HeaderOf(Keys& keys) {
  return Header{.size = keys.Take("size", 40),
                .width = keys.Take("w", 4),
                .height = keys.Take("h", 2),
                .bits = keys.Take("bits", 24),
                .compression = keys.Take("comp"),
                .xPixelsPerMetre = keys.Take("x"),
                .yPixelsPerMetre = keys.Take("y"),
                .colorsUsed = keys.Take("used")}
      .Encode();
}

/// What is between the colons; there are at least `count` such parts.
std::vector<std::string> Parts(const std::string& text, std::size_t count) {
  auto parts = Split(text, ':');
  parts.resize(std::max(parts.size(), count));
  return parts;
}

Bytes BitmapOf(const std::string& text) {
  const auto parts = Parts(text, 3);
  Keys keys(parts[0]);
  Bytes file = keys.Take("array") != 0 ? Hex("4241 28000000 00000000 00000000") : Bytes{};
  const Bytes rest = HeaderOf(keys);
  const Bytes between = Data(parts[1]);
  Append(file, Hex("424d 00000000 00000000"));
  Put(file, keys.Take("at", file.size() + 4 + rest.size() + between.size()), 4);
  for (const auto& part : {rest, between, Data(parts[2])}) Append(file, part);
  return file;
}

Bytes BodyOf(Keys& keys, const std::string& data) {
  const uint32_t png = keys.Take("png");
  Bytes body = png != 0 ? Hex("89504e470d0a1a0a") : keys.Take("raw") != 0 ? Bytes{} : HeaderOf(keys);
  if (png != 0) body.resize(png, 0x33);
  Append(body, Data(data));
  return body;
}

Bytes IconOf(unsigned type, const std::string& text) {
  const auto pages = Split(text, '/');
  Bytes file;
  for (const std::size_t word : {std::size_t{0}, std::size_t{type}, pages.size()}) Put(file, word, 2);
  Bytes bodies;
  for (const auto& page : pages) {
    const auto parts = Parts(page, 2);
    Keys keys(parts[0]);
    const Bytes body = BodyOf(keys, parts[1]);
    for (const auto byte : {keys.Take("ew", 16), keys.Take("eh", 16), keys.Take("ecolors"), 0U})
      Put(file, byte, 1);
    Put(file, 1, 2);
    Put(file, keys.Take("ebits"), 2);
    Put(file, keys.Take("elength", body.size()), 4);
    Put(file, keys.Take("eoffset", 6 + 16 * pages.size() + bodies.size()), 4);
    Append(bodies, body);
  }
  Append(file, bodies);
  return file;
}

}  // namespace

bool Build(Bytes& file, const Clause& clause) {
  const auto& [word, rest] = clause;
  if (word == "file") {
    file = Data(rest);
  } else if (word == "bmp") {
    file = BitmapOf(rest);
  } else if (word == "icon" || word == "cursor") {
    file = IconOf(word == "icon" ? 1 : 2, rest);
  } else if (word == "cut" || word == "pad") {
    EXPECT_EQ(word == "cut", std::stoul(rest) < file.size());
    file.resize(std::stoul(rest));
  } else if (word == "append") {
    Append(file, Data(rest));
  } else if (word == "patch") {
    const std::size_t blank = rest.find(' ');
    const Bytes patch = Data(rest.substr(blank));
    std::copy(patch.begin(), patch.end(), file.begin() + std::stol(rest));
  } else {
    return false;
  }
  return true;
}

uint32_t NumberAt(const Bytes& bytes, std::size_t at, std::size_t count) {
  uint32_t number = 0;
  for (std::size_t i = count; i-- > 0;) number = number << 8 | (at + i < bytes.size() ? bytes[at + i] : 0U);
  return number;
}

std::vector<Page> PagesOf(const Bytes& file) {
  std::vector<Page> pages;
  for (std::size_t i = 0; i < NumberAt(file, 4, 2); ++i) {
    const std::size_t entry = 6 + 16 * i;
    pages.push_back(
        {Part(file, entry, 12), Part(file, NumberAt(file, entry + 12, 4), NumberAt(file, entry + 8, 4))});
  }
  return pages;
}

Page AsNew(Rig& rig) {
  const Bytes file = std::exchange(rig.kernel.file, {});
  const auto faults = std::exchange(rig.kernel.faults, {});
  EXPECT_EQ(rig.Save(), STATUS_OK);
  Page page = PagesOf(rig.kernel.file).at(0);
  rig.kernel.file = file;
  rig.kernel.faults = faults;
  return page;
}
