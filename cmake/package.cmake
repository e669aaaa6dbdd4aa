# The packages: a tarball that runs from any folder, and Debian packages. The CUDA engine is a
# package of its own, since only it needs the vendor's libraries, which come from elsewhere.
# Dependencies are looked up among the machine's own packages, so that a cross build makes none.
if(CMAKE_CROSSCOMPILING)
  return()
endif()
set(CPACK_GENERATOR TGZ DEB)
set(CPACK_PACKAGE_FILE_NAME zelsvm-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_PACKAGE_CONTACT "zelsvm maintainers <maintainers@zelsvm.invalid>"
    CACHE STRING "Maintainer that the packages name")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "train support vector machines and predict with them")
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/package_layout.cmake)
set(CPACK_THREADS 0)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL tools library dev)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "Command-line tools for classification, regression and the estimation of a
distribution's support: zelsvm-train, zelsvm-predict, zelsvm-scale and
zelsvm-test. They read sparse text files, work in double precision on all
processors of the machine, and give the same results for any number of
threads. Models and predictions are text, too.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION math)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME zelsvm)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "gnuplot-nox | python3-matplotlib")

set(soname libzelsvm${PROJECT_VERSION_MAJOR})
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
    "Support vector machines for C++ programs: the engine of the zelsvm tools, on the
processor, as a shared library.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${soname})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_COMPONENT_DEV_DESCRIPTION
    "Header and CMake package of libzelsvm, for programs that use it. An example comes
with the tools, in zelsvm.")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libzelsvm-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${soname} (= ${PROJECT_VERSION})")

if(TARGET zelsvm-cuda)
  list(APPEND CPACK_COMPONENTS_ALL cuda)
  set(CPACK_COMPONENT_CUDA_DESCRIPTION
      "The engine of the zelsvm tools for NVIDIA GPUs. It is used where the vendor's
driver, cuBLAS and cuSPARSE are found; without them the tools go on working on
the processor.")
  set(CPACK_DEBIAN_CUDA_PACKAGE_NAME zelsvm-cuda)
  set(CPACK_DEBIAN_CUDA_PACKAGE_DEPENDS "zelsvm (= ${PROJECT_VERSION})")
  string(APPEND CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS ", zelsvm-cuda")
endif()
include(CPack)
