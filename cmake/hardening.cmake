# Release builds: faults that slip through end the program instead of serving whoever made the input.
# Added to every target of ours by zel_options. Sanitizers bring their own checks, which the fortified
# library functions would hide.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

if(CMAKE_BUILD_TYPE STREQUAL Release AND NOT ZELSVM_SANITIZE)
  target_compile_options(
    zel_options
    INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3
              -fstack-protector-strong -fstack-clash-protection -Wformat -Werror=format-security
              $<$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},x86_64>:-fcf-protection>>)
  target_link_options(zel_options INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack)
endif()
