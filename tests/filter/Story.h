// Stories: one call of the filter each, told in a line of a *.stories file, and the files that they speak of.
// The builders write what they are told, wrong files too; they check nothing.
//
//   name; set-up; set-up; act; query; query     a line that begins with a blank continues the one above it
//   given; set-up; ...                          what all stories below it begin with, until the next
//
// Acts.cpp knows the words of set-ups and acts, StoriesTest.cpp those of queries. These make a file:
//
//   file DATA                                   as it is
//   bmp [KEY=N...] [: DATA [: DATA]]            a header, what is between it and the pixels, pixels
//   icon PAGE [/ PAGE...], cursor ...           [KEY=N...] [: DATA] each
//   cut N, pad N, append DATA, patch N DATA     afterwards
//
// Keys are those of Header; of bitmaps also array=1 and at=N, where the pixels are said to be; of pages also
// png=N (a stream of N bytes) or raw=1 in place of a header, and ew, eh, ecolors, ebits, elength, eoffset of
// the entry. DATA are hexadecimal bytes, N*HEX repeated ones, N+HEX ones that vary from there, and HEX.
// words.
#pragma once

#include <string>
#include <vector>

#include "Rig.h"

struct Clause {
  std::string word;
  std::string rest;
};

struct Story {
  std::string name;
  std::vector<Clause> clauses;
};
std::vector<Story> ReadStories(const std::string& path);

/** A decimal or 0x number; a constant of the contract, such as bad-format for STATUS_BAD_FORMAT; min, max,
 * half, elsewhere, refused, or - for 0. */
int Number(const std::string& text);
std::vector<int> Numbers(const std::string& text, char separator = ' ');
/** The words of a text, or what is between the separators. */
std::vector<std::string> Split(const std::string& text, char separator = ' ');

/** KEY=N..., taken one by one; the test fails on those that nobody takes. */
class Keys {
 public:
  explicit Keys(const std::string& text);
  ~Keys();
  Keys(const Keys&) = delete;
  Keys& operator=(const Keys&) = delete;
  uint32_t Take(const std::string& key, std::size_t otherwise = 0);

 private:
  std::map<std::string, uint32_t> left_;
};

Bytes Data(const std::string& text);
/** Makes or changes a file, where that is what the clause says. */
bool Build(Bytes& file, const Clause& clause);

/** An image header. */
struct Header {
  uint32_t size = 40;
  uint32_t width = 4;
  uint32_t height = 2;
  uint32_t bits = 24;
  uint32_t compression = 0;
  uint32_t imageSize = 0;
  uint32_t xPixelsPerMetre = 0;
  uint32_t yPixelsPerMetre = 0;
  uint32_t colorsUsed = 0;

  /** The header's bytes; of a size above 128 only the first 128. */
  [[nodiscard]] Bytes Encode() const;
};

/** A page as a reader finds it: its entry but for the offset, and its body. */
struct Page {
  Bytes entry;
  Bytes body;
  bool operator==(const Page&) const = default;
};
std::vector<Page> PagesOf(const Bytes& file);
/** What the rig's picture is as the page of a new file. */
Page AsNew(Rig& rig);
/** A little-endian number in a file, whose missing bytes are 0. */
uint32_t NumberAt(const Bytes& bytes, std::size_t at, std::size_t count);

/** A number that a set-up may set and a query may ask for. */
int& Field(Rig& rig, const std::string& name);
/** Does what the clause says, where that is a set-up. */
bool SetUp(Rig& rig, const Clause& clause);

/** A call: the status that is expected, and its arguments. */
struct Act {
  std::string word, status, rest;
};
std::optional<Act> ActOf(const Clause& clause);
int Perform(Rig& rig, const Act& act);
/** Sets everything up for a story's first act. None where the story has none. */
std::optional<Act> Prepare(Rig& rig, const Story& story);
