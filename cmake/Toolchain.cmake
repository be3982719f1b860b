# Flags that hold for every target, and the warnings of our own code.

# The cache takes a precompiled header, and one that has just been made, only if it is told that no
# macros of time and no definitions made before it matter here.
find_program(CCACHE ccache)
if(CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${CCACHE})
endif()
find_program(LLD ld.lld)
if(LLD)
    add_link_options(-fuse-ld=lld)
endif()

# A fused multiply-add would shift recursive filters away from their formulas.
add_compile_options(-ffp-contract=off)

# Floats compare and convert as written; nobody reads errno of a math function.
add_compile_options(-fno-math-errno)

add_library(sondrava_warnings INTERFACE)
target_compile_options(sondrava_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow
    -Wnon-virtual-dtor -Woverloaded-virtual -Wdouble-promotion)
if(SONDRAVA_WERROR)
    target_compile_options(sondrava_warnings INTERFACE -Werror)
endif()
