// Tells the stories, and tells them again with everything failing that can, and with damaged files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <sstream>

#include "../common/Damage.h"
#include "Story.h"

namespace {

// ---- queries

/// "format widthxheightxbits =data orientation order xdpi,ydpi compression"; zeros where not written.
std::string Describe(const IMAGEINFO& info) {
  std::ostringstream text;
  text << info.Format << ' ' << info.Width << 'x' << info.Height << 'x' << info.BitsPerPixel << " ="
       << info.DataSize;
  text << (info.Orientation == ORIENT_TOP_DOWN    ? " down "
           : info.Orientation == ORIENT_BOTTOM_UP ? " up "
                                                  : " - ");
  text << info.ColorOrder << ' ' << info.XResolution << ',' << info.YResolution;
  if (info.Compression[0] != '\0') text << ' ' << info.Compression;
  return text.str();
}

/// The pages of the file: a number is the page it was before, "new" what is saved as a new file would have
/// it.
std::string Pages(Rig& rig, const Bytes& before) {
  const Bytes after = rig.kernel.file;
  const Page made = AsNew(rig);
  const auto old = PagesOf(before);
  std::string text;
  for (const Page& page : PagesOf(after)) {
    const auto found = std::find(old.begin(), old.end(), page) - old.begin();
    text += text.empty() ? "" : " ";
    text += page == made ? "new" : found == std::ssize(old) ? "?" : std::to_string(found + 1);
  }
  return text;
}

/// Whether pages are lost, but for the one that an act edits.
bool LosesPages(const Act& act, const Bytes& before, const Bytes& after) {
  if (act.rest.empty()) return false;  // a new file
  const auto numbers = Numbers(act.rest);
  auto old = PagesOf(before);
  if (act.word == "delete" || numbers[0] == SAVE_PAGE_REPLACE) old.erase(old.begin() + numbers.back() - 1);
  const auto now = PagesOf(after);
  return std::any_of(old.begin(), old.end(),
                     [&](const Page& page) { return std::find(now.begin(), now.end(), page) == now.end(); });
}

/// What becomes of the act when its first event of a kind fails, its second, and so on. A letter each: '='
/// the file is as if nothing had failed, '~' it is not, and that is not told; else which failure is told, in
/// lower case where the file is not what it was before, and with '!' where that has cost other pages.
std::string Failing(const Story& story, const std::string& kind, int result, const std::string& releases) {
  static const std::map<int, char> told = {{STATUS_WRITE_ERROR, 'W'},     {STATUS_READ_ERROR, 'R'},
                                           {STATUS_BAD_PAGE, 'P'},        {STATUS_BAD_FORMAT, 'F'},
                                           {STATUS_NO_MEMORY, 'M'},       {-99, 'X'},
                                           {STATUS_OPEN_WRITE_ERROR, 'O'}};
  Bytes whole;
  std::string letters;
  for (int nth = 0;; ++nth) {  // 0: none fails
    Rig rig;
    const auto act = Prepare(rig, story);
    const Bytes before = rig.kernel.file;
    rig.kernel.faults.push_back({kind, nth, false, result});
    const int status = Perform(rig, *act);
    if (nth == 0) whole = rig.kernel.file;
    if (nth == 0) continue;
    if (rig.kernel.faultsStruck == 0) return letters;
    std::string released =
        rig.kernel.Log({"close", "release", "free-bitmap", "free", "unlock", "free-block", "end"});
    if (released.empty()) released = "nothing";
    EXPECT_NE((" / " + releases + " / ").find(" / " + released + " / "), std::string::npos)
        << kind << nth << released;
    EXPECT_EQ(rig.kernel.Log({"begin"}).empty(), rig.kernel.LastEvent() != "end");
    const bool isSpoilt = status != STATUS_OK && rig.kernel.file != before;
    const char letter = status == STATUS_OK ? (rig.kernel.file == whole ? '=' : '~') : told.at(status);
    letters += isSpoilt ? static_cast<char>(letter + ('a' - 'A')) : letter;
    if (isSpoilt && LosesPages(*act, before, rig.kernel.file)) letters += '!';
  }
}

std::string Is(Rig& rig, const std::string& expected) {
  std::string text;
  for (const auto& word : Split(expected)) {
    const std::size_t equals = word.find('=');
    const int actual = Field(rig, word.substr(0, equals));
    text += (text.empty() ? "" : " ") + word.substr(0, equals + 1);
    text += Number(word.substr(equals + 1)) == actual ? word.substr(equals + 1) : std::to_string(actual);
  }
  return text;
}

/// The data as the story tells them, where that is what they are.
std::string Same(const std::string& expected, const Bytes& bytes) {
  return Data(expected) == bytes ? expected : ToHex(bytes);
}

template <class Each, class Text>
std::string List(const std::vector<Each>& all, Text text) {
  std::string list;
  for (const auto& each : all) list += (list.empty() ? "" : " ") + text(each);
  return list;
}

/// A story as it is told.
struct Telling {
  const Story& story;
  Rig rig = {};
  std::vector<std::string> watched = {};
  std::string releases = {};
  _BITMAPHANDLE targetBefore = {};
  Bytes fileBefore = {};

  void Make(const Act& act);
  std::string Query(const Clause& query);
  void Tell();
};

std::string Telling::Query(const Clause& query) {
  const auto& [word, rest] = query;
  if (word == "log") return rig.kernel.Log(watched);
  if (word == "is") return Is(rig, rest);
  if (word == "rows") return List(rig.kernel.rows, [](const DeliveredRow& row) { return ToHex(row.bytes); });
  if (word == "masks") return List(rig.kernel.maskRows, ToHex);
  if (word == "stream") return Same(rest, rig.kernel.stream);
  if (word == "contents") return Same(rest, rig.kernel.file);
  if (word == "size") return std::to_string(rig.kernel.file.size());
  if (word == "part") {  // AT DATA
    const std::string data = rest.substr(rest.find(' ') + 1);
    const Bytes part = Part(rig.kernel.file, std::stoul(rest), Data(data).size());
    return rest.substr(0, rest.find(' ') + 1) + Same(data, part);
  }
  if (word == "pages") return Pages(rig, fileBefore);
  if (word == "palette") {  // without the black entries at its end
    Bytes colors = rig.kernel.palette;
    while (colors.size() >= 4 && Part(colors, colors.size() - 4, 4) == Bytes(4))
      colors.resize(colors.size() - 4);
    return ToHex(colors);
  }
  if (word == "untouched") {
    const bool isSame = std::memcmp(&targetBefore, &rig.kernel.target, sizeof targetBefore) == 0;
    return isSame && rig.kernel.file == fileBefore ? "" : "touched";
  }
  if (word == "failing") {
    const auto words = Split(rest);
    return words.at(0) + " " + words.at(1) + " " + Failing(story, words[0], Number(words[1]), releases);
  }
  return "this is no word of stories";
}

void Telling::Make(const Act& act) {
  targetBefore = rig.kernel.target;
  fileBefore = rig.kernel.file;
  EXPECT_EQ(Perform(rig, act), Number(act.status)) << act.status;
  EXPECT_GE(rig.kernel.faultsStruck, rig.kernel.faults.size());
  if (act.word != "identify" || (act.rest.empty() && Number(act.status) == STATUS_OK)) return;
  EXPECT_EQ(Describe(rig.info), act.rest.empty() ? "0 0x0x0 =0 - 0 0,0" : act.rest);
}

void Telling::Tell() {
  for (const auto& clause : story.clauses) {
    if (const auto act = ActOf(clause)) {
      Make(*act);
    } else if (clause.word == "watch") {
      watched = Split(clause.rest);
    } else if (clause.word == "releases") {
      releases = clause.rest;
    } else if (!SetUp(rig, clause)) {
      EXPECT_EQ(Query(clause), clause.rest) << clause.word;
    }
  }
}

std::vector<Story> AllStories() {
  std::vector<Story> all;
  for (const char* file : {"identify", "load", "rows", "save", "pages"}) {
    for (const auto& story : ReadStories(std::string(VX_STORIES) + "/" + file + ".stories"))
      all.push_back(story);
  }
  return all;
}

TEST(Stories, AreTrue) {
  for (const auto& story : AllStories()) {
    SCOPED_TRACE(story.name);
    Telling{story}.Tell();
  }
  EXPECT_EQ(fltInfo(nullptr), STATUS_BAD_PARAMETER);
  EXPECT_EQ(fltLoad(nullptr), STATUS_BAD_PARAMETER);
  EXPECT_EQ(fltSave(nullptr), STATUS_BAD_PARAMETER);
  EXPECT_EQ(fltDeletePage(nullptr), STATUS_BAD_PARAMETER);
  FreeMaskBitmap(nullptr);
}

// ---- nothing the outside does may unbalance a call

constexpr int kInjected = -1234;
const std::vector<int> kSpoilt = {STATUS_OK,         STATUS_READ_ERROR, STATUS_BAD_FORMAT,
                                  STATUS_SEEK_ERROR, STATUS_FAILURE,    STATUS_NO_MEMORY};

struct Injection {
  const char* kind;
  int result;
  std::vector<int> statuses;  // what the call may answer
};

const Injection kInjections[] = {{"alloc", 0, {STATUS_NO_MEMORY}},
                                 {"open", 0, {STATUS_OPEN_ERROR}},
                                 {"read", Fault::kHalf, kSpoilt},
                                 {"read", 0, kSpoilt},
                                 {"read", -1, kSpoilt},
                                 {"seek", -1, kSpoilt},
                                 {"seek", Fault::kElsewhere, kSpoilt},
                                 {"init", kInjected, {kInjected}},
                                 {"allocate", kInjected, {kInjected}},
                                 {"access", kInjected, {STATUS_NO_MEMORY}},
                                 {"release", kInjected, {kInjected}},
                                 {"region", kInjected, {kInjected}},
                                 {"put", kInjected, {STATUS_OK}},
                                 {"get", kInjected, {STATUS_OK}},
                                 {"palette", kInjected, {STATUS_OK}},
                                 {"row", kInjected, {kInjected}},
                                 {"load-png", kInjected, {kInjected}},
                                 {"describe-png", kInjected, {kInjected}}};

bool Among(const std::vector<int>& statuses, int status) {
  return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

/// Those that identify, load or decode, and go well.
std::vector<Story> ReadingStories() {
  auto stories = AllStories();
  std::erase_if(stories, [](const Story& story) {
    Rig rig;
    const auto act = Prepare(rig, story);
    const bool isReading = act && (act->word == "identify" || act->word == "load" || act->word == "decode");
    return !isReading || act->status != "ok" || !rig.kernel.faults.empty();
  });
  return stories;
}

/// Fails the n-th event of the injection's kind for every n that the story reaches.
int FailEach(const Story& story, const Injection& injection, bool persistent) {
  for (int n = 1; !testing::Test::HasFailure(); ++n) {
    SCOPED_TRACE(story.name + ": " + injection.kind + (persistent ? " from " : " at ") + std::to_string(n));
    Rig rig;
    const auto act = Prepare(rig, story);
    rig.kernel.faults = {{injection.kind, n, persistent, injection.result}};
    const int status = Perform(rig, *act);
    if (rig.kernel.faultsStruck == 0) return n - 1;
    EXPECT_PRED2(Among, injection.statuses, status) << injection.result;
  }
  return 0;
}

TEST(Stories, SurviveEveryEventThatFailsOnceOrForGood) {
  const auto stories = ReadingStories();
  for (const auto& injection : kInjections) {
    int struck = 0;
    for (const auto& story : stories) {
      for (const bool persistent : {false, true}) struck += FailEach(story, injection, persistent);
    }
    EXPECT_GT(struck, 0) << "no story reaches " << injection.kind;
  }
}

TEST(Stories, SurviveCutAndBentFiles) {
  auto statuses = kSpoilt;
  statuses.push_back(FakeKernel::kRefused);
  std::mt19937 dice(20);
  for (const auto& story : ReadingStories()) {
    for (int round = 0; round < 200 && !testing::Test::HasFailure(); ++round) {
      SCOPED_TRACE(story.name + " round " + std::to_string(round));
      Rig rig;
      const auto act = Prepare(rig, story);
      rig.load.ReadBufferSize = 6;
      rig.kernel.rowsAccepted = 40;
      rig.options.PageNumber = static_cast<int>(dice() % 4);
      if (dice() % 2 == 0) rig.options.Flags = LOAD_ALLOW_TRUNCATED;
      Bytes& file = rig.kernel.file;
      if (dice() % 2 == 0 && !file.empty()) file.resize(1 + dice() % file.size());
      file = Damaged(file, 120, dice);
      EXPECT_PRED2(Among, statuses, Perform(rig, *act));
    }
  }
}

TEST(Identify, KeepsWhatTheFileDoesNotSay) {
  Rig rig;
  (void)Build(rig.kernel.file, {"bmp", "size=12"});
  std::memset(&rig.info, 0x55, sizeof rig.info);
  std::strcpy(rig.info.Compression, "as supplied");
  IMAGEINFO expected = rig.info;
  EXPECT_EQ(rig.Identify(), STATUS_OK);
  const IMAGEINFO& told = rig.info;
  for (auto field : {&IMAGEINFO::Format, &IMAGEINFO::Width, &IMAGEINFO::Height, &IMAGEINFO::BitsPerPixel,
                     &IMAGEINFO::DataSize, &IMAGEINFO::Orientation, &IMAGEINFO::ColorOrder})
    expected.*field = told.*field;
  EXPECT_EQ(std::memcmp(&told, &expected, sizeof told), 0);
}

}  // namespace
