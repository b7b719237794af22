#include "Terminal.h"

#include <chafa.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace vxdis {

struct Terminal::Capabilities {
  ChafaTermInfo* info;
  ChafaPixelMode pixels;
  ChafaCanvasMode colors;
};

namespace {

template <auto Function>
struct Calls {
  template <class T>
  void operator()(T* object) const noexcept {
    Function(object);
  }
};
using Config = std::unique_ptr<ChafaCanvasConfig, Calls<chafa_canvas_config_unref>>;
using Canvas = std::unique_ptr<ChafaCanvas, Calls<chafa_canvas_unref>>;
using Symbols = std::unique_ptr<ChafaSymbolMap, Calls<chafa_symbol_map_unref>>;
using Environment = std::unique_ptr<gchar*, Calls<g_strfreev>>;

struct FreeString {
  void operator()(GString* string) const noexcept { g_string_free(string, TRUE); }
};

ChafaPixelMode PixelModeOf(int mode, const ChafaTermInfo* info) {
  switch (mode) {
    case DISPLAY_SYMBOLS: return CHAFA_PIXEL_MODE_SYMBOLS;
    case DISPLAY_SIXEL: return CHAFA_PIXEL_MODE_SIXELS;
    case DISPLAY_KITTY: return CHAFA_PIXEL_MODE_KITTY;
    default: break;
  }
  if (chafa_term_info_have_seq(info, CHAFA_TERM_SEQ_BEGIN_KITTY_IMMEDIATE_IMAGE_V1)) {
    return CHAFA_PIXEL_MODE_KITTY;
  }
  return chafa_term_info_have_seq(info, CHAFA_TERM_SEQ_BEGIN_SIXELS) ? CHAFA_PIXEL_MODE_SIXELS
                                                                     : CHAFA_PIXEL_MODE_SYMBOLS;
}

/// Of terminals that it does not know the library thinks too well.
bool HasNoColors(gchar** environment) {
  const gchar* name = g_environ_getenv(environment, "TERM");
  return name == nullptr || std::strcmp(name, "") == 0 || std::strcmp(name, "dumb") == 0;
}

/// xterm takes all colours since its version 331, and says so by its version alone: XTerm(379).
bool IsRecentXterm(gchar** environment) {
  const gchar* version = g_environ_getenv(environment, "XTERM_VERSION");
  constexpr int kFirst = 331;
  return version != nullptr && std::strncmp(version, "XTerm(", 6) == 0 &&
         std::strtol(version + 6, nullptr, 10) >= kFirst;
}

ChafaCanvasMode ColorsOf(ChafaPixelMode pixels, const ChafaTermInfo* info, gchar** environment) {
  if (pixels != CHAFA_PIXEL_MODE_SYMBOLS) return CHAFA_CANVAS_MODE_TRUECOLOR;
  if (HasNoColors(environment)) return CHAFA_CANVAS_MODE_FGBG;
  if (IsRecentXterm(environment)) return CHAFA_CANVAS_MODE_TRUECOLOR;
  if (chafa_term_info_have_seq(info, CHAFA_TERM_SEQ_SET_COLOR_FGBG_DIRECT))
    return CHAFA_CANVAS_MODE_TRUECOLOR;
  if (chafa_term_info_have_seq(info, CHAFA_TERM_SEQ_SET_COLOR_FGBG_256)) return CHAFA_CANVAS_MODE_INDEXED_240;
  if (chafa_term_info_have_seq(info, CHAFA_TERM_SEQ_SET_COLOR_FGBG_16)) return CHAFA_CANVAS_MODE_INDEXED_16;
  return CHAFA_CANVAS_MODE_FGBG;
}

/// The library ends the process where it gets no memory, so what it will take is asked for first: the canvas
/// and the text, which doubles while it grows.
bool FitsMemory(bool showsPixels, uint64_t cells, uint64_t cellPixels) {
  constexpr uint64_t kBytesAPixel = 20;              // 4, and twice their digits to the base of 64
  constexpr uint64_t kBytesACell = 64 * 8 + 2 * 64;  // 8 x 8 pixels, and twice the longest colours
  const uint64_t bytes = cells * (showsPixels ? cellPixels * kBytesAPixel : kBytesACell);
  Memory probe;
  return bytes <= UINT_MAX && probe.Allocate(static_cast<unsigned int>(bytes), 1);
}

}  // namespace

Terminal::Terminal(int mode) : capabilities_(new Capabilities) {
  const Environment environment(g_get_environ());
  ChafaTermDb* terminals = chafa_term_db_get_default();
  ChafaTermInfo* info = chafa_term_db_detect(terminals, environment.get());
  capabilities_->pixels = PixelModeOf(mode, info);
  capabilities_->colors = ColorsOf(capabilities_->pixels, info, environment.get());
  // Whoever asks for a coding gets it, known to the terminal or not.
  ChafaTermInfo* all = chafa_term_db_get_fallback_info(terminals);
  chafa_term_info_supplement(info, all);
  chafa_term_info_unref(all);
  capabilities_->info = info;
}

Terminal::~Terminal() {
  chafa_term_info_unref(capabilities_->info);
  delete capabilities_;
}

bool Terminal::ShowsPixels() const noexcept {
  return capabilities_->pixels != CHAFA_PIXEL_MODE_SYMBOLS;
}

int Terminal::HeightOf(int rows, int cellHeight) const noexcept {
  constexpr int kSixel = 6;
  const int height = rows * cellHeight;
  const bool isInBands = capabilities_->pixels == CHAFA_PIXEL_MODE_SIXELS;
  return isInBands ? (height + kSixel - 1) / kSixel * kSixel : height;
}

int Terminal::Draw(const Pixels& pixels, Cells cells, int cellWidth, int cellHeight, char** text,
                   unsigned int* size) const {
  const auto count = static_cast<uint64_t>(cells.columns) * static_cast<uint64_t>(cells.rows);
  const auto cellPixels = static_cast<uint64_t>(cellWidth) * static_cast<uint64_t>(cellHeight);
  if (!FitsMemory(ShowsPixels(), count, cellPixels)) return STATUS_NO_MEMORY;
  const Config config(chafa_canvas_config_new());
  const Symbols symbols(chafa_symbol_map_new());
  chafa_symbol_map_add_by_tags(symbols.get(), CHAFA_SYMBOL_TAG_SPACE);
  chafa_symbol_map_add_by_tags(symbols.get(), CHAFA_SYMBOL_TAG_BLOCK);
  chafa_canvas_config_set_symbol_map(config.get(), symbols.get());
  chafa_canvas_config_set_canvas_mode(config.get(), capabilities_->colors);
  chafa_canvas_config_set_pixel_mode(config.get(), capabilities_->pixels);
  if (capabilities_->pixels == CHAFA_PIXEL_MODE_SIXELS) {
    // The library cuts what is no whole band off the cells, so there is one, of the right height.
    chafa_canvas_config_set_cell_geometry(config.get(), cells.columns * cellWidth,
                                          HeightOf(cells.rows, cellHeight));
    chafa_canvas_config_set_geometry(config.get(), 1, 1);
  } else {
    chafa_canvas_config_set_cell_geometry(config.get(), cellWidth, cellHeight);
    chafa_canvas_config_set_geometry(config.get(), cells.columns, cells.rows);
  }
  const Canvas canvas(chafa_canvas_new(config.get()));
  chafa_canvas_draw_all_pixels(canvas.get(), CHAFA_PIXEL_RGBA8_UNASSOCIATED, pixels.rgba.Get(), pixels.width,
                               pixels.height, 4 * pixels.width);
  const std::unique_ptr<GString, FreeString> printed(chafa_canvas_print(canvas.get(), capabilities_->info));
  const auto length = static_cast<unsigned int>(printed->len);
  auto* bytes = static_cast<char*>(VX_LocalAlloc(length + 1, 1, __LINE__, "display/Terminal"));
  if (bytes == nullptr) return STATUS_NO_MEMORY;
  std::memcpy(bytes, printed->str, length);
  bytes[length] = '\n';
  *text = bytes;
  *size = length + 1;
  return STATUS_OK;
}

}  // namespace vxdis
