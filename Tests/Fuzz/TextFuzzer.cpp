// Text and font of any bytes, colours and sizes of any bits: a picture of the right size, or a blank one.
#include "FuzzSupport.h"
#include "ztOverlayUtils.h"
#include "ztPlatform.h"

using namespace ztFuzz;

namespace
{

bool isPremultiplied(std::vector<osg::UInt8> const& pixels)
{
    bool result = true;
    for (std::size_t i = 0; i < pixels.size(); ++i)
        result = result && pixels[i] <= pixels[i | 3];
    return result;
}

void check(osg::OverlayPtr const& overlay, int height)
{
    TextSize const size(*overlay, height);
    if (size.isLarge())
        return;
    ztOverlays::updateOverlayImage(overlay, 100, height);
    osg::Image const& image = *slotOf(*overlay)->image;
    std::size_t const bytes = std::size_t(image.width) * std::size_t(image.height) * 4;
    require(overlay->dirty == (size.points <= 0), "what is drawn is clean");
    require(image.pixels.size() == bytes && isPremultiplied(image.pixels), "the picture has premultiplied pixels");
    if (overlay->dirty)
        require(image.width == 16 && image.pixels == std::vector<osg::UInt8>(1024), "the picture is blank");
    else if (size.pixels != 0)
        require(image.height == size.pixels || bytes == 0, "the picture has the relative height");
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
    if (bytes.flip())
        overlay->textColor = {bytes.number(), bytes.number(), bytes.number(), bytes.number()};
    if (bytes.flip())
        overlay->backgroundColor = {bytes.number(), bytes.number(), bytes.number()};
    if (bytes.flip())
        overlay->backgroundTransparency = {bytes.number(), bytes.number(), bytes.number()};
    overlay->font = bytes.text(16);
    overlay->text = bytes.text(64);
    check(overlay, height);
    osg::subRef(node);
    requireNoContainers();
    return 0;
}
