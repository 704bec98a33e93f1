# What is installed: the components runtime, development and tools.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(ZT_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/ztOverlayUtils)
set(ZT_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/ztOverlayUtils)
# Libraries and programs find the libraries of their installation wherever it is moved.
set(CMAKE_INSTALL_RPATH "$ORIGIN:$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

# zt_install_library(target component): into the targets of a component of the CMake package, "" for those that come
# always.
function(zt_install_library target component)
    install(TARGETS ${target} EXPORT ztOverlayUtils${component}Targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
        INCLUDES DESTINATION ${ZT_INSTALL_INCLUDEDIR})
endfunction()

# zt_install_targets(component): the file of the CMake package that imports the component's targets.
function(zt_install_targets component)
    install(EXPORT ztOverlayUtils${component}Targets NAMESPACE zt::
        DESTINATION ${ZT_INSTALL_CMAKEDIR} COMPONENT development)
endfunction()

# zt_install_pkgconfig(LIBRARIES libraries... REQUIRES modules... [STATIC_REQUIRES modules...])
# The pkg-config file of the first library.
function(zt_install_pkgconfig)
    cmake_parse_arguments(ARG "" "" "LIBRARIES;REQUIRES;STATIC_REQUIRES" ${ARGN})
    list(GET ARG_LIBRARIES 0 name)
    set(flags "")
    if(NOT BUILD_SHARED_LIBS)
        list(APPEND ARG_REQUIRES ${ARG_STATIC_REQUIRES})
        string(TOUPPER "${ARG_LIBRARIES}" flags)
        list(TRANSFORM flags REPLACE "(.+)" " -D\\1_STATIC_DEFINE")
    endif()
    list(TRANSFORM ARG_LIBRARIES PREPEND " -l" OUTPUT_VARIABLE libraries)
    list(JOIN ARG_REQUIRES ", " requires)
    string(CONCAT libraries ${libraries})
    string(CONCAT flags ${flags})
    file(RELATIVE_PATH prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
    configure_file(${PROJECT_SOURCE_DIR}/CMake/pkgconfig.in ${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()

# zt_install_program(target "what it does"): the program, and its manual page, which help2man makes of --help.
function(zt_install_program target summary)
    install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
    find_program(ZT_HELP2MAN help2man)
    if(NOT ZT_HELP2MAN OR CMAKE_CROSSCOMPILING)
        return()
    endif()
    get_target_property(name ${target} OUTPUT_NAME)
    set(page ${CMAKE_CURRENT_BINARY_DIR}/${name}.1)
    add_custom_command(OUTPUT ${page}
        COMMAND ${CMAKE_COMMAND} -E env ${ZT_HELP2MAN} --no-info --name ${summary} --output ${page} $<TARGET_FILE:${target}>
        COMMAND sed -i "/^.TH/s/\"[A-Z][a-z]* [0-9]*\"/\"\"/" ${page} # without the date
        DEPENDS ${target} VERBATIM)
    add_custom_target(${target}Manual ALL DEPENDS ${page})
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endfunction()

# zt_install_package(): what all of the above share.
function(zt_install_package)
    zt_install_targets("")
    set(pixels)
    if(NOT BUILD_SHARED_LIBS)
        zt_install_library(ztPixels "")
        set(pixels ztPixels)
    endif()
    zt_install_pkgconfig(REQUIRES Qt${ZT_QT_MAJOR}Gui
        LIBRARIES ztOverlayUtils ztOpenSGUtils ztOpenSGExt ${pixels} ztUtils ztOpenSG)
    configure_package_config_file(CMake/ztOverlayUtilsConfig.cmake.in ztOverlayUtilsConfig.cmake
        INSTALL_DESTINATION ${ZT_INSTALL_CMAKEDIR} NO_SET_AND_CHECK_MACRO)
    write_basic_package_version_file(ztOverlayUtilsConfigVersion.cmake COMPATIBILITY SameMajorVersion)
    install(FILES
            ${CMAKE_CURRENT_BINARY_DIR}/ztOverlayUtilsConfig.cmake
            ${CMAKE_CURRENT_BINARY_DIR}/ztOverlayUtilsConfigVersion.cmake
        DESTINATION ${ZT_INSTALL_CMAKEDIR} COMPONENT development)
    add_custom_target(ztUninstall
        COMMAND ${CMAKE_COMMAND} -D MANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt
                -P ${PROJECT_SOURCE_DIR}/CMake/Uninstall.cmake)
endfunction()
