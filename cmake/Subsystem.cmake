# SPDX-License-Identifier: GPL-3.0-or-later
# A subsystem library: every .cpp of the folder, linked with what it stands on.
# A folder with no sources yet makes no library.
function(lw_subsystem_library target)
    cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    if(NOT sources)
        return()
    endif()
    add_library(${target} STATIC ${sources} ${headers})
    target_link_libraries(${target} PUBLIC ${ARG_DEPENDS})
    lw_warnings(${target})
endfunction()
