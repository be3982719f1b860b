# Headers that nearly every source reads are parsed once. Each source still includes what it uses:
# without SONDRAVA_PRECOMPILED it compiles as well.
#
# sondrava_precompiled_set(set kind HEADERS header... LIBRARIES library...)
#   kind: library or executable, as their code is placed by different rules
# sondrava_precompiled(target set)
function(sondrava_precompiled_set set kind)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "HEADERS;LIBRARIES")
    set(holder precompiled_${set})
    file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/${holder}.cpp CONTENT "int main() {}\n")
    if(kind STREQUAL "library")
        add_library(${holder} OBJECT EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/${holder}.cpp)
    else()
        add_executable(${holder} EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/${holder}.cpp)
    endif()
    target_link_libraries(${holder} PRIVATE Threads::Threads sondrava_warnings ${arg_LIBRARIES})
    target_precompile_headers(${holder} PRIVATE ${arg_HEADERS})
endfunction()

function(sondrava_precompiled target set)
    if(SONDRAVA_PRECOMPILED)
        target_precompile_headers(${target} REUSE_FROM precompiled_${set})
    endif()
endfunction()
