# Dense products: OpenBLAS, preferably the build that shares our threading runtime. It is loaded by the
# first product, so that nothing is linked with it; the library found here says which one.
find_path(OPENBLAS_INCLUDE_DIR cblas.h
          PATH_SUFFIXES ${CMAKE_LIBRARY_ARCHITECTURE}/openblas-openmp openblas-openmp openblas)
find_library(OPENBLAS_LIBRARY openblas PATH_SUFFIXES openblas-openmp)
if(NOT OPENBLAS_INCLUDE_DIR OR NOT OPENBLAS_LIBRARY)
  message(FATAL_ERROR "OpenBLAS was not found: run scripts/setup, or install libopenblas-openmp-dev.")
endif()

execute_process(COMMAND ${CMAKE_READELF} -d ${OPENBLAS_LIBRARY} OUTPUT_VARIABLE openblas_dynamic)
if(NOT openblas_dynamic MATCHES "\\(SONAME\\)[^[]*\\[([^]]+)\\]")
  message(FATAL_ERROR "${OPENBLAS_LIBRARY} is no shared library.")
endif()
set(openblas_name ${CMAKE_MATCH_1})
cmake_path(GET OPENBLAS_LIBRARY PARENT_PATH openblas_folder)
# Of a cross build, where it lies on the machine that runs the program.
if(CMAKE_SYSROOT_LINK)
  file(REAL_PATH ${CMAKE_SYSROOT_LINK} openblas_root)
  file(REAL_PATH ${openblas_folder} openblas_folder)
  cmake_path(RELATIVE_PATH openblas_folder BASE_DIRECTORY ${openblas_root})
  string(PREPEND openblas_folder /)
endif()

add_library(zel_openblas INTERFACE)
target_include_directories(zel_openblas SYSTEM INTERFACE ${OPENBLAS_INCLUDE_DIR})
target_compile_definitions(zel_openblas INTERFACE ZEL_BLAS_FOLDER="${openblas_folder}"
                                                  ZEL_BLAS_NAME="${openblas_name}")
target_link_libraries(zel_openblas INTERFACE ${CMAKE_DL_LIBS})
