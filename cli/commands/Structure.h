// The parts of a file as a command prints them: a tree for people, or an object a part for programs.
#pragma once

#include <vx/inspect.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace cli {

/// Prints parts, in their order, and run-length codes right behind the pixels that they are of.
class StructureListing {
 public:
  StructureListing() = default;
  StructureListing(const StructureListing&) = delete;
  StructureListing& operator=(const StructureListing&) = delete;
  virtual ~StructureListing() = default;

  virtual void Begin(const std::string& file, uint64_t size) = 0;
  /// @param number of the part, from 0 @param depth of the tree that it stands at, from 0
  virtual void Add(int number, const vx_part& part, int depth, std::span<const vx_field> fields) = 0;
  virtual void Add(const vx_code& code) = 0;
};

/// @param withBytes shows the bytes of every field, too
std::unique_ptr<StructureListing> NewTree(bool withBytes);
std::unique_ptr<StructureListing> NewStructureLines();

}  // namespace cli
