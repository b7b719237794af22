// Results on their way out: pictures, and streams that say when they broke.
#pragma once

#include <string>
#include <string_view>
#include <vx/image.hpp>

namespace cli {

/// The name that means standard input or standard output.
constexpr std::string_view kStandardStream = "-";

/// Writes text to standard output. @throws FileError, or OutputClosed where the reader has gone.
void PrintToStandardOutput(std::string_view text);

/// Saves the picture as the file `path`, which appears whole or not at all, or onto standard output for "-".
/// Pipes, devices and the like are written to directly.
/// @throws vx::Error or FileError when it cannot be saved, UsageError where it is a terminal, OutputClosed.
void WritePicture(const vx::Bitmap& picture, const char* path, const vx_save_options& options);

/// Whether there is anything of that name, be it a link that leads nowhere.
bool Exists(const std::string& path);

/// Whether two names lead to one file, by whatever links. Devices do not count: they may be read and written.
bool AreSameFile(const std::string& one, const std::string& other);

/// @throws UsageError where WritePicture would refuse: to find out before the work is done.
void RefuseTerminal(const char* path);

}  // namespace cli
