// Text and font of any bytes, colours and sizes of any bits: a picture of the right size, or a blank one.
#include "FuzzSupport.h"

#include "ztNumeric.h"
#include "ztOverlayUtils.h"
#include "ztPlatform.h"

#include <QString>

using namespace ztFuzz;

namespace
{

/// The image that it shows after it was rendered.
osg::Image const& render(osg::OverlayPtr const& overlay, int height)
{
    ztOverlays::updateOverlayImage(overlay, 100, height);
    auto const material = osg::dynamicCast<osg::ChunkMaterial>(overlay->foreground->material);
    osg::Image const& image = *osg::dynamicCast<osg::TextureChunk>(material->chunks.front())->image;
    require(image.pixels.size() == std::size_t(image.width * image.height * 4), "the picture has its pixels");
    for (std::size_t i = 0; i < image.pixels.size(); ++i)
        require(image.pixels[i] <= image.pixels[i | 3], "the picture is premultiplied");
    return image;
}

void check(osg::OverlayPtr const& overlay, int height)
{
    QString const text = QString::fromUtf8(overlay->text.c_str());
    bool const isRelative = overlay->sizeMode != 0;
    int const pictureHeight = ztNumeric::truncate(float(height) * overlay->size), lines = int(text.count('\n')) + 1;
    int const points = isRelative ? ztNumeric::truncate(pictureHeight / ztPlatform::getDpiScaleY() / lines)
                                  : ztNumeric::truncate(overlay->size);
    if (points > 40 || (isRelative && pictureHeight > 400)) // more than there is time for
        return;
    bool const isBlank = points <= 0 || text.isEmpty();
    osg::Image const& image = render(overlay, height);
    require(overlay->dirty == isBlank, "what is drawn is clean");
    if (isBlank)
        return require(image.pixels == std::vector<osg::UInt8>(1024) && image.width == 16, "the picture is blank");
    if (isRelative)
        return require(image.pixels.empty() || image.height == pictureHeight, "the picture has its height");
    render(overlay, height); // again, as Qt may merge fonts when it first uses them
    int const width = image.width, before = image.height;
    overlay->text = overlay->text.c_str() + std::string("\n");
    render(overlay, height);
    require(width == 0 || (image.width == width && image.height > before), "an empty line makes a text higher");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(osg::UInt8 const* data, std::size_t size)
{
    Bytes bytes(data, size);
    ztPlatform::setDpiScale(1.0, 1.0 + bytes.below(4) / 2.0);
    osg::NodePtr const node = ztOverlays::createOverlay(osg::NullFC);
    auto const overlay = osg::dynamicCast<osg::Overlay>(node->core);
    int const height = bytes.integer();
    overlay->sizeMode = int(bytes.below(3));
    overlay->size = bytes.number();
    for (float* const component : {&overlay->textColor.r, &overlay->textColor.a, &overlay->backgroundColor.g,
                                   &overlay->backgroundTransparency.r, &overlay->backgroundTransparency.b})
        *component = bytes.flip() ? bytes.number() : *component;
    overlay->font = bytes.text(16);
    overlay->text = bytes.text(64);
    check(overlay, height);
    osg::subRef(node);
    requireNoContainers();
    return 0;
}
