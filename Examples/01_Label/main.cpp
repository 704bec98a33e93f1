// One label onto a picture: 01_Label INPUT OUTPUT
#include "OSGRefPtr.h"
#include "ztImage.h"
#include "ztOverlayUtils.h"

#include <QGuiApplication>
#include <QImage>

#include <iostream>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen"); // text takes fonts, not a display
    QGuiApplication const application(argc, argv);
    QImage const input = argc == 3 ? QImage(argv[1]) : QImage();
    if (input.isNull())
    {
        std::cerr << "usage: 01_Label INPUT OUTPUT, the names of two pictures\n";
        return 2;
    }

    // A label. What hangs in no scene is its maker's: a RefPtr holds it as long as its scope lasts.
    osg::RefPtr<osg::Node> const node(ztOverlays::createOverlay(osg::NullFC));
    osg::OverlayPtr const label = osg::dynamicCast<osg::Overlay>(node->core);
    label->text = "Take 3";
    label->font = "DejaVu Sans";
    label->sizeMode = osg::Overlay::SizeRelative;
    label->size = 0.1f;            // of the picture's height
    label->anchor = {0.5f, 0.05f}; // in the middle, near the lower edge
    osg::markChanged(label, osg::AllFieldsMask);

    // The picture's pixels as the library has them: premultiplied, bottom row first. The image works on them in place.
    QImage pixels = input.convertToFormat(QImage::Format_RGBA8888_Premultiplied).mirrored();
    osg::RefPtr<osg::Image> const image(ztImage::createOver(pixels.width(), pixels.height(), pixels.bits()));

    ztOverlays::blendOverlaysOntoImage({label}, image, osg::NullFC);
    return pixels.mirrored().save(argv[2]) ? 0 : 1;
}
