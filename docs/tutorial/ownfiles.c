/* ownfiles IN: saves a picture into a file of its own making, a block of memory, and opens that. */
#include <stdio.h>
#include <string.h>
#include <vx/vx.h>

typedef struct Store {
  unsigned char bytes[65536];
  uint64_t size;
} Store;

static void* Open(void* user, const char* name, int flags) {
  (void)flags;
  return strcmp(name, "store:1") == 0 ? user : NULL;
}

static int64_t ReadAt(void* user, void* file, void* buffer, uint32_t count, uint64_t position) {
  const Store* store = file;
  (void)user;
  if (position >= store->size) return 0;
  if (count > store->size - position) count = (uint32_t)(store->size - position);
  memcpy(buffer, store->bytes + position, count);
  return count;
}

static int64_t WriteAt(void* user, void* file, const void* buffer, uint32_t count, uint64_t position) {
  Store* store = file;
  (void)user;
  if (position > sizeof store->bytes || count > sizeof store->bytes - position) return -1; /* full */
  memcpy(store->bytes + position, buffer, count);
  if (store->size < position + count) store->size = position + count;
  return count;
}

static int64_t Size(void* user, void* file) {
  (void)user;
  return (int64_t)((const Store*)file)->size;
}

static int Truncate(void* user, void* file, uint64_t size) {
  (void)user;
  ((Store*)file)->size = size;
  return 0;
}

static int Close(void* user, void* file) {
  (void)user;
  (void)file;
  return 0;
}

static vx_bitmap* Load(const char* path) {
  vx_source* source;
  vx_bitmap* bitmap = NULL;
  if (vx_open_file(path, &source) == VX_OK) {
    vx_load(source, NULL, &bitmap);
    vx_close(source);
  }
  return bitmap;
}

/* Saves and opens as with any other file; only the name means something else. */
static int SaveAndDescribe(const vx_bitmap* bitmap, const char* name, vx_info* info) {
  vx_source* source;
  int status = vx_save_file(bitmap, name, NULL);
  if (status == VX_OK) status = vx_open_file(name, &source);
  if (status != VX_OK) return status;
  status = vx_describe(source, 1, info);
  vx_close(source);
  return status;
}

int main(int argc, char** argv) {
  static Store store;
  const vx_file_functions functions = {Open, ReadAt, WriteAt, Size, Truncate, Close};
  vx_info info;
  vx_bitmap* bitmap = argc == 2 ? Load(argv[1]) : NULL;
  if (bitmap == NULL) return 2;

  vx_redirect_files(&functions, &store); /* from now on, for this thread */
  const int status = SaveAndDescribe(bitmap, "store:1", &info);
  if (status == VX_OK) {
    printf("store:1 has %u bytes: %s, %d bits\n", (unsigned)store.size, vx_format_name(info.format),
           info.bits_per_pixel);
  } else {
    printf("%s\n", vx_error_detail());
  }
  vx_redirect_files(NULL, NULL);
  vx_bitmap_free(bitmap);
  return status == VX_OK ? 0 : 1;
}
