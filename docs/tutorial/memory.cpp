// memory IN.ico: a PNG page of an icon is a PNG file, read here out of the middle of another file's bytes.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <span>
#include <vector>
#include <vx/image.hpp>

int main(int argc, char** argv) try {
  if (argc != 2) return 2;
  std::ifstream file(argv[1], std::ios::binary);
  const std::vector<char> chars{std::istreambuf_iterator<char>(file), {}};
  const std::vector<uint8_t> bytes(chars.begin(), chars.end());  // must outlive the sources

  const vx::Source icon = vx::Source::Memory(bytes, argv[1]);
  const vx_page_info page = icon.DescribePage(1);
  if (page.is_png == 0 || page.offset > bytes.size() || page.size > bytes.size() - page.offset) return 1;
  const vx::Source png = vx::Source::Memory(std::span(bytes).subspan(page.offset, page.size));

  const vx_info info = png.Describe();
  std::printf("%s, %d x %d\n", vx_format_name(info.format), info.width, info.height);
  const vx::Buffer bitmap = png.Load().Save(vx::SaveOptions(VX_FORMAT_BMP));
  std::printf("as a bitmap it would take %zu bytes\n", bitmap.Bytes().size());
  return 0;
} catch (const vx::Error& error) {
  std::printf("%s\n", error.what());
  return 1;
}
