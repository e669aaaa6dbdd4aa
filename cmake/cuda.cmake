# The CUDA engine: built where the vendor's compiler and libraries are.
set(ZELSVM_CUDA AUTO CACHE STRING "Build the CUDA engine: ON, OFF, or AUTO for where it can be built")
set_property(CACHE ZELSVM_CUDA PROPERTY STRINGS AUTO ON OFF)
if(ZELSVM_CUDA STREQUAL OFF)
  return()
endif()

find_package(CUDAToolkit QUIET)
if(NOT (TARGET CUDA::cublas AND TARGET CUDA::cusparse AND TARGET CUDA::cudart_static
        AND CUDAToolkit_NVCC_EXECUTABLE))
  if(NOT ZELSVM_CUDA STREQUAL AUTO)
    message(FATAL_ERROR "The CUDA engine needs nvcc, cudart, cuBLAS and cuSPARSE.")
  endif()
  message(STATUS "No CUDA toolkit here: the CUDA engine is left out.")
  return()
endif()

# Machine code for every generation that the toolkit knows and we meet, PTX for those to come.
set(CMAKE_CUDA_ARCHITECTURES 75-real 80-real 86-real 89-real 90-real 100-real 120
    CACHE STRING "CUDA architectures")
set(CMAKE_CUDA_COMPILER ${CUDAToolkit_NVCC_EXECUTABLE} CACHE FILEPATH "CUDA compiler")
enable_language(CUDA)
set(CMAKE_CUDA_VISIBILITY_PRESET hidden)
# CMake 3.25 does not know that nvcc has the standard which CMAKE_CXX_STANDARD asks for.
set(CMAKE_CUDA20_STANDARD_COMPILE_OPTION -std=c++20)

# Products and sums are fused only where a rule says so, and no kernel may spill registers.
add_library(zel_device_options INTERFACE)
target_compile_options(
  zel_device_options
  INTERFACE $<$<COMPILE_LANGUAGE:CUDA>:-fmad=false -Xptxas=--warn-on-spills,--warning-as-error
            -Xcompiler=-Wall,-Wextra,-Wshadow=local,-ffp-contract=off>)
target_include_directories(zel_device_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
