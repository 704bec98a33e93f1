# The tests of overlay files and of overlay-stamp.
zt_add_tests(OverlayFileTests
    SOURCES OverlayFileTest.cpp
    LIBRARIES OverlayFile GTest::gtest_main)

zt_add_tests(OverlayStampTests
    SOURCES OverlayStampTest.cpp
    LIBRARIES Qt5::Gui GTest::gtest_main)
target_compile_definitions(OverlayStampTests PRIVATE OVERLAY_STAMP="$<TARGET_FILE:OverlayStamp>")
add_dependencies(OverlayStampTests OverlayStamp)
