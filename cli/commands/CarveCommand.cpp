// vxbmp carve: the pictures inside any file, each as a file of its own.
#include <fmt/format.h>
#include <sys/stat.h>
#include <vx/inspect.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "arguments/SaveArguments.h"
#include "commands/Command.h"
#include "failures/Report.h"
#include "finding/FileList.h"
#include "jobs/Interruption.h"
#include "jobs/Progress.h"
#include "streams/Input.h"
#include "streams/NewFile.h"
#include "streams/Output.h"
#include "words/FileNames.h"
#include "words/Json.h"
#include "words/Text.h"

namespace cli {
namespace {

constexpr uint64_t kMebibyte = uint64_t{1} << 20;
constexpr uint64_t kStep = 8 * kMebibyte;  // searched at once

struct CarveArguments {
  std::vector<std::string> files;
  std::string dir;
  bool dryRun = false;
  bool json = false;
  bool quiet = false;
};

/// Of a regular file; 0 where nobody knows.
uint64_t SizeOf(const std::string& file) {
  struct stat status {};
  return stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? static_cast<uint64_t>(status.st_size)
                                                                     : 0;
}

std::string_view EndingOf(const vx_found_file& found) {
  switch (found.format) {
    case VX_FORMAT_ANI: return "ani";
    case VX_FORMAT_OS2_ICON: return "ico";
    case VX_FORMAT_OS2_POINTER: return "ptr";
    case VX_FORMAT_ICO:
    case VX_FORMAT_VISTA_ICO:
    case VX_FORMAT_CUR: return EndingFor(found.format);
    default: return "bmp";
  }
}

/// The pictures in one file.
class Carving {
 public:
  Carving(const CarveArguments& arguments, const std::string& file)
      : arguments_(arguments),
        file_(file),
        progress_(arguments.quiet),
        input_(file.c_str(), Content::Headerless) {
    counts_.total = static_cast<size_t>(SizeOf(file) / kMebibyte);
  }

  ~Carving() { progress_.Clear(); }
  Carving(const Carving&) = delete;
  Carving& operator=(const Carving&) = delete;

  /// @return how many were found @throws vx::Error, FileError
  size_t Run() {
    size_t number = 0;
    for (uint64_t at = 0; HasByte(at) && Interruption::Signal() == 0;) {
      counts_.done = std::min(static_cast<size_t>(at / kMebibyte), counts_.total);
      progress_.Show(counts_);
      vx_found_file found{};
      vx::Check(vx_find_file(input_.Source().Get(), at, at + kStep, &found));
      at = found.length == 0 ? at + kStep : found.offset + found.length;
      if (found.length == 0) continue;
      ++number;
      Take(found);
    }
    return number;
  }

 private:
  bool HasByte(uint64_t at) { return !Read(at, 1).empty(); }

  /// As many bytes as there are.
  std::span<const uint8_t> Read(uint64_t at, uint64_t count) {
    buffer_.resize(kMebibyte);
    size_t got = 0;
    vx::Check(vx_read_bytes(input_.Source().Get(), at, buffer_.data(), static_cast<size_t>(count), &got));
    return std::span(buffer_).first(got);
  }

  void Take(const vx_found_file& found) {
    const std::string stem = file_ == kStandardStream ? "standard-input" : StemOf(file_);
    const std::string output =
        Within(arguments_.dir, fmt::format("{}-{:012}.{}", stem, found.offset, EndingOf(found)));
    const bool isNew = arguments_.dryRun || Copy(found, output);
    progress_.Clear();
    Tell(found, output, arguments_.dryRun ? "planned" : isNew ? "written" : "exists");
  }

  bool Copy(const vx_found_file& found, const std::string& output) {
    NewFile file(output);
    for (uint64_t done = 0; done < found.present;) {
      const std::span<const uint8_t> bytes =
          Read(found.offset + done, std::min(kMebibyte, found.present - done));
      if (bytes.empty())
        throw FileError(VX_READ_ERROR, InputName(file_.c_str()), "it became shorter meanwhile");
      file.Write(bytes);
      done += bytes.size();
    }
    return file.Finish();
  }

  void Tell(const vx_found_file& found, const std::string& output, std::string_view result) const {
    if (arguments_.json) {
      JsonLine line;
      line.Add("schema", 1);
      line.AddFile(InputName(file_.c_str()));
      line.Add("offset", found.offset);
      line.Add("length", found.length);
      line.Add("present", found.present);
      line.Add("kind", vx_format_name(found.format));
      line.Add("pages", found.page_count);
      line.AddFile(output, "output");
      line.Add("result", result);
      return PrintToStandardOutput(line.Text());
    }
    if (arguments_.quiet) return;
    std::string text = fmt::format("{}: byte {}, {} bytes: {}", Printable(InputName(file_.c_str())),
                                   found.offset, found.length, vx_format_name(found.format));
    if (found.page_count > 1) text += fmt::format(", {} pages", found.page_count);
    text += fmt::format(" -> {}", Printable(output));
    if (result == "exists") text += ", which is there already";
    if (found.present < found.length)
      text += fmt::format("; {} bytes at its end are missing", found.length - found.present);
    PrintToStandardOutput(text + "\n");
  }

  const CarveArguments& arguments_;
  const std::string& file_;
  Progress progress_;
  Input input_;
  Counts counts_{.unit = "MiB"};
  std::vector<uint8_t> buffer_;
};

ExitCode Run(const CarveArguments& arguments) try {
  if (!arguments.dryRun) MakeFolder(arguments.dir);
  ExitCode exitCode = kExitOk;
  size_t number = 0;
  const Interruption interruption;
  for (const std::string& file : arguments.files) {
    try {
      number += Carving(arguments, file).Run();
    } catch (const vx::Error& error) {
      ReportFailure(error, {.file = InputName(file.c_str())});
      exitCode = kExitFailed;
    } catch (const FileError& error) {
      ReportMessage(error.what());
      exitCode = kExitFailed;
    }
    if (const int signal = Interruption::Signal(); signal != 0) {
      ReportMessage(fmt::format("interrupted, {} found so far", number));
      EndBy(signal);
    }
  }
  if (number == 0 && exitCode == kExitOk && !arguments.quiet) {
    ReportMessage(
        "there is no whole bitmap, icon or cursor in it; pictures of other kinds are not looked for");
  }
  return exitCode;
} catch (const FileError& error) {
  ReportMessage(error.what());
  return kExitFailed;
}

}  // namespace

Action DeclareCarve(Arguments& command) {
  auto arguments = std::make_shared<CarveArguments>();
  command.Add({.name = "FILE", .help = "files to search; - is standard input", .isRequired = true},
              arguments->files);
  command.Add({.name = "--dir",
               .help = "folder for what is found, made where it is not there",
               .value = "FOLDER",
               .isRequired = true},
              arguments->dir);
  command.Add({.name = "-n,--dry-run", .help = "list what would be written, and write nothing"},
              arguments->dryRun);
  command.Add({.name = "--json", .help = "print one JSON object a line for every file that is found"},
              arguments->json);
  command.Add({.name = "-q,--quiet", .help = "say nothing but what fails"}, arguments->quiet);
  return [arguments] { return Run(*arguments); };
}

}  // namespace cli
