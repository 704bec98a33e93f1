# The rules that every target of the project follows.
include(GenerateExportHeader)
include(GNUInstallDirs)

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# Hosts find the libraries of an installation beside their own bin folder.
set(CMAKE_INSTALL_RPATH "$ORIGIN:$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

add_library(ztCompileOptions INTERFACE)
target_compile_options(ztCompileOptions INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<$<BOOL:${ZT_WERROR}>:-Werror>
    # Placement is single precision, rounded after each operation, on every processor.
    -ffp-contract=off)

# zt_add_library(Room SOURCES... HEADERS public headers...)
# The library ztRoom with a SONAME, its alias zt::Room, the export macro ZTROOM_EXPORT in ztRoom_export.h, and install
# rules.
function(zt_add_library room)
    cmake_parse_arguments(ARG "" "" "SOURCES;HEADERS" ${ARGN})
    set(name zt${room})
    add_library(${name} SHARED ${ARG_SOURCES} ${ARG_HEADERS})
    add_library(zt::${room} ALIAS ${name})
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    generate_export_header(${name} EXPORT_FILE_NAME ${CMAKE_CURRENT_BINARY_DIR}/${name}_export.h)
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}> $<BUILD_INTERFACE:${CMAKE_CURRENT_BINARY_DIR}>)
    target_link_libraries(${name} PRIVATE ztCompileOptions)
    # What a library exports can be inlined within it.
    target_compile_options(${name} PRIVATE -fno-semantic-interposition)
    if(ZT_INSTALL)
        install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
        install(FILES ${ARG_HEADERS} ${CMAKE_CURRENT_BINARY_DIR}/${name}_export.h
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ztOverlayUtils)
    endif()
endfunction()
