# The rules that every target of the project follows.
include(GenerateExportHeader)

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# Where a build stands shows in none of its files.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

add_library(ztCompileOptions INTERFACE)
target_compile_definitions(ztCompileOptions INTERFACE QT_NO_KEYWORDS) # such as signals
target_compile_options(ztCompileOptions INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<$<BOOL:${ZT_WERROR}>:-Werror>
    # Placement is single precision, rounded after each operation, on every processor.
    -ffp-contract=off
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)

# zt_add_library(Room SOURCES... HEADERS public headers... [COMPONENT name] [STATIC_REQUIRES pkg-config modules...])
# The library ztRoom with a SONAME, its alias zt::Room, the export macro ZTROOM_EXPORT in ztRoom_export.h, and install
# rules. Libraries without a COMPONENT are what the CMake package always brings.
function(zt_add_library room)
    cmake_parse_arguments(ARG "" "COMPONENT" "SOURCES;HEADERS;STATIC_REQUIRES" ${ARGN})
    set(name zt${room})
    add_library(${name} ${ARG_SOURCES} ${ARG_HEADERS})
    add_library(zt::${room} ALIAS ${name})
    set_target_properties(${name} PROPERTIES
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} EXPORT_NAME ${room})
    generate_export_header(${name} EXPORT_FILE_NAME ${CMAKE_CURRENT_BINARY_DIR}/${name}_export.h)
    target_compile_features(${name} PUBLIC cxx_std_17)
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}> $<BUILD_INTERFACE:${CMAKE_CURRENT_BINARY_DIR}>)
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:ztCompileOptions>)
    # What a library exports can be inlined within it.
    target_compile_options(${name} PRIVATE -fno-semantic-interposition)
    if(NOT BUILD_SHARED_LIBS)
        string(TOUPPER ${name}_STATIC_DEFINE definition)
        target_compile_definitions(${name} PUBLIC ${definition})
    endif()
    if(ZT_INSTALL)
        zt_install_library(${name} "${ARG_COMPONENT}")
        set_property(GLOBAL APPEND PROPERTY ZT_LIBRARY_FOLDERS ${CMAKE_CURRENT_BINARY_DIR})
        if(ARG_COMPONENT)
            zt_install_targets(${ARG_COMPONENT})
            zt_install_pkgconfig(REQUIRES ztOverlayUtils STATIC_REQUIRES ${ARG_STATIC_REQUIRES} LIBRARIES ${name})
        endif()
        install(FILES ${ARG_HEADERS} ${CMAKE_CURRENT_BINARY_DIR}/${name}_export.h
            DESTINATION ${ZT_INSTALL_INCLUDEDIR} COMPONENT development)
    endif()
endfunction()
