#include "ztNumeric.h"
#include "ztOverlayUtils.h"

namespace ztOverlays
{

namespace
{

void getSizeBehindDecorators(osg::Viewport& viewport, int& width, int& height)
{
    float const factor = osg::stereoAspect(viewport.camera);
    osg::TileCameraDecoratorPtr const tile = osg::findTile(viewport.camera);
    width = tile != osg::NullFC ? tile->fullWidth : viewport.getPixelWidth();
    height = tile != osg::NullFC ? tile->fullHeight : viewport.getPixelHeight();
    if (factor > 1.0f)
        width = ztNumeric::truncate(factor * float(width));
    else if (factor < 1.0f)
        height = ztNumeric::truncate(float(height) / factor);
}

} // namespace

void getViewportSize(ViewportPtr const& viewport, int& width, int& height)
{
    width = 0;
    height = 0;
    if (viewport == osg::NullFC)
        return;
    if (osg::dynamicCast<osg::CameraDecorator>(viewport->camera) != osg::NullFC)
        return getSizeBehindDecorators(*viewport, width, height);
    width = viewport->getPixelWidth();
    height = viewport->getPixelHeight();
}

} // namespace ztOverlays
