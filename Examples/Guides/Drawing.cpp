#include "Guides.h"

#include "OSGDrawAction.h"
#include "OSGPolygonFit.h"
#include "ztOpenSGUtils.h"

#include <optional>
#include <unordered_map>

namespace ztGuides
{

namespace
{

//! [textures]
/// Textures of another renderer, one for each texture chunk.
class Textures
{
  public:
    std::size_t numUploads() const { return _numUploads; }
    std::size_t size() const { return _textures.size(); }

    /// Uploads an image if it is another one, or has other pixels, than at the last call.
    int of(osg::TextureChunk& chunk)
    {
        Texture& texture = _textures[&chunk];
        if (texture.life.expired()) // a new chunk, maybe at the address of one that has ended
            texture = {chunk.getLife(), std::nullopt, ++_lastName};
        if (texture.revision != chunk.getImageRevision())
        {
            // Upload here: chunk.image->pixelBuffer(), width × height × 4 bytes, bottom row first, premultiplied.
            texture.revision = chunk.getImageRevision();
            ++_numUploads;
        }
        return texture.name;
    }

    /// Once a frame: deletes the textures of chunks that have ended.
    void sweep()
    {
        if (std::exchange(_numEnded, osg::StateChunk::getNumEnded()) == _numEnded)
            return;
        for (auto texture = _textures.begin(); texture != _textures.end();)
            texture = texture->second.life.expired() ? _textures.erase(texture) : std::next(texture);
    }

  private:
    struct Texture
    {
        std::weak_ptr<void const> life;
        std::optional<osg::UInt64> revision; // nothing before the first upload
        int name;
    };

    std::unordered_map<osg::TextureChunk const*, Texture> _textures;
    osg::UInt64 _numEnded = 0;
    std::size_t _numUploads = 0;
    int _lastName = 0;
};
//! [textures]

//! [action]
/// A rectangle on the pixels of a viewport, y up, for another scene graph.
struct Rectangle
{
    float left, bottom, right, top;
    int texture;
};

/// Collects what is to be drawn, the last one on top.
class RectangleList : public osg::DrawActionBase
{
  public:
    std::vector<Rectangle> rectangles;
    Textures textures;

    void endFrame() override { textures.sweep(); }

    void drawPolygon(osg::TexturedPolygon const& polygon, osg::Viewport& viewport) override
    {
        osg::TextureChunk* const chunk = osg::drawChunksOf(polygon.material).texture;
        if (!chunk || chunk->image == osg::NullFC || !chunk->image->isComplete() || polygon.positions.size() < 3)
            return; // nothing to show
        osg::LayoutArea const area = viewport.getLayoutArea();
        osg::PixelFit const fit = osg::fitToPixels(polygon, area, viewport.getPixelWidth(), viewport.getPixelHeight());
        float const scaleX = float(viewport.getPixelWidth()) / (area.right - area.left);
        float const scaleY = float(viewport.getPixelHeight()) / (area.top - area.bottom);
        osg::Pnt2f const low = polygon.positions[0], high = polygon.positions[2];
        rectangles.push_back({(fit.x(low.x) - area.left) * scaleX, (fit.y(low.y) - area.bottom) * scaleY,
                              (fit.x(high.x) - area.left) * scaleX, (fit.y(high.y) - area.bottom) * scaleY,
                              textures.of(*chunk)});
    }
};
//! [action]

//! [tile]
/// Draws a tile of a picture that is larger than a framebuffer. Left and bottom are those of the tile.
void drawTile(osg::DrawActionBase& action, QSize const& picture, int left, int bottom, QSize const& tile)
{
    auto const camera = osg::create<osg::TileCameraDecorator>();
    camera->fullWidth = picture.width();
    camera->fullHeight = picture.height();
    camera->left = float(left) / float(picture.width());
    camera->right = float(left + tile.width()) / float(picture.width());
    camera->bottom = float(bottom) / float(picture.height());
    camera->top = float(bottom + tile.height()) / float(picture.height());
    auto const viewport = createViewport(tile.width(), tile.height());
    osg::setRefdCP(viewport->camera, osg::CameraPtr(camera));

    ztOverlays::updateAllOverlays(viewport); // for the size of the picture
    osg::DrawFrame const frame(action);
    ztOverlays::drawOverlays(&action, viewport.get());
}
//! [tile]

//! [stereo]
osg::RefPtr<osg::Viewport> createStereoViewport(float aspect)
{
    auto const perspective = osg::create<osg::PerspectiveCamera>();
    perspective->aspect = aspect;
    auto const eye = osg::create<osg::ShearedStereoCameraDecorator>();
    osg::setRefdCP(eye->decoratee, osg::CameraPtr(perspective));
    auto const viewport = createViewport(640, 720);
    osg::setRefdCP(viewport->camera, osg::CameraPtr(eye));
    return viewport;
}
//! [stereo]

void checkAction(osg::NodePtr const& node)
{
    auto viewport = createViewport(1280, 720);
    RectangleList list;
    ztOverlays::addOverlays(viewport);
    for (int frame = 0; frame < 3; ++frame)
    {
        ztOverlays::updateAllOverlays(viewport);
        viewport->render(&list);
    }
    Rectangle const& first = list.rectangles.front();
    expect(first.left == 616 && first.right == 664 && first.bottom == 336 && first.top == 384, "whole pixels");
    expect(list.rectangles.size() == 3 && list.textures.numUploads() == 1, "a texture is uploaded once");

    osg::markChanged(overlayOf(node)->image, osg::Image::PixelsFieldMask);
    viewport->render(&list);
    expect(list.textures.numUploads() == 2, "and again after a mark");

    ztOverlays::removeOverlays(viewport);
    node->parent->subChild(node);
    viewport->render(&list);
    expect(list.textures.size() == 0, "textures go with their chunks");
}

void checkTiles()
{
    RectangleList list;
    for (int left : {0, 640})
        drawTile(list, QSize(1280, 720), left, 0, QSize(640, 720));
    expect(list.rectangles[0].left == 616 && list.rectangles[1].left == -24, "one layout, shifted for each tile");
}

void checkStereo()
{
    auto const viewport = createStereoViewport(2);
    int width, height;
    ztOverlays::getViewportSize(viewport, width, height);
    expect(width == 1280 && height == 720, "an eye of half the width has the layout of the whole");
    ztOverlays::updateAllOverlays(viewport);
    RectangleList list;
    ztOverlays::drawOverlays(&list, viewport.get());
    Rectangle const& rectangle = list.rectangles.front();
    expect(rectangle.right - rectangle.left == 24 && rectangle.top - rectangle.bottom == 48, "squeezed to the eye");
}

osg::NodePtr createCentredPicture()
{
    ztOpenSGUtils::setRoot(createScene());
    QImage picture(48, 48, QImage::Format_ARGB32);
    picture.fill(Qt::white);
    osg::NodePtr const node = addPicture(picture);
    overlayOf(node)->anchor = {0.5f, 0.5f};
    osg::markChanged(node->core, osg::Overlay::AnchorFieldMask);
    return node;
}

} // namespace

void drawing()
{
    checkAction(createCentredPicture());
    createCentredPicture();
    checkTiles();
    checkStereo();
}

} // namespace ztGuides
