# The tests of overlay-viewer: those that need no display, and those of the window.
add_executable(ztOverlayViewerTests HostTest.h OverlayViewerTest.cpp)
target_link_libraries(ztOverlayViewerTests PRIVATE ztOverlayViewerParts GTest::gtest ztCompileOptions)
target_compile_definitions(ztOverlayViewerTests PRIVATE ZT_OVERLAY_VIEWER="$<TARGET_FILE:ztOverlayViewer>")
add_dependencies(ztOverlayViewerTests ztOverlayViewer)

add_test(NAME OverlayViewer COMMAND ztOverlayViewerTests --gtest_filter=-Window*)
set_tests_properties(OverlayViewer PROPERTIES TIMEOUT 300 ENVIRONMENT QT_QPA_PLATFORM=offscreen)

find_program(ZT_XVFB_RUN xvfb-run)
if(ZT_XVFB_RUN)
    # What the window system's libraries leak can't be suppressed by name, since they are unloaded before the check. The
    # tests count their containers instead.
    add_test(NAME OverlayViewerWindow
        COMMAND ${ZT_XVFB_RUN} -a -s "-screen 0 1280x1024x24" $<TARGET_FILE:ztOverlayViewerTests> --gtest_filter=Window*)
    set_tests_properties(OverlayViewerWindow PROPERTIES
        TIMEOUT 600 ENVIRONMENT "QT_QPA_PLATFORM=xcb;LIBGL_ALWAYS_SOFTWARE=1;ASAN_OPTIONS=detect_leaks=0")
else()
    add_test(NAME OverlayViewerWindow COMMAND ${CMAKE_COMMAND} -E echo "Skipped: there is no xvfb-run")
    set_tests_properties(OverlayViewerWindow PROPERTIES SKIP_REGULAR_EXPRESSION "Skipped: ")
endif()
