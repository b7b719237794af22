// The fake kernel's books: what happened, what fails next, what is still open. What the filter may not
// do becomes a complaint in the verdict instead of a crash, so that one run reports all of it.
#include "FakeKernel.h"

#include <algorithm>
#include <cstdlib>

_BITMAPHANDLE Record(int width, int height, int bits, int order) {
  _BITMAPHANDLE record{};
  record.StructSize = sizeof record;
  record.Width = width;
  record.Height = height;
  record.BitsPerPixel = bits;
  record.BytesPerLine = RowSize(width, bits);
  record.Orientation = ORIENT_BOTTOM_UP;
  record.ColorOrder = order;
  return record;
}

FakeKernel::~FakeKernel() {
  for (const auto& block : blocks) std::free(block.first);
  current = previous_;
}

void FakeKernel::StartCall() {
  events_.clear();
  turns_.clear();
  problems_.clear();
  rows.clear();
  maskRows.clear();
  palette.clear();
  stream.clear();
  faultsStruck = 0;
  blocksMade = 0;
}

std::string FakeKernel::Verdict() const {
  std::string text;
  for (const auto& problem : problems_) text += problem + "; ";
  for (const auto& block : blocks) text += "leaked block #" + std::to_string(block.second) + "; ";
  if (saved.globals != 0) text += "leaked global memory; ";
  for (const auto& bitmap : bitmaps)
    text += bitmap.second.accessed ? "bitmap left accessed; " : "leaked bitmap; ";
  for (const auto& handle : handles) {
    if (handle->open != handle->handedOver) text += handle->open ? "file left open; " : "handle closed; ";
  }
  return text;
}

std::string FakeKernel::Log(const std::vector<std::string>& kinds) const {
  std::string text;
  for (const auto& event : events_) {
    if (!kinds.empty() && std::find(kinds.begin(), kinds.end(), event.kind) == kinds.end()) continue;
    text += (text.empty() ? "" : ", ") + event.text;
  }
  return text;
}

std::optional<int> FakeKernel::Happens(const std::string& kind, Numbers numbers, const std::string& what) {
  events_.push_back({kind, kind + (what.empty() ? "" : " ") + what});
  for (const auto number : numbers) events_.back().text += " " + std::to_string(number);
  const int turn = ++turns_[kind];
  if (meanwhile) meanwhile(kind);
  for (const auto& fault : faults) {
    if (fault.kind != kind || !fault.Strikes(turn)) continue;
    ++faultsStruck;
    return fault.result;
  }
  return std::nullopt;
}

FakeKernel::Bitmap* FakeKernel::Known(_BITMAPHANDLE* bitmap) {
  const auto found = bitmaps.find(bitmap);
  if (found != bitmaps.end()) return &found->second;
  Complain("use of a bitmap that was never made");
  return nullptr;
}

bool FakeKernel::Usable(HANDLE handle) {
  const bool usable = std::any_of(handles.begin(), handles.end(),
                                  [&](const auto& each) { return each.get() == handle && each->open; });
  if (!usable) Complain("use of a handle that is not open");
  return usable;
}

HANDLE FakeKernel::HandOver() {
  handles.push_back(std::make_unique<tagHANDLE>());
  handles.back()->handedOver = true;
  return handles.back().get();
}

void FakeKernel::TakeBack(HANDLE handle) {
  std::erase_if(handles, [handle](const auto& each) { return each.get() == handle; });
}
