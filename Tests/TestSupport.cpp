#include "TestSupport.h"

#include <algorithm>
#include <limits>
#include <sstream>

std::string Recorder::describe(Names const& names, bool marksOnly, bool types) const
{
    std::ostringstream text;
    for (osg::ChangeList::Entry const& entry : _list.getEntries())
    {
        if (marksOnly && entry.event != osg::ChangeList::Event::Changed)
            continue;
        text << (text.tellp() > 0 ? " " : "") << "+-x!"[int(entry.event)];
        if (entry.mask != 0 && entry.mask != osg::AllFieldsMask)
            text << std::hex << entry.mask;
        auto const name = std::find_if(names.begin(), names.end(),
                                       [&entry](auto const& named) { return named.second == entry.container; });
        if (name != names.end())
            text << name->first;
        else if (types)
            text << entry.container->getType().getName();
    }
    return text.str();
}

void SceneTest::TearDown()
{
    ztOpenSGUtils::setRoot(osg::NullFC);
    ztPlatform::setDpiScale(1.0, 1.0);
    while (!_held.empty())
    {
        osg::subRef(_held.back());
        _held.pop_back();
    }
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

osg::ViewportPtr SceneTest::makeViewport(int width, int height)
{
    osg::ViewportPtr const viewport = hold(osg::create<osg::Viewport>());
    viewport->pixelWidth = width;
    viewport->pixelHeight = height;
    return viewport;
}

osg::OverlayPtr SceneTest::makeText(std::string const& text)
{
    osg::OverlayPtr const overlay = makeOverlay();
    overlay->text = text;
    overlay->font = "DejaVu Sans";
    return overlay;
}

osg::OverlayPtr SceneTest::makePicture(osg::ImagePtr const& image)
{
    osg::OverlayPtr const overlay = makeOverlay();
    overlay->contentType = osg::Overlay::ContentImage;
    osg::setRefdCP(overlay->image, image);
    return overlay;
}

osg::ImagePtr SceneTest::makeImage(int width, int height, std::array<int, 4> pixel)
{
    osg::ImagePtr const image = hold(osg::create<osg::Image>());
    image->set(osg::Image::FormatRGBA, width, height, 1, 1, 1, 0.0, nullptr, osg::Image::TypeUInt8, true, 1);
    for (std::size_t i = 0; i < image->pixels.size(); ++i)
        image->pixels[i] = osg::UInt8(pixel[i % 4]);
    return image;
}

osg::OverlayPtr overlayOf(osg::NodePtr const& node)
{
    return osg::dynamicCast<osg::Overlay>(node->core);
}

osg::TextureChunkPtr textureOf(osg::OverlayPtr const& overlay)
{
    auto const material = osg::dynamicCast<osg::ChunkMaterial>(overlay->foreground->material);
    return osg::dynamicCast<osg::TextureChunk>(material->chunks.at(0));
}

osg::ImagePtr shownImage(osg::OverlayPtr const& overlay)
{
    return textureOf(overlay)->image;
}

std::array<int, 4> pixelAt(osg::ImagePtr const& image, int column, int row)
{
    osg::UInt8 const* const pixel =
        image->pixelBuffer() + (std::size_t(row) * std::size_t(image->width) + std::size_t(column)) * 4;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

std::string corners(osg::OverlayPtr const& overlay)
{
    std::ostringstream text;
    text.precision(std::numeric_limits<float>::max_digits10);
    for (osg::Pnt2f const& corner : overlay->foreground->positions)
        text << (text.tellp() > 0 ? " " : "") << '(' << corner.x << ", " << corner.y << ')';
    return text.str();
}
