/* describe: says what is on every page of the files given. */
#include <stdio.h>
#include <vx/vx.h>

static int DescribePage(vx_source* source, int page) {
  vx_info info;
  const int status = vx_describe(source, page, &info);
  if (status != VX_OK) {
    printf("  page %d: %s (%d)\n    %s\n", page, vx_status_name(status), status, vx_error_detail());
    return 0;
  }
  printf("  page %d of %d: %s, %d x %d pixels of %d bits%s%s\n", page, info.page_count,
         vx_format_name(info.format), info.width, info.height, info.bits_per_pixel,
         info.compression[0] == '\0' ? "" : ", ", info.compression);
  return info.page_count;
}

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    vx_source* source;
    printf("%s\n", argv[i]);
    if (vx_open_file(argv[i], &source) != VX_OK) {
      printf("  %s\n", vx_error_detail());
      continue;
    }
    const int pages = DescribePage(source, 1);
    for (int page = 2; page <= pages; ++page) DescribePage(source, page);
    vx_close(source);
  }
  return 0;
}
