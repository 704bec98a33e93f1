#include "Scene.h"

#include "OSGMaterialPool.h"
#include "OverlayNodes.h"
#include "Picture.h"
#include "ztOpenSGUtils.h"
#include "ztOverlayUtils.h"

namespace ztExamples
{

namespace
{

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
           entry.text.value_or("").isEmpty();
}

} // namespace

Scene::Scene(std::vector<OverlayEntry> const& entries)
{
    ztOpenSGUtils::setRoot(createRoot());
    osg::NodePtr const poolRoot = ztOverlays::getOverlayPoolRoot();
    for (OverlayEntry entry : entries)
    {
        if (hasNothingToShow(entry))
            entry.visible = false;
        osg::NodePtr const node = createOverlayNode(poolRoot, entry);
        if (entry.text)
            _labels.push_back({osg::dynamicCast<osg::Overlay>(node->core), *entry.text});
    }
}

Scene::~Scene()
{
    ztOpenSGUtils::setRoot(osg::NullFC);
}

void Scene::setTexts(Placeholders const& values)
{
    for (auto const& [overlay, text] : _labels)
        setText(overlay, expand(text, values)->toStdString());
}

void stamp(QImage& pixels, osg::ViewportPtr const& viewport)
{
    std::vector<osg::OverlayPtr> visible;
    ztOverlays::getAllVisibleOverlays(visible);
    osg::ImagePtr const image = createImageOver(pixels);
    osg::addRef(image);
    ztOverlays::blendOverlaysOntoImage(visible, image, viewport);
    osg::subRef(image);
}

} // namespace ztExamples
