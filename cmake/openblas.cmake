# OpenBLAS, whose products the benchmarks compare ours with: preferably the build that shares our
# threading runtime.
find_path(OPENBLAS_INCLUDE_DIR cblas.h
          PATH_SUFFIXES ${CMAKE_LIBRARY_ARCHITECTURE}/openblas-openmp openblas-openmp openblas)
find_library(OPENBLAS_LIBRARY openblas PATH_SUFFIXES openblas-openmp)
if(NOT OPENBLAS_INCLUDE_DIR OR NOT OPENBLAS_LIBRARY)
  message(STATUS "No OpenBLAS here: benchmarks that compare with it are left out.")
  return()
endif()

add_library(zel_openblas INTERFACE)
target_include_directories(zel_openblas SYSTEM INTERFACE ${OPENBLAS_INCLUDE_DIR})
target_link_libraries(zel_openblas INTERFACE ${OPENBLAS_LIBRARY})
