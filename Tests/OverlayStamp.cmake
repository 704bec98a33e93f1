# The tests of overlay files and of overlay-stamp.
zt_add_tests(ztOverlayStampTests
    SOURCES HostTest.h OverlayStampTest.cpp
    LIBRARIES ztOverlayFile GTest::gtest_main)
target_compile_definitions(ztOverlayStampTests PRIVATE ZT_OVERLAY_STAMP="$<TARGET_FILE:ztOverlayStamp>")
add_dependencies(ztOverlayStampTests ztOverlayStamp)
