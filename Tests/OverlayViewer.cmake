# The tests of overlay-viewer: those that need no display, and those of the window.
add_executable(OverlayViewerTests HostTest.h OverlayViewerTest.cpp)
target_link_libraries(OverlayViewerTests PRIVATE OverlayViewerParts GTest::gtest ztCompileOptions)
target_compile_definitions(OverlayViewerTests PRIVATE OVERLAY_VIEWER="$<TARGET_FILE:OverlayViewer>")
add_dependencies(OverlayViewerTests OverlayViewer)

add_test(NAME OverlayViewer COMMAND OverlayViewerTests --gtest_filter=-Window*)
set_tests_properties(OverlayViewer PROPERTIES TIMEOUT 300 ENVIRONMENT QT_QPA_PLATFORM=offscreen)

find_program(XVFB_RUN xvfb-run)
if(XVFB_RUN)
    # What the window system's libraries leak can't be suppressed by name, since they are unloaded before the check. The
    # tests count their containers instead.
    add_test(NAME OverlayViewerWindow
        COMMAND ${XVFB_RUN} -a -s "-screen 0 1280x1024x24" $<TARGET_FILE:OverlayViewerTests> --gtest_filter=Window*)
    set_tests_properties(OverlayViewerWindow PROPERTIES
        TIMEOUT 600 ENVIRONMENT "QT_QPA_PLATFORM=xcb;LIBGL_ALWAYS_SOFTWARE=1;ASAN_OPTIONS=detect_leaks=0")
else()
    add_test(NAME OverlayViewerWindow COMMAND ${CMAKE_COMMAND} -E echo "Skipped: there is no xvfb-run")
    set_tests_properties(OverlayViewerWindow PROPERTIES SKIP_REGULAR_EXPRESSION "Skipped: ")
endif()
