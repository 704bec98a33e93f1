# The tests of overlay files and of overlay-stamp.
zt_add_tests(ztOverlayStampTests
    SOURCES HostTest.h OverlayStampTest.cpp PipeTest.cpp
    LIBRARIES ztOverlayFile GTest::gtest_main)
target_compile_definitions(ztOverlayStampTests PRIVATE ZT_OVERLAY_STAMP="$<TARGET_FILE:ztOverlayStamp>")
add_dependencies(ztOverlayStampTests ztOverlayStamp)

# The schema says of the examples, the fuzz harness's files and the tests' wrong ones what the reader says.
find_program(ZT_PYTHON python3)
if(ZT_PYTHON)
    execute_process(COMMAND ${ZT_PYTHON} -c "import jsonschema" RESULT_VARIABLE hasNoSchemas ERROR_QUIET)
endif()
if(NOT ZT_PYTHON OR hasNoSchemas)
    message(STATUS "The overlay files' schema isn't tested: python3-jsonschema isn't there")
else()
    set(wrongFiles ${CMAKE_CURRENT_BINARY_DIR}/wrong-files)
    file(MAKE_DIRECTORY ${wrongFiles})
    add_test(NAME WrongFiles COMMAND ztOverlayStampTests --gtest_filter=OverlayStamp.SaysInOneLineWhatIsWrongInTheOverlayFile)
    set_tests_properties(WrongFiles PROPERTIES FIXTURES_SETUP WrongFiles ENVIRONMENT ZT_WRONG_FILES=${wrongFiles})
    add_test(NAME Schema
        COMMAND ${ZT_PYTHON} ${CMAKE_CURRENT_SOURCE_DIR}/CheckSchema.py $<TARGET_FILE:ztOverlayStamp>
                ${PROJECT_SOURCE_DIR}/Docs/overlay-file.schema.json ${PROJECT_SOURCE_DIR}/Examples/Data
                ${CMAKE_CURRENT_SOURCE_DIR}/Fuzz/corpus/OverlayFile ${wrongFiles})
    set_tests_properties(Schema PROPERTIES FIXTURES_REQUIRED WrongFiles)
endif()
find_program(ZT_OIIOTOOL oiiotool)
if(ZT_PYTHON)
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/Pipes)
    add_test(NAME Pipes
        COMMAND ${ZT_PYTHON} ${CMAKE_CURRENT_SOURCE_DIR}/Frames/pipes.py $<TARGET_FILE:ztOverlayStamp>
                $<$<BOOL:${ZT_OIIOTOOL}>:${ZT_OIIOTOOL}>
        COMMAND_EXPAND_LISTS WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/Pipes)
endif()

add_test(NAME Recipes
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/recipes ${PROJECT_SOURCE_DIR}/Docs/stamp.md $<TARGET_FILE:ztOverlayStamp>
            ${PROJECT_SOURCE_DIR}/Examples/Data $<$<NOT:$<TARGET_EXISTS:ztOpenImageIO>>:oiiotool>
    COMMAND_EXPAND_LISTS)

# The small examples; the one with a window where there are the library for it and a display.
zt_add_tests(ztExamplesTests
    SOURCES ExamplesTest.cpp HostTest.h
    LIBRARIES Qt${ZT_QT_MAJOR}::Gui GTest::gtest_main)
target_compile_definitions(ztExamplesTests PRIVATE
    ZT_OVERLAY_STAMP="$<TARGET_FILE:ztOverlayStamp>"
    ZT_LABEL_EXAMPLE="$<TARGET_FILE:ztLabelExample>"
    ZT_OWN_RENDERER_EXAMPLE="$<TARGET_FILE:ztOwnRendererExample>")
add_dependencies(ztExamplesTests ztOverlayStamp ztLabelExample ztOwnRendererExample)
find_program(ZT_XVFB_RUN xvfb-run)
if(ZT_XVFB_RUN AND TARGET ztViewerExample)
    target_compile_definitions(ztExamplesTests PRIVATE
        ZT_XVFB_RUN="${ZT_XVFB_RUN}" ZT_VIEWER_EXAMPLE="$<TARGET_FILE:ztViewerExample>")
    add_dependencies(ztExamplesTests ztViewerExample)
endif()

# The program in the README runs as it stands.
file(READ ${PROJECT_SOURCE_DIR}/README.md readme)
string(REGEX MATCH "```cpp\n([^`]*)```" readme "${readme}")
file(GENERATE OUTPUT ReadmeHost.cpp CONTENT "${CMAKE_MATCH_1}")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/README.md)
add_executable(ztReadmeHost ${CMAKE_CURRENT_BINARY_DIR}/ReadmeHost.cpp)
target_link_libraries(ztReadmeHost PRIVATE zt::OverlayUtils ztCompileOptions)
add_test(NAME ReadmeHost COMMAND ${CMAKE_COMMAND} -E env --unset=DISPLAY --unset=QT_QPA_PLATFORM $<TARGET_FILE:ztReadmeHost>)

# Frames of any depth, where there are the library for them and a judge.
find_program(ZT_FRAMES_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
find_program(ZT_OIIOTOOL oiiotool)
if(ZT_FRAMES_PYTHON AND ZT_OIIOTOOL)
    execute_process(COMMAND ${ZT_FRAMES_PYTHON} -c "import numpy, OpenImageIO" RESULT_VARIABLE hasNoJudge ERROR_QUIET)
endif()
if(NOT TARGET ztOpenImageIO OR NOT ZT_FRAMES_PYTHON OR NOT ZT_OIIOTOOL OR hasNoJudge)
    message(STATUS "Frames of any depth aren't tested: OpenImageIO, its tools or its Python module aren't there")
else()
    add_test(NAME Frames
        COMMAND ${ZT_FRAMES_PYTHON} ${CMAKE_CURRENT_SOURCE_DIR}/Frames/frames.py $<TARGET_FILE:ztOverlayStamp>)
endif()
