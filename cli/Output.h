// Results on their way out: files that appear whole or not at all, and streams that say when they broke.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace cli {

/// The name that means standard input or standard output.
constexpr std::string_view kStandardStream = "-";

/// Writes text to standard output. @throws FileError, or OutputClosed where the reader has gone.
void PrintToStandardOutput(std::string_view text);

/**
 * Puts `bytes` into the file `path`, or onto standard output for "-".
 *
 * A regular file appears whole or not at all: it is written under another name beside its place, stored,
 * and only then renamed; on a failure, and on SIGINT, SIGTERM or SIGHUP, the other name goes and what was
 * there before stays. An existing file keeps its permissions, and a symbolic link keeps pointing to it.
 * Pipes, devices and the like are written to directly.
 *
 * @throws FileError when it cannot be written, UsageError where it is a terminal, OutputClosed.
 */
void WriteWhole(const char* path, std::span<const uint8_t> bytes);

/// @throws UsageError where WriteWhole would refuse: to find out before the work is done.
void RefuseTerminal(const char* path);

}  // namespace cli
