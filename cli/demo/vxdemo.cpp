// vxdemo: identifies and converts every bitmap, icon and cursor in some folders and shows them on a page.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <clocale>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Collect.h"
#include "Errors.h"
#include "Examine.h"
#include "Page.h"
#include "Text.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kPictureFolder = "pictures";
// A demo page is no place for gigantic pictures; files that ask for one show how that is refused.
constexpr uint64_t kMemoryLimit = uint64_t{256} << 20;

void WritePage(const fs::path& folder, const std::vector<demo::FileResult>& results) {
  const fs::path path = folder / "index.html";
  std::ofstream page(path, std::ios::binary);
  page << demo::RenderPage(results, kPictureFolder) << std::flush;
  if (!page) throw cli::FileError::FromErrno(VX_WRITE_ERROR, path.string(), "cannot write");
}

struct Arguments {
  std::vector<std::string> folders;
  std::string out;
};

void Declare(CLI::App& app, Arguments& arguments) {
  app.add_option("FOLDER", arguments.folders, "folders to look through, with all below them")
      ->required()
      ->option_text("...");
  app.add_option("-o,--output", arguments.out, "folder for index.html and the pictures")
      ->required()
      ->option_text("FOLDER");
}

void RefuseOddFolders(const Arguments& arguments) {
  for (const std::string& folder : arguments.folders) {
    if (!fs::is_directory(folder)) {
      throw cli::UsageError(fmt::format("there is no folder '{}'", cli::Printable(folder)));
    }
  }
  if (arguments.out.empty()) throw cli::UsageError("the name of the output folder is empty");
}

void MakePage(const Arguments& arguments) {
  vx_set_memory_limit(kMemoryLimit);
  const fs::path out(arguments.out);
  fs::create_directories(out / kPictureFolder);
  std::vector<demo::FileResult> results;
  for (const demo::Item& item : demo::Collect(arguments.folders)) {
    results.push_back(demo::Examine(item, out / kPictureFolder, fmt::format("{:04}", results.size())));
  }
  WritePage(out, results);
  fmt::print("{} files: {}\n", results.size(), (out / "index.html").string());
}

int Complain(const char* problem, cli::ExitCode code) {
  std::fprintf(stderr, "vxdemo: %s\n", problem);
  return code;
}

int Run(int argc, char** argv) {
  CLI::App app{"Shows every bitmap, icon and cursor in the folders on a page of pictures and facts."};
  Arguments arguments;
  Declare(app, arguments);
  try {
    app.parse(argc, argv);
    RefuseOddFolders(arguments);
  } catch (const CLI::Success& request) {
    return app.exit(request);
  } catch (const CLI::ArgumentMismatch&) {
    return Complain("--output takes one folder", cli::kExitUsage);
  } catch (const CLI::ParseError& error) {
    return Complain(error.what(), cli::kExitUsage);
  } catch (const cli::UsageError& error) {
    return Complain(error.what(), cli::kExitUsage);
  }
  MakePage(arguments);
  return cli::kExitOk;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    return Run(argc, argv);
  } catch (const std::exception& error) {
    return Complain(error.what(), cli::kExitFailed);
  }
}
