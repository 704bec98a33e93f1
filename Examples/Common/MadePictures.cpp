#include "MadePictures.h"

#include "OverlayNodes.h"
#include "ztNumeric.h"
#include "ztOverlayUtils.h"
#include "ztPlatform.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace ztExamples
{

namespace
{

/// Beyond any frame; sums of some such numbers are still ints.
constexpr int farAway = 1 << 24;

/// \param round  a function to whole numbers
QPoint toPixels(osg::Vec2f const& vector, double (*round)(double))
{
    auto const whole = [round](double pixels) {
        return int(std::clamp(round(pixels), double(-farAway), double(farAway)));
    };
    return {whole(double(vector.x) * dpiScale().width()), whole(double(vector.y) * dpiScale().height())};
}

QColor toColor(osg::Color4f const& color)
{
    auto const channel = [](float component) { return ztNumeric::truncate(component * 255.0f); };
    return QColor(channel(color.r), channel(color.g), channel(color.b), channel(color.a));
}

/// As the library draws it.
QColor backgroundOf(OverlayEntry const& entry)
{
    osg::Color3f const color = entry.backgroundColor.value_or(osg::Color3f{0.0f, 0.0f, 0.0f});
    osg::Color3f const clear = entry.backgroundTransparency.value_or(osg::Color3f{1.0f, 1.0f, 1.0f});
    return toColor({color.r, color.g, color.b, 1.0f - (0.2126f * clear.r + 0.7152f * clear.g + 0.0722f * clear.b)});
}

/// Its pixels in place, bottom row first.
QImage pixelsOf(osg::Image& image)
{
    return {image.pixelBuffer(), image.width, image.height, QImage::Format_RGBA8888_Premultiplied};
}

/// \param pixels  in the layout of an osg::Image
void show(osg::OverlayPtr const& overlay, QImage const& pixels)
{
    osg::setRefdCP(overlay->image, createImage(pixels));
    osg::markChanged(overlay, osg::Overlay::ImageFieldMask);
}

/// So that the library makes whole numbers of what it is told: sizes are a little larger, corners in a pixel's middle.
void place(osg::OverlayPtr const& overlay, QRect const& rectangle)
{
    constexpr double rounding = 1.0 + 1.0 / (1 << 20);
    float const size = float(rectangle.height() * rounding / dpiScale().height());
    osg::Vec2f const offset = {float((rectangle.x() + 0.5) / dpiScale().width()),
                               float((rectangle.y() + 0.5) / dpiScale().height())};
    if (overlay->size == size && overlay->offset.x == offset.x && overlay->offset.y == offset.y)
        return;
    overlay->size = size;
    overlay->offset = offset;
    osg::markChanged(overlay, osg::Overlay::SizeFieldMask | osg::Overlay::OffsetFieldMask);
}

bool shows(osg::Overlay const& overlay, QSize const& size)
{
    return overlay.image != osg::NullFC && QSize(overlay.image->width, overlay.image->height) == size;
}

/// What there is of a rectangle in a frame; a pixel beside the frame if there is nothing.
QRect within(QSize const& frame, QRect const& rectangle)
{
    QRect const part = rectangle & QRect(QPoint(0, 0), frame);
    return part.isEmpty() ? QRect(frame.width(), frame.height(), 1, 1) : part;
}

void fill(osg::OverlayPtr const& overlay, QRect const& rectangle, QColor const& color, QSize const& target,
          PixelLimit& limit)
{
    QRect const shown = within(target, rectangle);
    limit.add(shown.width(), shown.height());
    if (!shows(*overlay, shown.size()))
    {
        QImage pixels = allocated(QImage(shown.size(), QImage::Format_RGBA8888_Premultiplied));
        pixels.fill(color);
        show(overlay, pixels);
    }
    place(overlay, shown);
    ztOverlays::updateOverlay(overlay, target.width(), target.height());
}

/// A part of a text in another colour.
QImage paintShadow(osg::Image& text, QRect const& part, QColor const& color)
{
    QImage shadow = allocated(QImage(part.size(), QImage::Format_RGBA8888_Premultiplied));
    shadow.fill(color);
    QPainter painter(&shadow);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.drawImage(QPoint(0, 0), pixelsOf(text), part);
    return shadow;
}

/// Of a text in its frame, y up; none where there is nothing to show.
QRect areaOf(osg::Overlay const& text, osg::Image const& image)
{
    auto const whole = [](float number) { return std::clamp(ztNumeric::truncate(number), -farAway, farAway); };
    osg::Pnt2f const corner = text.foreground->positions.front();
    return text.dirty ? QRect() : QRect(whole(corner.x), whole(corner.y), image.width, image.height);
}

} // namespace

QSizeF dpiScale()
{
    return {ztPlatform::getDpiScaleX(), ztPlatform::getDpiScaleY()};
}

QSizeF shownSize(osg::Int32 sizeMode, float size, QSizeF const& picture, int targetHeight)
{
    double const scale = sizeMode == osg::Overlay::SizeAbsolute ? dpiScale().height() : double(targetHeight);
    float const height = float(double(size) * scale), aspect = float(picture.width()) / float(picture.height());
    return {double(aspect * height), double(height)};
}

osg::ImagePtr shownImage(osg::Overlay const& overlay)
{
    auto const material = osg::dynamicCast<osg::ChunkMaterial>(overlay.foreground->material);
    return osg::dynamicCast<osg::TextureChunk>(material->chunks.front())->image;
}

void layOutGuide(osg::NodePtr const& node, Guide const& guide, QSize const& target, PixelLimit& limit)
{
    QColor const color = toColor(colorOf(guide));
    std::vector<QRect> const rectangles = layOut(guide, target, dpiScale());
    for (std::size_t i = 0; i < rectangles.size(); ++i)
        fill(overlayOf(i == 0 ? node : node->children[i - 1]), rectangles[i], color, target, limit);
}

void layOutBeneath(osg::NodePtr const& node, OverlayEntry const& entry, QSize const& target, PixelLimit& limit,
                   ShadowState& painted)
{
    osg::OverlayPtr const text = contentOf(node);
    osg::ImagePtr const image = shownImage(*text);
    QRect const area = areaOf(*text, *image);
    QPoint const padding = toPixels(entry.padding.value_or(osg::Vec2f{0.0f, 0.0f}), std::ceil);
    QRect const padded = area.isNull() ? area : area.adjusted(-padding.x(), -padding.y(), padding.x(), padding.y());
    fill(overlayOf(node), padded, backgroundOf(entry), target, limit);
    if (!entry.shadow)
        return;
    osg::OverlayPtr const shadow = overlayOf(node->children.back());
    QRect const whole = area.translated(toPixels(entry.shadow->offset, std::round)), shown = within(target, whole);
    limit.add(shown.width(), shown.height());
    ShadowState const state{text->text, shown.translated(-whole.topLeft()), target, dpiScale().height()};
    if (state != painted)
        show(shadow, paintShadow(*image, std::get<QRect>(state), toColor(entry.shadow->color)));
    painted = state;
    place(shadow, shown);
    ztOverlays::updateOverlay(shadow, target.width(), target.height());
}

void drawShapes(osg::OverlayPtr const& overlay, OverlayEntry const& entry, QSize const& target, PixelLimit& limit)
{
    QSizeF const shown = shownSize(entry.sizeMode.value_or(osg::Overlay::SizeAbsolute), entry.size.value_or(12.0f),
                                   entry.vectorPicture->size(), target.height());
    limit.add(std::max(shown.width(), 1.0), std::max(shown.height(), 1.0));
    QSize const size(std::max(int(shown.width()), 1), std::max(int(shown.height()), 1));
    if (!shows(*overlay, size))
        show(overlay, toPixels(entry.vectorPicture->draw(size)));
    float const height = float(size.height() / dpiScale().height());
    if (overlay->sizeMode == osg::Overlay::SizeAbsolute && overlay->size == height)
        return;
    overlay->sizeMode = osg::Overlay::SizeAbsolute;
    overlay->size = height;
    osg::markChanged(overlay, osg::Overlay::SizeModeFieldMask | osg::Overlay::SizeFieldMask);
}

} // namespace ztExamples
