// What vxbmp batch is told, and what the words of it mean.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "arguments/OnePage.h"
#include "arguments/RawArguments.h"
#include "arguments/SaveArguments.h"

namespace cli {

struct BatchArguments {
  std::vector<std::string> in;
  std::string filesFrom;
  bool recursive = false;
  std::string dir;
  std::string name;
  std::string threads;
  std::string shard;
  bool keepGoing = false;
  bool resume = false;
  bool noClobber = false;
  bool dryRun = false;
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  OnePage page;
  RawArguments raw;
  SaveArguments save;
};

/// One part of several, from 0.
struct Shard {
  uint64_t part = 0;
  uint64_t parts = 1;
};

/// @throws UsageError
Shard ParseShard(const std::string& shard);
/// @return as many as there are processors unless a number is given @throws UsageError
size_t ParseThreads(const std::string& threads);

/// Adds the options to the command. `arguments` must stay where it is until they are parsed.
void DeclareBatchArguments(Arguments& command, BatchArguments& arguments);

}  // namespace cli
