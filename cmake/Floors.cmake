# A folder of src/ is a target, and it sees only the folders that it names. These must stand
# already, that is, lie below it: an include that goes up finds no header and stops the build.
#
# sondrava_floor(name SOURCES file... USES folder... LIBRARIES library...)
#   LIBRARIES are outside libraries; only the folder itself sees their headers.
function(sondrava_floor name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;USES;LIBRARIES")
    foreach(used IN LISTS arg_USES)
        if(NOT TARGET ${used})
            message(FATAL_ERROR "${name} may not use ${used}: it is not below ${name}")
        endif()
    endforeach()
    set(view ${CMAKE_BINARY_DIR}/view/${name}) # the one way to "name/File.h"
    file(MAKE_DIRECTORY ${view})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${view}/${name} SYMBOLIC)
    add_library(${name} STATIC ${arg_SOURCES})
    target_include_directories(${name} PUBLIC ${view})
    target_compile_options(${name} PUBLIC
        -ffile-prefix-map=${view}/=${CMAKE_SOURCE_DIR}/src/)
    target_link_libraries(${name} PUBLIC ${arg_USES} Threads::Threads
        PRIVATE sondrava_warnings ${arg_LIBRARIES})
    sondrava_precompiled(${name} standard)
endfunction()

# The folder holds windows: what a project stores it can read, but not write (see base/Stored.h).
function(sondrava_windows name)
    target_include_directories(${name} BEFORE PRIVATE ${CMAKE_SOURCE_DIR}/src/rights/windows)
endfunction()

# A room of windows: it stands on ui and what lies below, and sees no other room.
function(sondrava_room name)
    sondrava_floor(${name} SOURCES ${ARGN} USES ui)
    sondrava_windows(${name})
endfunction()
