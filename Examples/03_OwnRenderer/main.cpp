// A scene's overlays painted onto a picture: 03_OwnRenderer INPUT LOGO OUTPUT
#include "OSGMaterialPool.h"
#include "PainterDrawAction.h"
#include "ztImage.h"
#include "ztOpenSGUtils.h"
#include "ztOverlayUtils.h"

#include <QGuiApplication>

#include <iostream>

namespace
{

void createLabel(osg::NodePtr const& pool)
{
    auto const label = osg::dynamicCast<osg::Overlay>(ztOverlays::createOverlay(pool)->core);
    label->text = "Take 3";
    label->font = "DejaVu Sans";
    label->anchor = {0.5f, 0.05f};
    osg::markChanged(label, osg::AllFieldsMask);
}

void createLogo(osg::NodePtr const& pool, char const* path)
{
    QImage const pixels = QImage(path).convertToFormat(QImage::Format_RGBA8888_Premultiplied).mirrored();
    auto const logo = osg::dynamicCast<osg::Overlay>(ztOverlays::createOverlay(pool)->core);
    osg::setRefdCP(logo->image, ztImage::create(pixels.width(), pixels.height(), pixels.constBits())); // holds it
    logo->contentType = osg::Overlay::ContentImage;
    logo->size = 21.3f;
    logo->anchor = {1.0f, 1.0f};
    osg::markChanged(logo, osg::AllFieldsMask);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen"); // text takes fonts, not a display
    QGuiApplication const application(argc, argv);
    QImage frame = QImage(argc == 4 ? argv[1] : "").convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    if (frame.isNull())
    {
        std::cerr << "usage: 03_OwnRenderer INPUT LOGO OUTPUT, the names of three pictures\n";
        return 2;
    }
    osg::NodePtr const scene = osg::create<osg::Node>();
    scene->setCore(osg::create<osg::MaterialPool>());
    ztOpenSGUtils::setRoot(scene); // holds it
    osg::NodePtr const pool = ztOverlays::getOverlayPoolRoot();
    createLabel(pool);
    createLogo(pool, argv[2]);

    osg::RefPtr<osg::Viewport> const viewport(osg::create<osg::Viewport>());
    viewport->pixelWidth = frame.width();
    viewport->pixelHeight = frame.height();
    ztOverlays::updateAllOverlays(viewport);
    QPainter painter(&frame);
    PainterDrawAction action(painter);
    ztOverlays::drawOverlays(&action, viewport.get());
    ztOpenSGUtils::setRoot(osg::NullFC);
    painter.end();
    return frame.save(argv[3]) ? 0 : 1;
}
