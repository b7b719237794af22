// The copy is a second link to the old file where the file system has links: saving gives the name to a new
// file and leaves the old one as it is.
#include "arguments/Overwriting.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "failures/Report.h"
#include "streams/Output.h"
#include "words/Text.h"

namespace cli {
namespace {

bool IsRegularFile(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

void Overwriting::Declare(Arguments& command) {
  command.Add({.name = "-n,--dry-run", .help = "say what would be written, and write nothing"}, dryRun_);
  command.Add({.name = "--no-clobber", .help = "leave a file that is there as it is"}, noClobber_);
  DeclareBackup(command);
}

void Overwriting::DeclareBackup(Arguments& command) {
  command.Add({.name = "--backup",
               .help = "keep the old file, its name followed by SUFFIX; ~ unless given",
               .value = "SUFFIX",
               .implied = "~"},
              suffix_);
}

bool Overwriting::Prepare(std::string_view in, const std::string& out) const {
  if (out == kStandardStream) return !dryRun_;
  const bool isLeft = noClobber_ && Exists(out);
  if (isLeft) ReportMessage(fmt::format("{}: left as it is", Printable(out)));
  if (dryRun_ && !isLeft) {
    PrintToStandardOutput(fmt::format("{} -> {}{}\n", Printable(in), Printable(out),
                                      Exists(out) ? ", in the place of an older file" : ""));
  }
  if (isLeft || dryRun_) return false;
  KeepOld(out);
  return true;
}

void Overwriting::KeepOld(const std::string& file) const {
  if (suffix_.empty() || file == kStandardStream || !IsRegularFile(file)) return;
  namespace fs = std::filesystem;
  const std::string kept = file + suffix_;
  std::error_code error;
  const fs::path old = fs::canonical(file, error);
  const std::string fresh = kept + ".vx-new";  // what was kept before goes only once this is there
  fs::remove(fresh, error);
  fs::create_hard_link(old, fresh, error);
  if (error) fs::copy_file(old, fresh, error);
  if (!error) fs::rename(fresh, kept, error);
  const int problem = error.value();
  fs::remove(fresh, error);  // also there where both were one file already
  if (problem == 0) return;
  errno = problem;
  throw FileError::FromErrno(VX_OPEN_WRITE_ERROR, kept, "cannot keep the old file");
}

}  // namespace cli
