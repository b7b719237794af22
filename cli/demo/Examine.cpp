// Does what vxbmp info and vxbmp convert do, and when a file ends early once more with that allowed.
#include "Examine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <stdexcept>
#include <vx/image.hpp>

#include "Errors.h"
#include "Input.h"
#include "RawArguments.h"
#include "Text.h"

namespace demo {
namespace {

constexpr int kMaxPages = 12;

/// The page shows the name of the file already, so it is taken off the message.
Failure ToFailure(const vx::Error& error, const std::string& file) {
  std::string problem = cli::ProblemOf(error);
  if (problem.starts_with(file)) {
    problem.erase(0, file.size());
    problem.erase(0, problem.find_first_not_of(":, "));
  }
  return {fmt::format("{}, {}", vx_status_name(error.status()), error.status()), cli::Printable(problem)};
}

void Convert(const vx::Source& source, const vx_load_options& options, const std::filesystem::path& path,
             PageResult& result) {
  const vx::Bitmap bitmap = source.Load(options);
  bitmap.Save(path.string(), vx::SaveOptions(VX_FORMAT_PNG));
  result.width = bitmap.Describe().width;
  result.height = bitmap.Describe().height;
  result.picture = path.filename().string();
}

/// The second try of a file that ends early.
void ConvertTruncated(const vx::Source& source, vx::LoadOptions options, const std::filesystem::path& path,
                      PageResult& result) try {
  options.allow_truncated = 1;
  Convert(source, options, path, result);
  result.isTruncated = true;
} catch (const vx::Error&) {
  // The first failure says what is wrong.
}

PageResult ExaminePage(const Item& item, const vx::Source& source, const vx::LoadOptions& options,
                       const std::filesystem::path& path) {
  PageResult result;
  try {
    if (options.raw == nullptr) result.info = source.Describe(options.page);
    Convert(source, options, path, result);
  } catch (const vx::Error& error) {
    result.failure = ToFailure(error, item.path.string());
    if (error.status() == VX_READ_ERROR) ConvertTruncated(source, options, path, result);
  }
  return result;
}

std::unique_ptr<cli::RawDescription> DescribeRaw(const Item& item) {
  CLI::App app;
  cli::RawArguments arguments;
  arguments.Declare(app);
  app.parse(item.rawArguments);
  return arguments.Describe(item.path.parent_path());
}

void ExaminePages(const Item& item, const std::filesystem::path& stem, FileResult& result) {
  const std::unique_ptr<cli::RawDescription> raw = DescribeRaw(item);
  cli::Input input(item.path.c_str(), raw ? cli::Content::Headerless : cli::Content::Picture);
  vx::LoadOptions options;
  if (raw) options.raw = &raw->Get();
  int pages = 1;
  for (; options.page <= std::min(pages, kMaxPages); ++options.page) {
    const std::string path = fmt::format("{}-{}.png", stem.string(), options.page);
    result.pages.push_back(ExaminePage(item, input.Source(), options, path));
    pages = std::max(pages, result.pages.back().info.page_count);
  }
  result.pagesLeftOut = std::max(pages - kMaxPages, 0);
}

PageResult Without(Failure failure) {
  PageResult result;
  result.failure = std::move(failure);
  return result;
}

}  // namespace

FileResult Examine(const Item& item, const std::filesystem::path& pictures, const std::string& prefix) {
  FileResult result{item, 0, {}, 0};
  std::error_code error;
  result.size = std::filesystem::file_size(item.path, error);
  try {
    ExaminePages(item, pictures / prefix, result);
  } catch (const vx::Error& failure) {
    result.pages.push_back(Without(ToFailure(failure, item.path.string())));
  } catch (const std::runtime_error& failure) {
    result.pages.push_back(Without({"not tried", failure.what()}));
  }
  return result;
}

}  // namespace demo
