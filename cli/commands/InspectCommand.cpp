// vxbmp inspect: what files are made of, byte by byte.
#include <fmt/format.h>
#include <vx/inspect.h>

#include <algorithm>
#include <array>
#include <exception>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "commands/Command.h"
#include "commands/Structure.h"
#include "failures/Report.h"
#include "streams/Input.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {
namespace {

struct InspectArguments {
  std::vector<std::string> files;
  std::string page;
  bool hex = false;
  bool codes = false;
  bool json = false;
};

struct FreeStructure {
  void operator()(vx_structure* structure) const { vx_structure_free(structure); }
};
using Structure = std::unique_ptr<vx_structure, FreeStructure>;

Structure Inspect(const vx::Source& source) {
  vx_structure* structure = nullptr;
  vx::Check(vx_inspect(source.Get(), &structure));
  return Structure(structure);
}

std::span<const vx_part> PartsOf(const Structure& structure) {
  int count = 0;
  const vx_part* parts = vx_structure_parts(structure.get(), &count);
  return {parts, static_cast<size_t>(count)};
}

/// What a callback throws must not pass through the library: it waits here.
struct CodeWalk {
  StructureListing& listing;
  std::exception_ptr failure{};

  static int Take(void* user, const vx_code* code) {
    auto& walk = *static_cast<CodeWalk*>(user);
    try {
      walk.listing.Add(*code);
      return 0;
    } catch (...) {
      walk.failure = std::current_exception();
      return 1;
    }
  }
};

class Inspector {
 public:
  explicit Inspector(const InspectArguments& arguments)
      : arguments_(arguments),
        page_(ParsePage(arguments.page)),
        listing_(arguments.json ? NewStructureLines() : NewTree(arguments.hex)) {}

  ExitCode Run() {
    for (const std::string& file : arguments_.files) InspectFile(file);
    return exitCode_;
  }

 private:
  static int ParsePage(const std::string& page) {
    if (page.empty()) return 0;
    if (const std::optional<int> number = ParseInt(page, 1)) return *number;
    throw UsageError(fmt::format("--page {}: a whole number from 1 is needed", Printable(page)));
  }

  void InspectFile(const std::string& file) try {
    Input input(file.c_str());
    const vx::Source& source = input.Source();
    const Structure structure = Inspect(source);
    const std::span<const vx_part> parts = PartsOf(structure);
    if (page_ != 0 &&
        std::none_of(parts.begin(), parts.end(), [&](const vx_part& part) { return part.page == page_; })) {
      throw vx::Error(VX_BAD_PAGE, fmt::format("there is no page {}", page_));
    }
    listing_->Begin(InputName(file.c_str()), SizeOf(parts));
    std::vector<int> depths;
    for (const vx_part& part : parts) {
      depths.push_back(part.parent < 0 ? 0 : depths[static_cast<size_t>(part.parent)] + 1);
      if (page_ == 0 || part.page == page_)
        ShowPart(source, part, static_cast<int>(depths.size()) - 1, depths.back());
    }
  } catch (const vx::Error& error) {
    ReportFailure(error, {.file = InputName(file.c_str())});
    exitCode_ = kExitFailed;
  } catch (const FileError& error) {
    ReportMessage(error.what());
    exitCode_ = kExitFailed;
  }

  /// Every byte of a file is in some part.
  static uint64_t SizeOf(std::span<const vx_part> parts) {
    uint64_t size = 0;
    for (const vx_part& part : parts) {
      if (part.present > 0) size = std::max(size, part.offset + part.present);
    }
    return size;
  }

  void ShowPart(const vx::Source& source, const vx_part& part, int number, int depth) {
    std::array<vx_field, VX_MOST_FIELDS> fields{};
    int count = 0;
    vx::Check(vx_part_fields(source.Get(), &part, fields.data(), &count));
    listing_->Add(number, part, depth, std::span(fields).first(static_cast<size_t>(count)));
    if (arguments_.codes && part.kind == VX_PART_PIXELS && part.count == 0)
      ShowCodes(source, std::max(part.page, 1));
  }

  void ShowCodes(const vx::Source& source, int page) {
    CodeWalk walk{*listing_};
    const int status = vx_read_codes(source.Get(), page, CodeWalk::Take, &walk);
    if (walk.failure) std::rethrow_exception(walk.failure);
    if (status != VX_NOT_SUPPORTED) vx::Check(status);  // there are codings of other kinds
  }

  const InspectArguments& arguments_;
  int page_;  // 0: all
  std::unique_ptr<StructureListing> listing_;
  ExitCode exitCode_ = kExitOk;
};

}  // namespace

Action DeclareInspect(Arguments& command) {
  auto arguments = std::make_shared<InspectArguments>();
  command.Add({.name = "FILE", .help = "files to look into; - is standard input", .isRequired = true},
              arguments->files);
  command.Add({.name = "--page", .help = "show what belongs to page N only", .value = "N"}, arguments->page);
  command.Add({.name = "--hex", .help = "show the bytes of every field, too"}, arguments->hex);
  command.Add({.name = "--codes", .help = "list the codes of run-length data: row, pixel, what it does"},
              arguments->codes);
  command.Add({.name = "--json", .help = "print one JSON object a line for every part, and every code"},
              arguments->json);
  return [arguments] { return Inspector(*arguments).Run(); };
}

}  // namespace cli
