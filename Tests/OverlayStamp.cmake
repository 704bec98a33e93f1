# The tests of overlay files and of overlay-stamp.
zt_add_tests(OverlayStampTests
    SOURCES HostTest.h OverlayStampTest.cpp
    LIBRARIES OverlayFile GTest::gtest_main)
target_compile_definitions(OverlayStampTests PRIVATE OVERLAY_STAMP="$<TARGET_FILE:OverlayStamp>")
add_dependencies(OverlayStampTests OverlayStamp)
