// Text before and after the host's QGuiApplication. An executable of its own: the others have one from the
// start.
#include "TestSupport.h"

#include <QGuiApplication>

namespace
{

using NoApplicationTest = SceneTest;

TEST_F(NoApplicationTest, TextWaitsForTheApplication)
{
    osg::OverlayPtr const overlay = makeText("text");
    auto const update = [&overlay] {
        ztOverlays::updateOverlay(overlay, 100, 100);
        return shownImage(overlay)->width;
    };
    int argumentCount = 0;
    EXPECT_EQ(update(), 16);
    {
        QCoreApplication application(argumentCount, nullptr);
        EXPECT_EQ(update(), 16) << "an application without fonts is none";
    }
    EXPECT_TRUE(overlay->dirty);
    EXPECT_EQ(corners(overlay), "(0, 0) (100, 0) (100, 100) (0, 100)");
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        QGuiApplication application(argumentCount, nullptr);
        EXPECT_GT(update(), 16);
        EXPECT_FALSE(overlay->dirty);
    }
    overlay->dirty = true;
    EXPECT_EQ(update(), 16) << "nor is one that has ended";
}

} // namespace
