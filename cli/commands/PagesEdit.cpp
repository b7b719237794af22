// vxbmp pages add, insert, replace, delete, compact, hotspot: changes of an icon or cursor file, made whole
// or not at all.
#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "arguments/Overwriting.h"
#include "arguments/PageSelection.h"
#include "arguments/SaveArguments.h"
#include "commands/Pages.h"
#include "failures/Report.h"
#include "streams/Input.h"
#include "words/Facts.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {
namespace {

struct EditArguments {
  std::string file;
  std::vector<std::string> images;
  std::string selection;
  std::string at;
  std::string point;
  std::string bits;
  bool asPng = false;
  Overwriting overwriting;
};

/// Runs `edits` on the file and stores what became of it.
template <class Edits>
ExitCode Edit(const EditArguments& arguments, const Edits& edits) try {
  const std::string& file = arguments.file;
  vx::Edit edit(file);
  if (!edit.IsLocked()) {
    ReportMessage(
        fmt::format("{}: files cannot be locked here; let nobody else change it now", Printable(file)));
  }
  edits(edit);
  arguments.overwriting.KeepOld(file);
  edit.Commit();
  return kExitOk;
} catch (const vx::Error& error) {
  ReportFailure(error, {.file = arguments.file});
  return kExitFailed;
}

/// Loads the first page of each; reports the first that fails.
std::optional<std::vector<vx::Bitmap>> LoadAll(const std::vector<std::string>& images) {
  std::vector<vx::Bitmap> pictures;
  for (const std::string& image : images) {
    try {
      Input input(image.c_str());
      pictures.push_back(input.Source().Load());
      ReportRemarks(InputName(image.c_str()));
      const int pages = input.Source().Describe().page_count;
      if (pages > 1) {
        ReportMessage(fmt::format("{}: page 1 of {}, the others are left out",
                                  Printable(InputName(image.c_str())), pages));
      }
    } catch (const vx::Error& error) {
      ReportFailure(error, {.file = InputName(image.c_str())});
      return std::nullopt;
    }
  }
  return pictures;
}

bool IsCursorFile(const std::string& file) try {
  return vx::Source::File(file).DescribeDirectory().is_cursor != 0;
} catch (const vx::Error&) {
  return false;  // the edit says what is wrong with it
}

/// How pictures become pages: as the library sees fit, unless the arguments say more.
vx::SaveOptions FormOf(const EditArguments& arguments) {
  if (arguments.asPng && !arguments.bits.empty()) {
    throw UsageError("--png pages have 32 bits a pixel; --bits is for bitmaps");
  }
  vx::SaveOptions options;
  options.format = 0;
  if (!arguments.bits.empty()) options.bits_per_pixel = ParseIconDepth(arguments.bits);
  if (arguments.asPng) {
    options.format = VX_FORMAT_VISTA_ICO;
  } else if (IsCursorFile(arguments.file)) {
    options.format = VX_FORMAT_CUR;
  } else if (options.bits_per_pixel != 0) {
    options.format = VX_FORMAT_ICO;
  }
  return options;
}

/// Loads the images, has `put` make pages of them, and says what that cost.
template <class Put>
ExitCode EditWithImages(const EditArguments& arguments, const Put& put) {
  const vx::SaveOptions options = FormOf(arguments);
  const std::optional<std::vector<vx::Bitmap>> pictures = LoadAll(arguments.images);
  if (!pictures) return kExitFailed;
  return Edit(arguments, [&](vx::Edit& edit) {
    for (const vx::Bitmap& picture : *pictures) {
      put(edit, picture, options);
      if (options.format != 0) RemarkOnLosses(arguments.file, options, picture.Plan(options));
    }
  });
}

int ParsePosition(const std::string& at) {
  if (const std::optional<int> number = ParseInt(at, 1)) return *number;
  throw UsageError(fmt::format("--at {}: a whole number from 1 is needed", Printable(at)));
}

std::pair<int, int> ParsePoint(const std::string& point) {
  const std::string_view text = point;
  const size_t comma = std::min(text.find(','), text.size());
  const std::optional<int> x = ParseInt(text.substr(0, comma), 0);
  const std::optional<int> y = ParseInt(text.substr(std::min(comma + 1, text.size())), 0);
  if (x && y) return {*x, *y};
  throw UsageError(
      fmt::format("{}: a point X,Y is needed, such as 0,0 for the top left pixel", Printable(point)));
}

ExitCode Add(const EditArguments& arguments) {
  return EditWithImages(arguments, [](vx::Edit& edit, const vx::Bitmap& picture,
                                      const vx_save_options& options) { edit.Add(picture, &options); });
}

ExitCode Insert(const EditArguments& arguments) {
  const int position = ParsePosition(arguments.at);
  return EditWithImages(arguments,
                        [&](vx::Edit& edit, const vx::Bitmap& picture, const vx_save_options& options) {
                          edit.Insert(position, picture, &options);
                        });
}

ExitCode Replace(const EditArguments& arguments) {
  return EditWithImages(
      arguments, [&](vx::Edit& edit, const vx::Bitmap& picture, const vx_save_options& options) {
        const int page = SelectPage(arguments.selection, vx::Source::File(arguments.file), arguments.file);
        edit.Replace(page, picture, &options);
      });
}

ExitCode Delete(const EditArguments& arguments) {
  return Edit(arguments, [&](vx::Edit& edit) {
    std::vector<int> pages =
        SelectPages(arguments.selection, vx::Source::File(arguments.file), arguments.file);
    if (static_cast<int>(pages.size()) == edit.PageCount()) {
      throw FileError(VX_LAST_PAGE, arguments.file, "these are all its pages, and one has to stay");
    }
    std::sort(pages.rbegin(), pages.rend());  // from the end, so that numbers stay what they were
    for (const int page : pages) edit.Delete(page);
  });
}

ExitCode Compact(const EditArguments& arguments) {
  return Edit(arguments, [](vx::Edit& edit) { edit.Compact(); });
}

/// A point beside the picture is never meant, though files can say so.
void RefuseBeside(const vx::Source& source, int page, const std::pair<int, int>& point,
                  const std::string& file) try {
  const vx_info info = source.Describe(page);
  if (point.first < info.width && point.second < info.height) return;
  throw UsageError(fmt::format("{},{} lies beside page {} of {}, which is {}", point.first, point.second,
                               page, Printable(file), SizeText(info)));
} catch (const vx::Error&) {
  // A page that cannot be described has a hot spot all the same.
}

ExitCode SetHotSpot(const EditArguments& arguments) {
  const std::pair<int, int> point = ParsePoint(arguments.point);
  return Edit(arguments, [&](vx::Edit& edit) {
    const vx::Source source = vx::Source::File(arguments.file);
    const int page = SelectPage(arguments.selection, source, arguments.file);
    RefuseBeside(source, page, point, arguments.file);
    edit.SetHotSpot(page, point.first, point.second);
  });
}

void DeclareFile(Arguments& command, EditArguments& arguments) {
  command.Add({.name = "FILE", .help = "icon or cursor file to change", .isRequired = true}, arguments.file);
}

void DeclareImages(Arguments& command, EditArguments& arguments, Takes takes) {
  const bool isMany = takes == Takes::Many;
  command.Add({.name = "IMAGE",
               .help = isMany ? "pictures to add, in this order" : "picture to put there",
               .isRequired = true,
               .takes = takes},
              arguments.images);
  command.Add({.name = "--png", .help = "store it as a PNG stream, which icons can have"}, arguments.asPng);
  command.Add({.name = "--bits",
               .help = "store it as a bitmap of 1, 4, 8, 24 or 32 bits a pixel; those of 32\n"
                       "have soft edges, and are what such pictures become unless given",
               .value = "N",
               .offers = "1|4|8|24|32"},
              arguments.bits);
}

void DeclareSelection(Arguments& command, EditArguments& arguments, const char* help) {
  command.Add({.name = "--page", .help = help, .value = "SEL", .isRequired = true}, arguments.selection);
}

struct EditCommand {
  const char* name;
  const char* summary;
  const char* example;
  bool selects;  ///< takes SEL
  ExitCode (*run)(const EditArguments&);
  void (*declare)(Arguments&, EditArguments&);
};

constexpr EditCommand kEditCommands[] = {
    {"add", "Adds pictures as pages behind the last one.", "app.ico large.png", false, Add,
     [](Arguments& command, EditArguments& arguments) { DeclareImages(command, arguments, Takes::Many); }},
    {"insert", "Inserts a picture as page N.", "app.ico first.bmp --at 1", false, Insert,
     [](Arguments& command, EditArguments& arguments) {
       DeclareImages(command, arguments, Takes::One);
       command.Add(
           {.name = "--at", .help = "number that the new page gets", .value = "N", .isRequired = true},
           arguments.at);
     }},
    {"replace", "Puts a picture in a page's place; a cursor's keeps its hot spot.",
     "app.ico new.png --page -1", true, Replace,
     [](Arguments& command, EditArguments& arguments) {
       DeclareImages(command, arguments, Takes::One);
       DeclareSelection(command, arguments, "page to replace");
     }},
    {"delete", "Deletes pages; one has to stay.", "app.ico --page 1-2,48x48", true, Delete,
     [](Arguments& command, EditArguments& arguments) {
       DeclareSelection(command, arguments, "pages to delete");
     }},
    {"compact", "Drops bytes that belong to no page; the pages stay as they are, bit for bit.", "app.ico",
     false, Compact, [](Arguments& /*command*/, EditArguments& /*arguments*/) {}},
    {"hotspot", "Sets the pixel that points, of a cursor.", "arrow.cur 3,2 --page 1", true, SetHotSpot,
     [](Arguments& command, EditArguments& arguments) {
       command.Add({.name = "POINT", .help = "X,Y of the pixel; 0,0 is the top left one", .isRequired = true},
                   arguments.point);
       DeclareSelection(command, arguments, "page that it belongs to");
     }},
};

void DeclareEdit(Arguments& pages, const EditCommand& edit) {
  Arguments& command =
      pages.AddCommand({.name = edit.name,
                        .summary = edit.summary,
                        .details = DetailsOf(edit.selects, fmt::format("{} {}", edit.name, edit.example))});
  auto arguments = std::make_shared<EditArguments>();
  DeclareFile(command, *arguments);
  edit.declare(command, *arguments);
  arguments->overwriting.DeclareBackup(command);
  command.SetAction([arguments, run = edit.run] { return run(*arguments); });
}

}  // namespace

void DeclareEdits(Arguments& pages) {
  for (const EditCommand& edit : kEditCommands) DeclareEdit(pages, edit);
}

}  // namespace cli
