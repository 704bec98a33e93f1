#include "ztNumeric.h"
#include "ztOverlayUtils.h"

namespace ztOverlays
{

namespace
{

float correctionFactor(osg::CameraPtr const& camera)
{
    auto const stereo = osg::dynamicCast<osg::ShearedStereoCameraDecorator>(camera);
    if (stereo == osg::NullFC)
        return 1.0f;
    auto const perspective = osg::dynamicCast<osg::PerspectiveCamera>(stereo->decoratee);
    return perspective != osg::NullFC ? perspective->aspect : 1.0f;
}

/// The first tile decorator of the chain, or null.
osg::TileCameraDecoratorPtr findTile(osg::CameraPtr const& camera)
{
    auto decorator = osg::dynamicCast<osg::CameraDecorator>(camera);
    while (decorator != osg::NullFC)
    {
        auto const tile = osg::dynamicCast<osg::TileCameraDecorator>(decorator);
        if (tile != osg::NullFC)
            return tile;
        decorator = osg::dynamicCast<osg::CameraDecorator>(decorator->decoratee);
    }
    return osg::NullFC;
}

void getSizeBehindDecorators(osg::Viewport& viewport, int& width, int& height)
{
    float const factor = correctionFactor(viewport.camera);
    osg::TileCameraDecoratorPtr const tile = findTile(viewport.camera);
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
