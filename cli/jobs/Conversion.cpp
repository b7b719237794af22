#include "jobs/Conversion.h"

#include <fmt/format.h>

#include <algorithm>

#include "arguments/SaveArguments.h"
#include "failures/Report.h"
#include "jobs/MissingRows.h"
#include "streams/Output.h"
#include "words/Text.h"

namespace cli {
namespace {

void Collect(std::vector<int>& codes) {
  for (const vx_remark& remark : vx::Remarks()) codes.push_back(remark.code);
}

/// What saving does to the colours, with what helps. Right after the save.
void RemarkOnProfile(const std::string& name) {
  const auto remarks = vx::Remarks();
  const bool isDropped = std::any_of(remarks.begin(), remarks.end(), [](const vx_remark& remark) {
    return remark.code == VX_REMARK_PROFILE_DROPPED;
  });
  if (!isDropped) return;
  ReportMessage(fmt::format("{}: the picture's colour profile is lost; --to png keeps it, --srgb applies it",
                            Printable(name)));
}

vx::Bitmap Load(Input& input, const std::string& name, const Conversion& conversion, Converted& converted) {
  vx::LoadOptions options = conversion.load;
  options.flags |= VX_LOAD_ROW_BY_ROW;
  vx::Bitmap picture = input.Source().Load(options);
  Collect(converted.remarks);
  ReportRemarks(name);
  if (const std::string profile = picture.ProfileName(); !profile.empty()) {
    ReportMessage(fmt::format("{}: the colour profile is named {}", Printable(name), Printable(profile)));
  }
  if (conversion.missing) FillMissingRows(input.Source(), options, *conversion.missing, &picture);
  if (conversion.page != nullptr) conversion.page->RemarkOnOthers(input.Source(), name);
  return picture;
}

bool IsIcon(int format) {
  return format == VX_FORMAT_ICO || format == VX_FORMAT_VISTA_ICO;
}

/// @throws vx::Error where rows of the picture, which are read only now, cannot be had
void Save(const vx::Bitmap& picture, const std::string& out, const vx_save_options& options,
          Converted& converted) {
  const std::string name = out == kStandardStream ? "standard output" : out;
  try {
    const vx_save_plan plan = picture.Plan(options);
    WritePicture(picture, out.c_str(), options);
    Collect(converted.remarks);
    RemarkOnProfile(name);
    RemarkOnLosses(name, options, plan);
  } catch (const vx::Error& error) {
    if (error.info().is_of_rows != 0) throw;
    ReportFailure(error, {.file = name, .makesIcon = IsIcon(options.format)});
    converted.failure = error;
  }
}

}  // namespace

void ReportInputFailure(const vx::Error& error, const std::string& in, const Conversion& conversion) {
  const std::string name = InputName(in.c_str());
  ReportFailure(error, {.file = name, .mayBeRaw = conversion.load.raw == nullptr, .takesTruncated = true});
}

Converted ConvertPicture(Input& input, const std::string& in, const std::string& out,
                         const Conversion& conversion) {
  Converted converted;
  try {
    const vx::Bitmap picture = Load(input, InputName(in.c_str()), conversion, converted);
    Save(picture, out, conversion.save, converted);
  } catch (const vx::Error& error) {
    ReportInputFailure(error, in, conversion);
    converted.failure = error;
  }
  return converted;
}

}  // namespace cli
