// vxdemo: identifies and converts every bitmap, icon and cursor in some folders and shows them on a page.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <clocale>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "Collect.h"
#include "Errors.h"
#include "Examine.h"
#include "Output.h"
#include "Page.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kPictureFolder = "pictures";
// A demo page is no place for gigantic pictures; files that ask for one show how that is refused.
constexpr uint64_t kMemoryLimit = uint64_t{256} << 20;

void WritePage(const fs::path& folder, const std::vector<demo::FileResult>& results) {
  const std::string html = demo::RenderPage(results, kPictureFolder);
  cli::WriteWhole((folder / "index.html").c_str(), std::vector<uint8_t>(html.begin(), html.end()));
}

int Run(int argc, char** argv) {
  CLI::App app{"Shows every bitmap, icon and cursor in the folders on a page of pictures and facts."};
  std::vector<std::string> folders;
  std::string out;
  app.add_option("FOLDER", folders, "folders to look through, with all below them")
      ->required()
      ->check(CLI::ExistingDirectory);
  app.add_option("-o,--output", out, "folder for index.html and the pictures")
      ->required()
      ->type_name("FOLDER");
  CLI11_PARSE(app, argc, argv);

  vx_set_memory_limit(kMemoryLimit);
  fs::create_directories(fs::path(out) / kPictureFolder);
  std::vector<demo::FileResult> results;
  for (const demo::Item& item : demo::Collect(folders)) {
    results.push_back(
        demo::Examine(item, fs::path(out) / kPictureFolder, fmt::format("{:04}", results.size())));
  }
  WritePage(out, results);
  fmt::print("{} files: {}\n", results.size(), (fs::path(out) / "index.html").string());
  return cli::kExitOk;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vxdemo: %s\n", error.what());
    return cli::kExitFailed;
  }
}
