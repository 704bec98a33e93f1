// Text before and after the host's QGuiApplication. An executable of its own: the others have one from the start.
#include "TestSupport.h"
#include "ztOverlayCheck.h"

#include <QGuiApplication>

using NoApplicationTest = SceneTest;

TEST_F(NoApplicationTest, TextWaitsForTheApplication)
{
    osg::OverlayPtr const overlay = makeText("text");
    int argumentCount = 0;
    auto const isDrawn = [&overlay] {
        ztOverlays::updateOverlay(overlay, 100, 100);
        EXPECT_EQ(overlay->dirty, shownImage(overlay)->width == 16);
        return !overlay->dirty;
    };
    EXPECT_FALSE(isDrawn());
    {
        QCoreApplication application(argumentCount, nullptr);
        EXPECT_FALSE(isDrawn()) << "an application without fonts is none";
    }
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        QGuiApplication application(argumentCount, nullptr);
        EXPECT_TRUE(isDrawn());
    }
    overlay->dirty = true;
    EXPECT_FALSE(isDrawn()) << "nor is one that has ended";
}

TEST_F(NoApplicationTest, IsFoundByTheCheck)
{
    osg::OverlayPtr const overlay = overlayOf(ztOverlays::createOverlay(makeScene()));
    overlay->font = overlay->text = "any";
    auto const findings = ztOverlayCheck::inspect(osg::NullFC);
    EXPECT_EQ(findings.at(0).kind, ztOverlayCheck::Kind::NoApplication);
    EXPECT_NE(findings.at(1).problem.find("no application"), std::string::npos);
}
