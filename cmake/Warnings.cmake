# Every target of the project links vx_warnings: warnings are errors.
add_library(vx_warnings INTERFACE)
target_compile_options(vx_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wconversion -Wsign-conversion -Wshadow -Wformat=2 -Wundef -Wvla
  -Wcast-align -Wcast-qual -Wdouble-promotion -Wnull-dereference
  $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wextra-semi -Wnon-virtual-dtor -Woverloaded-virtual>)
