# Every target of the project links vx_warnings: warnings are errors.
add_library(vx_warnings INTERFACE)
target_compile_options(vx_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wconversion -Wsign-conversion -Wshadow -Wformat=2 -Wundef -Wvla
  -Wcast-align -Wcast-qual -Wdouble-promotion -Wnull-dereference
  # g++ 12 reports overlaps inside std::string that cannot be
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wextra-semi -Wnon-virtual-dtor -Woverloaded-virtual>)
