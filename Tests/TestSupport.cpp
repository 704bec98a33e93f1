#include "TestSupport.h"

#include "ztImage.h"

#include <map>
#include <set>
#include <sstream>

namespace
{

/// The marked field, ".children" for example, of those that tests see marked; a question mark for any other.
std::string fieldName(osg::ChangeList::Entry const& entry)
{
    static std::map<std::string, std::map<osg::BitVector, char const*>> const names = {
        {"Image", {{osg::Image::PixelsFieldMask, ".pixels"}}},
        {"MaterialPool", {{osg::MaterialPool::OverlayRootFieldMask, ".overlayRoot"}}},
        {"Node", {{osg::Node::ChildrenFieldMask, ".children"}}},
        {"Name", {{osg::Name::NameFieldMask, ".name"}}},
        {"HostOverlay", {{osg::Overlay::TextFieldMask, ".text"}}},
        {"Overlay", {{osg::Overlay::DirtyFieldMask, ".dirty"}}},
        {"PolygonForeground2",
         {{osg::Foreground::ActiveFieldMask, ".active"}, {osg::PolygonForeground2::PositionsFieldMask, ".positions"}}},
        {"TextureChunk",
         {{osg::TextureChunk::ImageFieldMask, ".image"}, {osg::TextureChunk::MinFilterFieldMask, ".minFilter"}}},
        {"Viewport", {{osg::Viewport::ForegroundsFieldMask, ".foregrounds"}}},
    };
    auto const& ofClass = names.at(entry.container->getType().getName());
    auto const name = ofClass.find(entry.mask);
    return name != ofClass.end() ? name->second : ".?";
}

} // namespace

std::string Recorder::take(Names const& names)
{
    std::ostringstream text;
    std::set<osg::FieldContainer const*> destroyed;
    for (osg::ChangeList::Entry const& entry : _list.getEntries())
        if (entry.event == osg::ChangeList::Event::Destroyed)
            destroyed.insert(entry.container.getContainer());
    for (osg::ChangeList::Entry const& entry : _list.getEntries())
    {
        text << (text.tellp() > 0 ? " " : "") << "+-x!"[int(entry.event)];
        for (auto const& [name, container] : names)
            text << (container == entry.container ? name : "");
        if (entry.mask != 0 && entry.mask != osg::AllFieldsMask)
            text << (destroyed.count(entry.container.getContainer()) ? ".?" : fieldName(entry));
    }
    _list.clear();
    return text.str();
}

void SceneTest::TearDown()
{
    ztOpenSGUtils::setRoot(osg::NullFC);
    ztPlatform::setDpiScale(1.0, 1.0);
    for (; !_held.empty(); _held.pop_back())
        osg::subRef(_held.back());
    EXPECT_EQ(osg::FieldContainerFactory::getNumContainers(), _containersBefore) << "containers leak";
}

osg::NodePtr SceneTest::makeNode(osg::NodeCorePtr const& core, osg::NodePtr const& parent)
{
    osg::NodePtr const node = hold(osg::create<osg::Node>());
    node->setCore(core);
    if (parent != osg::NullFC)
        parent->addChild(node);
    return node;
}

osg::NodePtr SceneTest::makeScene()
{
    osg::NodePtr const root = makeNode(osg::create<osg::Group>());
    makeNode(osg::create<osg::MaterialPool>(), root);
    ztOpenSGUtils::setRoot(root);
    return ztOverlays::getOverlayPoolRoot();
}

osg::ViewportPtr SceneTest::makeViewport(int width, int height, osg::CameraPtr const& camera)
{
    osg::ViewportPtr const viewport = hold(osg::create<osg::Viewport>());
    viewport->pixelWidth = width;
    viewport->pixelHeight = height;
    osg::setRefdCP(viewport->camera, camera);
    return viewport;
}

osg::OverlayPtr SceneTest::makeText(std::string const& text, float size, int sizeMode)
{
    osg::OverlayPtr const overlay = makePicture(osg::NullFC, size, sizeMode);
    overlay->contentType = osg::Overlay::ContentText;
    overlay->text = text;
    overlay->font = "DejaVu Sans";
    return overlay;
}

osg::OverlayPtr SceneTest::makePicture(osg::ImagePtr const& image, float size, int sizeMode)
{
    osg::OverlayPtr const overlay = overlayOf(hold(ztOverlays::createOverlay(osg::NullFC)));
    overlay->contentType = osg::Overlay::ContentImage;
    overlay->size = size;
    overlay->sizeMode = sizeMode;
    osg::setRefdCP(overlay->image, image);
    return overlay;
}

osg::ImagePtr SceneTest::makeImage(int width, int height, std::array<int, 4> pixel)
{
    osg::ImagePtr const image = hold(ztImage::create(width, height));
    for (std::size_t i = 0; i < image->pixels.size(); ++i)
        image->pixels[i] = osg::UInt8(pixel[i % 4]);
    return image;
}

osg::TileCameraDecoratorPtr SceneTest::createTile(int fullWidth, int fullHeight)
{
    auto const tile = osg::create<osg::TileCameraDecorator>();
    tile->fullWidth = fullWidth;
    tile->fullHeight = fullHeight;
    return tile;
}

std::vector<float> SceneTest::corners(osg::OverlayPtr const& overlay)
{
    std::vector<float> coordinates;
    for (osg::Pnt2f const& corner : overlay->foreground->positions)
        coordinates.insert(coordinates.end(), {corner.x, corner.y});
    return coordinates;
}

std::array<int, 4> SceneTest::pixelAt(osg::ImagePtr const& image, int column, int row)
{
    osg::UInt8 const* const pixel = image->pixelBuffer() + 4 * (row * image->width + column);
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

QImage SceneTest::toQImage(osg::ImagePtr const& image)
{
    QImage const bytes(image->pixelBuffer(), image->width, image->height, QImage::Format_RGBA8888_Premultiplied);
    return bytes.convertToFormat(QImage::Format_ARGB32_Premultiplied).mirrored();
}
