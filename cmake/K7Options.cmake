# Compiler settings that every target of the project shares.

add_library(k7_options INTERFACE)
target_include_directories(k7_options INTERFACE ${PROJECT_SOURCE_DIR})

# Frames are the same words everywhere: no fused multiply-add behind the code's back.
target_compile_options(k7_options INTERFACE -ffp-contract=off -Wall -Wextra -Wshadow -Wconversion
  -Wno-sign-conversion -Wnon-virtual-dtor -Woverloaded-virtual)
if(K7_WERROR)
  target_compile_options(k7_options INTERFACE -Werror)
endif()
if(K7_SANITIZE)
  # Checked code compiles twice as fast with little optimisation and line numbers alone.
  target_compile_options(k7_options INTERFACE -O1 -g1 -fsanitize=${K7_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all -Wno-maybe-uninitialized) # which the checks' code sets off in the standard library
  target_link_options(k7_options INTERFACE -fsanitize=${K7_SANITIZE})
endif()

find_program(K7_CCACHE ccache)
if(K7_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${K7_CCACHE})
endif()
