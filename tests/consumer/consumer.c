/* A stranger's program in C: takes the widest page of a file and saves it as a run-length coded bitmap. */
#include <stdio.h>
#include <vx/vx.h>

static int WidestPage(vx_source* source, vx_info* widest) {
  int status = vx_describe(source, 1, widest);
  for (int page = 2; status == VX_OK && page <= widest->page_count; ++page) {
    vx_info info;
    status = vx_describe(source, page, &info);
    if (status == VX_OK && info.width > widest->width) *widest = info;
  }
  return status;
}

static int Convert(vx_source* source, const char* out) {
  vx_info info;
  vx_load_options load = VX_LOAD_OPTIONS_DEFAULT;
  vx_save_options save = VX_SAVE_OPTIONS_DEFAULT;
  vx_bitmap* bitmap = NULL;
  int status = WidestPage(source, &info);
  if (status == VX_OK) {
    load.page = info.page;
    status = vx_load(source, &load, &bitmap);
  }
  if (status == VX_OK) {
    save.format = VX_FORMAT_BMP_RLE;
    save.bits_per_pixel = 8;
    status = vx_save_file(bitmap, out, &save);
  }
  if (status == VX_OK) printf("%dx%d\n", info.width, info.height);
  vx_bitmap_free(bitmap);
  return status;
}

int main(int argc, char** argv) {
  vx_source* source = NULL;
  int status = argc == 3 ? vx_open_file(argv[1], &source) : VX_BAD_PARAMETER;
  if (status == VX_OK) status = Convert(source, argv[2]);
  if (status != VX_OK) fprintf(stderr, "%s: %s\n", vx_status_name(status), vx_error_detail());
  vx_close(source);
  return status == VX_OK ? 0 : 1;
}
