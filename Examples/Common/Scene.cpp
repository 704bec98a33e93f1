#include "Scene.h"

#include "MadePictures.h"
#include "OSGMaterialPool.h"
#include "OSGRefPtr.h"
#include "OverlayNodes.h"
#include "Picture.h"
#include "ztOpenSGUtils.h"
#include "ztOverlayUtils.h"
#include "ztPlatform.h"

#include <QFontMetricsF>

#include <algorithm>
#include <stdexcept>

namespace ztExamples
{

namespace
{

constexpr qint64 libraryMaxPixels = 1 << 29;

osg::NodePtr createNode(osg::NodeCorePtr const& core)
{
    auto const node = osg::create<osg::Node>();
    node->setCore(core);
    return node;
}

/// A root with a material pool, which the pool of overlays needs.
osg::NodePtr createRoot()
{
    osg::NodePtr const root = createNode(osg::create<osg::Group>());
    root->addChild(createNode(osg::create<osg::MaterialPool>()));
    return root;
}

/// An empty text would be rendered anew, in vain, in each frame that shows it.
bool hasNothingToShow(OverlayEntry const& entry)
{
    return entry.contentType.value_or(osg::Overlay::ContentText) == osg::Overlay::ContentText &&
           entry.text.value_or(Template()).empty();
}

bool isText(osg::Overlay const& overlay)
{
    return overlay.contentType == osg::Overlay::ContentText;
}

[[noreturn]] void failToDraw(QSizeF const& size)
{
    QString const reason =
        QString("can't draw %1 by %2 pixels").arg(size.width(), 0, 'f', 0).arg(size.height(), 0, 'f', 0);
    throw std::runtime_error(reason.toStdString());
}

/// Of the font that a text is rendered with.
double pointSize(osg::Overlay const& text, int targetHeight)
{
    if (text.sizeMode == osg::Overlay::SizeAbsolute)
        return double(text.size);
    auto const lineCount = std::count(text.text.begin(), text.text.end(), '\n') + 1;
    return double(text.size) * targetHeight / ztPlatform::getDpiScaleY() / double(lineCount);
}

/// In pixels, without a rendering.
QSizeF measure(osg::Overlay const& text, double pointSize)
{
    int const measured = int(std::clamp(pointSize, 1.0, 100.0));
    QFont const font(QString::fromStdString(text.font), measured);
    return QFontMetricsF(font).size(0, QString::fromStdString(text.text)) * (pointSize / measured);
}

/// Qt paints no pixel beyond a distance, and the library leaves none of a rendering that is too large.
void requireRendering(osg::Overlay const& text, osg::Image const& image, int targetHeight)
{
    constexpr int most = 32767;
    constexpr int little = most / 8; // is scaled from no more than that
    double const points = pointSize(text, targetHeight);
    bool const isLittle = points < little && image.width < little && image.height < little;
    if (text.dirty || (isLittle && image.width > 0))
        return;
    QSizeF const size = measure(text, points);
    bool const isLost = image.width == 0 && size.width() >= 2.0; // below, nothing is to be seen
    if (isLost || std::max(size.width(), size.height()) > most)
        failToDraw(size);
}

/// Before it is resampled to the size that it is stamped at.
void requireSize(osg::Overlay const& picture, int targetHeight, qint64 maxPixels)
{
    constexpr double maxSide = 1 << 24; // the library's
    QSizeF const size =
        shownSize(picture.sizeMode, picture.size, QSizeF(picture.image->width, picture.image->height), targetHeight);
    PixelLimit(maxPixels).add(size.width(), size.height());
    if (std::max(size.width(), size.height()) > maxSide)
        failToDraw(size);
}

void layOutText(osg::OverlayPtr const& overlay, QSize const& target, PixelLimit& limit)
{
    ztOverlays::updateOverlay(overlay, target.width(), target.height());
    osg::ImagePtr const image = shownImage(*overlay);
    requireRendering(*overlay, *image, target.height());
    limit.add(image->width, image->height);
}

/// Puts a place in front of what a function complains about.
template <class Function>
void at(QString const& place, Function const& function)
{
    try
    {
        function();
    }
    catch (std::runtime_error const& error)
    {
        throw std::runtime_error(place.toStdString() + ": " + error.what());
    }
}

std::string expandText(Template const& text, Placeholders const& values)
{
    QString const expanded = expand(text, values);
    if (expanded.size() > maxTextLength)
        throw std::runtime_error("has " + std::to_string(expanded.size()) + " characters in place of " +
                                 std::to_string(maxTextLength) + " at most");
    return expanded.toStdString();
}

} // namespace

Scene::Scene(std::vector<OverlayEntry> const& entries, qint64 maxPixels)
    : _maxPixels(maxPixels > 0 ? std::min(maxPixels, libraryMaxPixels) : libraryMaxPixels)
{
    ztOpenSGUtils::setRoot(createRoot());
    osg::NodePtr const poolRoot = ztOverlays::getOverlayPoolRoot();
    for (OverlayEntry entry : entries)
    {
        if (hasNothingToShow(entry))
            entry.visible = false;
        _items.push_back({createOverlayNode(poolRoot, entry), entry, {}});
    }
}

Scene::~Scene()
{
    ztOpenSGUtils::setRoot(osg::NullFC);
}

void Scene::setValues(Placeholders const& values)
{
    PixelLimit limit(_maxPixels);
    for (Item& item : _items)
    {
        OverlayEntry& entry = item.entry;
        if (entry.text)
            at(entry.place + ".text", [&] { setText(contentOf(item.node), expandText(*entry.text, values)); });
        if (entry.imagePath)
            at(entry.place + ".image", [&] {
                if (readPicture(entry, values, limit))
                    setPicture(contentOf(item.node), entry);
            });
    }
}

void Scene::layOut(QSize const& target)
{
    PixelLimit limit(_maxPixels);
    for (Item& item : _items)
        at(item.entry.place, [&] { layOut(item, target, limit); });
}

void Scene::layOut(Item& item, QSize const& target, PixelLimit& limit)
{
    osg::OverlayPtr const overlay = contentOf(item.node);
    if (item.entry.contentType == contentGuide)
        return layOutGuide(item.node, item.entry.guide, target, limit);
    if (isText(*overlay))
    {
        layOutText(overlay, target, limit);
        if (!item.node->children.empty())
            layOutBeneath(item.node, item.entry, target, limit, item.shadow);
        return;
    }
    if (item.entry.vectorPicture)
        drawShapes(overlay, item.entry, target, limit);
    ztOverlays::updateOverlay(overlay, target.width(), target.height());
}

void Scene::stamp(QImage& pixels, osg::ViewportPtr const& viewport)
{
    PixelLimit limit(_maxPixels);
    for (Item& item : _items)
        if (item.node->travMask == osg::Node::AllTravMask)
            at(item.entry.place, [&] {
                if (item.entry.image && !isText(*overlayOf(item.node)))
                    requireSize(*overlayOf(item.node), pixels.height(), _maxPixels);
                layOut(item, pixels.size(), limit);
            });
    std::vector<osg::OverlayPtr> visible;
    ztOverlays::getAllVisibleOverlays(visible);
    osg::RefPtr<osg::Image> const image(createImageOver(pixels));
    ztOverlays::blendOverlaysOntoImage(visible, image, viewport);
}

void Scene::drawTile(osg::DrawActionBase& action, QSize const& picture, QRect const& tile)
{
    auto const camera = osg::create<osg::TileCameraDecorator>();
    camera->fullWidth = picture.width();
    camera->fullHeight = picture.height();
    camera->left = float(tile.x()) / float(picture.width());
    camera->right = float(tile.x() + tile.width()) / float(picture.width());
    camera->bottom = float(tile.y()) / float(picture.height());
    camera->top = float(tile.y() + tile.height()) / float(picture.height());

    osg::RefPtr<osg::Viewport> const viewport(osg::create<osg::Viewport>());
    osg::setRefdCP(viewport->camera, camera);
    viewport->pixelWidth = tile.width();
    viewport->pixelHeight = tile.height();
    layOut(picture);
    osg::DrawFrame const frame(action);
    ztOverlays::drawOverlays(&action, viewport.get());
}

} // namespace ztExamples
