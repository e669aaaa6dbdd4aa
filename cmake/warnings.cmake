# What every target of ours is compiled with.
add_library(zel_options INTERFACE)
target_compile_options(
  zel_options
  INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Wconversion -Wshadow=local
            -ffp-contract=off -fno-math-errno $<$<BOOL:${ZELSVM_WERROR}>:-Werror>>)
# Error texts name source files, but not the folder that they were built in.
target_compile_options(zel_options INTERFACE
                       $<$<COMPILE_LANGUAGE:CXX>:-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=>)
target_include_directories(zel_options INTERFACE ${PROJECT_SOURCE_DIR}/src)

if(ZELSVM_SANITIZE)
  target_compile_options(zel_options INTERFACE -fsanitize=${ZELSVM_SANITIZE}
                                               -fno-sanitize-recover=all -fno-omit-frame-pointer)
  if(ZELSVM_FUZZ)
    # These halt at run time, where fuzz/wraps-on-purpose.txt names the exceptions.
    target_compile_options(zel_options INTERFACE -fsanitize-recover=integer)
  endif()
  target_link_options(zel_options INTERFACE -fsanitize=${ZELSVM_SANITIZE})
endif()
