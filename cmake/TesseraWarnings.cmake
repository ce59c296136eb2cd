# Compile options that every target of the project shares, as the interface target tessera_options.
add_library(tessera_options INTERFACE)
target_compile_options(
    tessera_options
    INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Woverloaded-virtual
              # Points are values without a virtual destructor, always freed by their static type.
              -Wno-delete-non-virtual-dtor -Wno-non-virtual-dtor
              # A fused multiply-add would make results differ between compilers.
              -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(tessera_options INTERFACE -Wno-delete-non-abstract-non-virtual-dtor)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # Sees overlaps in string concatenation that are not there (GCC bug 105651).
    target_compile_options(tessera_options INTERFACE -Wno-restrict)
endif()
if(TESSERA_WARNINGS_AS_ERRORS)
    target_compile_options(tessera_options INTERFACE -Werror)
endif()
if(TESSERA_SANITIZE)
    set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
    target_compile_options(tessera_options INTERFACE ${sanitizers} -O1)
    target_link_options(tessera_options INTERFACE ${sanitizers})
endif()

# Reports to the host name the source file within the project, wherever it was built.
target_compile_options(tessera_options INTERFACE "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")
