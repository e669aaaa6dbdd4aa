# Vectors of lanes in the per-instruction-set sources: Google Highway, of which headers are enough since
# those sources are compiled for one set each.
find_path(HIGHWAY_INCLUDE_DIR hwy/highway.h)
if(NOT HIGHWAY_INCLUDE_DIR)
  message(FATAL_ERROR "Google Highway was not found: run scripts/setup, or install libhwy-dev.")
endif()

add_library(zel_highway INTERFACE)
target_include_directories(zel_highway SYSTEM INTERFACE ${HIGHWAY_INCLUDE_DIR})
target_compile_definitions(zel_highway INTERFACE HWY_COMPILE_ONLY_STATIC HWY_DISABLE_PCLMUL_AES)
