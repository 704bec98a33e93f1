# The tests of overlay-viewer: those that need no display, and those of the window.
add_executable(OverlayViewerTests OverlayViewerTest.cpp)
target_link_libraries(OverlayViewerTests PRIVATE OverlayViewerParts GTest::gtest ztCompileOptions)
target_compile_definitions(OverlayViewerTests PRIVATE OVERLAY_VIEWER="$<TARGET_FILE:OverlayViewer>")
add_dependencies(OverlayViewerTests OverlayViewer)

add_test(NAME OverlayViewer COMMAND OverlayViewerTests --gtest_filter=-Window*)
set_tests_properties(OverlayViewer PROPERTIES TIMEOUT 300 ENVIRONMENT QT_QPA_PLATFORM=offscreen)

find_program(XVFB_RUN xvfb-run)
if(XVFB_RUN)
    # AddressSanitizer's slow unwinder waits forever for the lock that the system's unwinder holds while it
    # allocates memory for the driver's generated code. Leaks of drivers can't be suppressed by name, since
    # they are unloaded before the check; the other checks stay, and the tests count their containers.
    add_test(NAME OverlayViewerWindow
        COMMAND ${XVFB_RUN} -a -s "-screen 0 1280x1024x24" $<TARGET_FILE:OverlayViewerTests> --gtest_filter=Window*)
    set_tests_properties(OverlayViewerWindow PROPERTIES
        TIMEOUT 600 ENVIRONMENT "QT_QPA_PLATFORM=xcb;LIBGL_ALWAYS_SOFTWARE=1;ASAN_OPTIONS=detect_leaks=0:fast_unwind_on_malloc=1")
else()
    add_test(NAME OverlayViewerWindow COMMAND ${CMAKE_COMMAND} -E echo "Skipped: there is no xvfb-run")
    set_tests_properties(OverlayViewerWindow PROPERTIES SKIP_REGULAR_EXPRESSION "Skipped: ")
endif()
