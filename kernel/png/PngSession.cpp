// Owns libpng's records. Nothing here has a destructor in a frame that libpng's longjmp crosses.
#include "png/PngSession.h"

#include <csetjmp>
#include <cstring>

#include "base/Memory.h"
#include "format/IccProfile.h"

namespace vxkrn {
namespace {

// Chunks nobody here asks for are skipped unread: some of them are compressed and may expand without end.
constexpr png_byte kIgnoredChunks[] =
    "bKGD\0eXIf\0hIST\0iTXt\0oFFs\0pCAL\0sBIT\0sCAL\0sPLT\0tEXt\0tIME\0zTXt";
constexpr int kIgnoredChunkCount = static_cast<int>(sizeof kIgnoredChunks / 5);
// Of these one is compressed, too, up to the largest chunk: who only asks for a size need not wait for it.
constexpr png_byte kColorChunks[] = "cHRM\0gAMA\0iCCP\0sRGB";
constexpr int kColorChunkCount = static_cast<int>(sizeof kColorChunks / 5);
constexpr png_alloc_size_t kLargestChunk = bmp::kLargestProfile;

}  // namespace

PngSession::PngSession(Direction direction) noexcept : direction_(direction) {
  const auto create = direction == Direction::kWrite ? png_create_write_struct_2 : png_create_read_struct_2;
  png_ = create(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning, this, OnAllocate, OnFree);
  if (png_ == nullptr) return;
  info_ = png_create_info_struct(png_);
}

PngSession::~PngSession() {
  if (direction_ == Direction::kWrite) {
    png_destroy_write_struct(&png_, &info_);
  } else {
    png_destroy_read_struct(&png_, &info_, nullptr);
  }
}

void PngSession::SetLimits() {
  if (hasLimits_) return;
  hasLimits_ = true;
  if (direction_ == Direction::kWrite) {
    png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    return;
  }
  png_set_user_limits(png_, kLongestSide, kLongestSide);
  png_set_chunk_malloc_max(png_, kLargestChunk);
  png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, kIgnoredChunks, kIgnoredChunkCount);
  if (direction_ == Direction::kRead) {
    png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, kColorChunks, kColorChunkCount);
  }
}

int PngSession::Run(Step step, void* argument) {
  if (png_ == nullptr || info_ == nullptr) return STATUS_NO_MEMORY;
  if (setjmp(png_jmpbuf(png_)) != 0) return outOfMemory_ ? STATUS_NO_MEMORY : STATUS_BAD_FORMAT;
  SetLimits();
  step(*this, argument);
  return STATUS_OK;
}

void PngSession::OnError(png_structp png, png_const_charp message) {
  auto* session = static_cast<PngSession*>(png_get_error_ptr(png));
  std::strncpy(session->message_.data(), message, session->message_.size() - 1);
  png_longjmp(png, 1);
}

png_voidp PngSession::OnAllocate(png_structp png, png_alloc_size_t size) {
  void* block = memory::Allocate(size, {"kernel/PngSession", __LINE__});
  if (block == nullptr) static_cast<PngSession*>(png_get_mem_ptr(png))->outOfMemory_ = true;
  return block;
}

void PngSession::OnFree(png_structp /*png*/, png_voidp block) {
  memory::Free(block);
}

}  // namespace vxkrn
