/* rescue IN OUT.png: loads a picture, or what is left of it, and saves it as PNG. */
#include <stdio.h>
#include <vx/vx.h>

static int Load(vx_source* source, vx_bitmap** bitmap) {
  vx_load_options options = VX_LOAD_OPTIONS_DEFAULT;
  int status = vx_load(source, &options, bitmap);
  if (status == VX_READ_ERROR) {  // the file ends early: is there anything at all?
    printf("damaged: %s\n", vx_error_detail());
    options.allow_truncated = 1;
    status = vx_load(source, &options, bitmap);
  }
  return status;
}

static int Rescue(const char* in, const char* out) {
  vx_source* source;
  vx_bitmap* bitmap;
  int status = vx_open_file(in, &source);
  if (status != VX_OK) return status;
  status = Load(source, &bitmap);
  if (status == VX_OK) {
    vx_save_options options = VX_SAVE_OPTIONS_DEFAULT;
    options.format = VX_FORMAT_PNG;
    status = vx_save_file(bitmap, out, &options);
    vx_bitmap_free(bitmap);
  }
  vx_close(source);
  return status;
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const int status = Rescue(argv[1], argv[2]);
  if (status == VX_OK) {
    printf("saved as %s\n", argv[2]);
    return 0;
  }
  printf("%s\n%s\n", vx_error_detail(), vx_status_text(status));
  return 1;
}
