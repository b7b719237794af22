// What vxbmp info finds out, as a table or as JSON.
#pragma once

#include <memory>
#include <string>
#include <vector>
#include <vx/image.hpp>

namespace cli {

/// A page or a whole file of which nothing can be told.
struct Failure {
  int page;   ///< 0: no page in particular
  int pages;  ///< 0: not known
  int status;
  std::string message;
};

/// Where the facts go.
class Listing {
 public:
  Listing() = default;
  Listing(const Listing&) = delete;
  Listing& operator=(const Listing&) = delete;
  virtual ~Listing() = default;

  virtual void Add(const std::string& file, const vx_info& info, const vx_storage_info& storage) = 0;
  virtual void Add(const std::string& file, const Failure& failure) = 0;
  /// What is known of an animated cursor as a whole, and its first steps.
  virtual void Add(const std::string& file, const vx_animation_info& info,
                   const std::vector<vx_animation_step>& steps) = 0;
  virtual void Finish() = 0;
};

/// @param isJson an object a page, instead of lines of a table
std::unique_ptr<Listing> MakeListing(bool isJson);

}  // namespace cli
