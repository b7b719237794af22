// The fake kernel's books: what happened, what fails next, what is still open. What the filter may not
// do becomes a complaint in the verdict instead of a crash, so that one run reports all of it.
#include "FakeKernel.h"

#include <algorithm>
#include <cstdlib>

namespace {

FakeKernel* current = nullptr;

}  // namespace

FakeKernel::FakeKernel() {
  current = this;
}

FakeKernel::~FakeKernel() {
  for (const auto& block : blocks) std::free(block.first);
  current = nullptr;
}

FakeKernel& FakeKernel::Current() {
  return *current;
}

void FakeKernel::StartCall() {
  events.clear();
  turns.clear();
  problems.clear();
  rows.clear();
  maskRows.clear();
  palette.clear();
  stream.clear();
  faultStruck = false;
  blocksMade = 0;
}

std::string FakeKernel::Verdict() const {
  std::string text;
  for (const auto& problem : problems) text += problem + "; ";
  for (const auto& block : blocks) text += "leaked block #" + std::to_string(block.second) + "; ";
  if (saved.globals != 0) text += "leaked global memory; ";
  for (const auto& bitmap : bitmaps)
    text += bitmap.second.accessed ? "bitmap left accessed; " : "leaked bitmap; ";
  for (const auto& handle : handles) {
    if (handle->open != handle->handedOver) text += handle->open ? "file left open; " : "handle closed; ";
  }
  return text;
}

std::string FakeKernel::Log(std::initializer_list<Kind> kinds) const {
  std::string text;
  for (const auto& event : events) {
    if (std::find(kinds.begin(), kinds.end(), event.kind) == kinds.end()) continue;
    text += (text.empty() ? "" : ", ") + event.text;
  }
  return text;
}

Kind FakeKernel::LastEvent() const {
  return events.empty() ? Kind::kKinds : events.back().kind;
}

std::optional<int> FakeKernel::Happens(Kind kind, const std::string& text,
                                       std::initializer_list<std::int64_t> numbers) {
  events.push_back({kind, text});
  for (const auto number : numbers) events.back().text += " " + std::to_string(number);
  const int turn = ++turns[kind];
  if (meanwhile) meanwhile(kind, turn);
  if (!fault || fault->kind != kind || !fault->Strikes(turn)) return std::nullopt;
  faultStruck = true;
  return fault->result;
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
