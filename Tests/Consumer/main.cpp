/// Stamps a label onto a picture and compares it with what overlay-stamp made of it: consumer PICTURE STAMPED
#include "OSGMaterialPool.h"
#include "OSGOpenGLDrawAction.h"
#include "OSGRefPtr.h"
#include "ztImage.h"
#include "ztOpenSGUtils.h"
#include "ztOverlayCheck.h"
#include "ztOverlayUtils.h"
#include "ztPlatform.h"

#include <QGuiApplication>
#include <QImage>

int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    QImage picture = QImage(argv[1]).mirrored().convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    QImage const expected = QImage(argv[2]).mirrored().convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    ztPlatform::setDpiScale(1.0, 1.0);

    osg::RefPtr<osg::Node> const scene(osg::create<osg::Node>());
    osg::NodePtr const pool = osg::create<osg::Node>();
    pool->setCore(osg::create<osg::MaterialPool>());
    scene->addChild(pool);
    ztOpenSGUtils::setRoot(scene);
    osg::OverlayPtr const label =
        osg::dynamicCast<osg::Overlay>(ztOverlays::createOverlay(ztOverlays::getOverlayPoolRoot())->core);
    label->text = "Take 3";
    label->font = "DejaVu Sans";
    label->size = 40.0f;
    label->anchor = {0.5f, 0.5f};
    osg::markChanged(label, osg::AllFieldsMask);

    osg::RefPtr<osg::Image> const image(ztImage::createOver(picture.width(), picture.height(), picture.bits()));
    ztOverlays::blendOverlaysOntoImage({label}, image, osg::NullFC);
    bool const isSound = ztOverlayCheck::inspect(osg::NullFC).empty() && osg::OpenGLDrawAction().takeFailure().empty();
    ztOpenSGUtils::setRoot(osg::NullFC);
    return isSound && !picture.isNull() && picture == expected ? 0 : 1;
}
