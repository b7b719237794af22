// From results to HTML. All text of foreign origin goes through Escape.
#include "Page.h"

#include <fmt/format.h>

#include <algorithm>

#include "Facts.h"
#include "Text.h"

namespace demo {
namespace {

constexpr int kMaxEnlarged = 12;
constexpr int kStageSide = 208;  // pixels; the style's .stage leaves that much room

std::string Escape(std::string_view text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '&': result += "&amp;"; break;
      case '<': result += "&lt;"; break;
      case '>': result += "&gt;"; break;
      case '"': result += "&quot;"; break;
      default: result += c;
    }
  }
  return result;
}

std::string EscapeName(const std::string& name) {
  return Escape(cli::Printable(name));
}

bool HasPicture(const PageResult& page) {
  return !page.picture.empty();
}

/// Small pictures are enlarged by a whole factor, so that every pixel stays a square.
int ShownWidth(const PageResult& page, int room) {
  const int side = std::max(page.width, page.height);
  if (side <= room) return page.width * std::min(room / side, kMaxEnlarged);
  return std::max(1, static_cast<int>(static_cast<long long>(page.width) * room / side));
}

std::string Picture(const PageResult& page, std::string_view folder, int room) {
  const bool isEnlarged = std::max(page.width, page.height) <= room;
  return fmt::format(R"(<a href="{0}/{1}"><img src="{0}/{1}" width="{2}" alt="{3}x{4} pixels"{5}></a>)",
                     folder, page.picture, ShownWidth(page, room), page.width, page.height,
                     isEnlarged ? R"( class="crisp")" : "");
}

std::string Stage(const FileResult& result, std::string_view folder) {
  const auto shown = std::count_if(result.pages.begin(), result.pages.end(), HasPicture);
  if (shown == 0) return R"(<div class="stage empty" aria-hidden="true">&#8709;</div>)";
  const int room = shown == 1 ? kStageSide : shown <= 4 ? kStageSide / 2 - 8 : kStageSide / 3 - 8;
  std::string html = R"(<div class="stage">)";
  for (const PageResult& page : result.pages) {
    if (HasPicture(page)) html += Picture(page, folder, room);
  }
  return html + "</div>";
}

std::string PageFact(const vx_info& info) {
  return fmt::format("{}, {} bit", cli::SizeText(info), info.bits_per_pixel);
}

void AddPageFacts(const std::vector<PageResult>& pages, std::vector<std::string>& facts) {
  facts.push_back(fmt::format("{} pages", pages.front().info.page_count));
  for (const PageResult& page : pages) {
    if (page.info.width > 0) facts.push_back(PageFact(page.info));
  }
}

void AddImageFacts(const vx_info& info, std::vector<std::string>& facts) {
  facts.push_back(cli::SizeText(info));
  facts.push_back(fmt::format("{} bit", info.bits_per_pixel));
  if (info.compression[0] != '\0' && info.format != VX_FORMAT_BMP_RLE) facts.emplace_back(info.compression);
  if (info.bits_per_pixel == 16) facts.push_back(cli::ColorOrderText(info));
  if (info.orientation == VX_TOP_DOWN) facts.emplace_back("top-down");
  facts.push_back(cli::ResolutionText(info) + " dpi");
}

std::string Facts(const FileResult& result) {
  std::vector<std::string> facts;
  const vx_info& info = result.pages.front().info;
  if (info.width > 0) facts.emplace_back(vx_format_name(info.format));
  if (info.page_count > 1) {
    AddPageFacts(result.pages, facts);
  } else if (info.width > 0) {
    AddImageFacts(info, facts);
  }
  facts.push_back(cli::ByteCount(result.size));
  std::string html = R"(<ul class="facts">)";
  for (const std::string& fact : facts) html += "<li>" + Escape(fact) + "</li>";
  return html + "</ul>";
}

std::string FailureNote(const PageResult& page) {
  if (page.failure.status.empty()) return "";
  return fmt::format(R"(<p class="note {}">{} <code>{}</code>{}</p>)",
                     page.isTruncated ? "partly" : "refused", Escape(page.failure.message),
                     Escape(page.failure.status),
                     page.isTruncated ? " Shown with <code>--allow-truncated</code>." : "");
}

std::string Card(const FileResult& result, std::string_view folder) {
  std::string html = R"(<article class="card">)" + Stage(result, folder);
  html += fmt::format("<h3>{}</h3>", EscapeName(result.item.path.filename().string()));
  if (!result.item.title.empty())
    html += fmt::format(R"(<p class="title">{}</p>)", Escape(result.item.title));
  html += Facts(result);
  if (!result.item.rawArguments.empty()) {
    html += fmt::format(R"(<p class="arguments"><code>{}</code></p>)", Escape(result.item.rawArguments));
  }
  for (const PageResult& page : result.pages) html += FailureNote(page);
  if (result.pagesLeftOut > 0) {
    html += fmt::format(R"(<p class="note">and {} more pages</p>)", result.pagesLeftOut);
  }
  return html + "</article>\n";
}

std::string Number(int count, std::string_view one, std::string_view many) {
  return fmt::format("<li><b>{}</b> {}</li>", count, count == 1 ? one : many);
}

std::string Summary(const std::vector<FileResult>& results) {
  int pictures = 0;
  int truncated = 0;
  int refused = 0;
  for (const FileResult& result : results) {
    for (const PageResult& page : result.pages) {
      pictures += HasPicture(page) ? 1 : 0;
      truncated += page.isTruncated ? 1 : 0;
      refused += HasPicture(page) ? 0 : 1;
    }
  }
  return R"(<ul class="summary">)" + Number(static_cast<int>(results.size()), "file", "files") +
         Number(pictures, "picture", "pictures") +
         Number(truncated, "of them cut short", "of them cut short") +
         Number(refused, "refused, with the reason", "refused, with the reason") + "</ul>";
}

}  // namespace

std::string RenderPage(const std::vector<FileResult>& results, std::string_view pictureFolder) {
  std::string html = fmt::format(
      "<!doctype html>\n<html lang=\"en\">\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<title>vxbmp: what is in these files</title>\n<style>{}</style>\n"
      "<header><h1>vxbmp</h1><p>Windows and OS/2 bitmaps, icons and cursors, identified and converted by "
      "version {}. Click a picture for the PNG.</p>{}</header>\n<main>\n",
      kStyle, vx_version(), Summary(results));
  std::string group;
  for (const FileResult& result : results) {
    if (result.item.group != group || &result == results.data()) {
      if (&result != results.data()) html += "</section>\n";
      group = result.item.group;
      html += fmt::format("<h2>{}</h2>\n<section>\n", EscapeName(group));
    }
    html += Card(result, pictureFolder);
  }
  if (!results.empty()) html += "</section>\n";
  return html + "</main>\n</html>\n";
}

}  // namespace demo
