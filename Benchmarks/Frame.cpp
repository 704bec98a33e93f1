// What operations on many overlays cost, an overlay, with caches as warm as they get: nothing happens in between.
#include "Allocations.h"
#include "Benchmark.h"
#include "OSGMaterialPool.h"
#include "ztImage.h"
#include "ztOpenSGUtils.h"
#include "ztOverlayUtils.h"

#include <memory>

namespace ztBenchmarks
{

namespace
{

using osg::NodePtr;
using osg::OverlayPtr;

/// A scene of visible overlays, clean and placed, that is the current one, with a viewport whose list holds as many
/// other entries.
struct Scene
{
    explicit Scene(std::size_t overlays, NodePtr const& first = osg::NullFC)
    {
        NodePtr const poolNode = osg::create<osg::Node>(), top = osg::create<osg::Node>();
        if (first != osg::NullFC)
            top->addChild(first);
        top->addChild(poolNode);
        poolNode->setCore(osg::create<osg::MaterialPool>());
        ztOpenSGUtils::setRoot(top);
        root = ztOverlays::getOverlayPoolRoot();
        osg::addRef(viewport);
        viewport->pixelWidth = 1920;
        viewport->pixelHeight = 1080;
        append(overlays);
    }

    Scene(Scene const&) = delete;

    ~Scene()
    {
        osg::subRef(viewport);
        ztOpenSGUtils::setRoot(osg::NullFC);
    }

    void append(std::size_t overlays)
    {
        for (std::size_t i = 0; i < overlays; ++i)
        {
            OverlayPtr const overlay = overlayOf(ztOverlays::createOverlay(root));
            overlay->dirty = false;
            overlay->anchor = {0.5f, float(i) / float(overlays)};
            viewport->foregrounds.push_back(viewport->foregrounds.empty() ? overlay->foreground
                                                                          : viewport->foregrounds.front());
        }
        ztOverlays::updateAllOverlays(viewport);
    }

    static OverlayPtr overlayOf(NodePtr const& node) { return osg::dynamicCast<osg::Overlay>(node->core); }

    osg::ViewportPtr viewport = osg::create<osg::Viewport>();
    NodePtr root;
    /// What a loop has counted.
    std::size_t counted = 0;
};

using Work = std::function<void(Scene&)>;

/// The sample of some work on a scene, with what one run allocates for an overlay.
Sample sampleOf(Scene& scene, Work const& work, double overlays)
{
    Sample sample = timed([&] { work(scene); }, overlays);
    sample.facts["allocations"] = allocationsOf([&] { work(scene); }).count / overlays;
    return sample;
}

/// A case on a scene that the work leaves as it was.
Case repeated(std::string const& name, std::size_t overlays, Work const& ours, std::string const& peerName = {},
              Work const& peer = {})
{
    return {name + ", " + std::to_string(overlays), [=] {
                auto const scene = std::make_shared<Scene>(overlays);
                auto const contender = [=](std::string const& who, Work const& work) {
                    return Contender{who, [=] { return sampleOf(*scene, work, double(overlays)); }};
                };
                Contenders contenders{contender("ours", ours)};
                if (peer)
                    contenders.push_back(contender(peerName, peer));
                return contenders;
            }};
}

/// A case on a scene that is new for each measurement.
Case once(std::string const& name, std::size_t overlays, Work const& prepare, Work const& work)
{
    auto const measure = [=] {
        Scene scene(overlays);
        prepare(scene);
        Sample sample;
        Allocations const made = allocationsOf([&] { sample = timedOnce([&] { work(scene); }, double(overlays)); });
        sample.facts["allocations"] = made.count / double(overlays);
        sample.facts["bytes"] = made.bytes / double(overlays);
        return sample;
    };
    return {name + ", " + std::to_string(overlays), [=] { return Contenders{{"ours", measure}}; }};
}

/// Reads what an update of an overlay has to read, and asks nothing about types.
bool isPlaced(osg::Node const& node)
{
    auto const& overlay = static_cast<osg::Overlay const&>(*node.core);
    osg::PolygonForeground2 const& foreground = *overlay.foreground;
    auto const& material = static_cast<osg::ChunkMaterial const&>(*foreground.material);
    osg::Image const* const image = static_cast<osg::TextureChunk const&>(*material.chunks.front()).image.get();
    float const x = overlay.anchor.x * float(1920 - image->width) + overlay.offset.x;
    float const y = overlay.anchor.y * float(1080 - image->height) + overlay.offset.y;
    return !overlay.dirty && overlay.sizeMode == 0 && overlay.image.get() != image && foreground.positions[0].x <= x &&
           foreground.positions[2].y >= y && node.children.empty();
}

void readAll(Scene& scene)
{
    scene.counted = 0;
    for (NodePtr const& node : scene.root->children)
        scene.counted += isPlaced(*node);
}

void countShown(Scene& scene)
{
    scene.counted = 0;
    for (NodePtr const& node : scene.root->children)
        scene.counted +=
            node->travMask == osg::Node::AllTravMask && node->core->getRefCount() > 0 && node->children.empty();
}

void visit(Scene& scene)
{
    scene.counted = 0;
    ztOverlays::traverseVisibleOverlays([&scene](OverlayPtr&) { ++scene.counted; });
}

void getAll(Scene&)
{
    static std::vector<OverlayPtr> overlays;
    overlays.clear();
    ztOverlays::getAllVisibleOverlays(overlays);
}

void addAndRemove(Scene& scene)
{
    ztOverlays::addOverlays(scene.viewport);
    ztOverlays::removeOverlays(scene.viewport);
}

void shareAPicture(Scene& scene)
{
    osg::ImagePtr const picture = ztImage::create(4, 4);
    for (NodePtr const& node : scene.root->children)
    {
        OverlayPtr const overlay = Scene::overlayOf(node);
        overlay->contentType = osg::Overlay::ContentImage;
        osg::setRefdCP(overlay->image, picture);
    }
    ztOverlays::updateAllOverlays(scene.viewport);
}

void shareACore(Scene& scene)
{
    for (NodePtr const& node : scene.root->children)
        node->setCore(scene.root->children.front()->core);
}

void dropAll(Scene&)
{
    ztOpenSGUtils::setRoot(osg::NullFC);
}

void dropFromBack(Scene& scene)
{
    while (!scene.root->children.empty())
        scene.root->subChild(NodePtr(scene.root->children.back()));
}

void dropFromFront(Scene& scene)
{
    while (!scene.root->children.empty())
        scene.root->subChild(NodePtr(scene.root->children.front()));
}

/// Looks the pool root up that comes behind a number of nodes in a walk.
Case poolLookup(std::size_t nodes)
{
    return {"pool look-up behind nodes, " + std::to_string(nodes), [nodes] {
                NodePtr const group = osg::create<osg::Node>();
                for (std::size_t i = 0; i < nodes; ++i)
                    group->addChild(osg::create<osg::Node>());
                auto const scene = std::make_shared<Scene>(0, group);
                auto const walk = [] {
                    osg::traverse(ztOpenSGUtils::getRoot(), [](NodePtr const& node) {
                        bool const isPool = osg::dynamicCast<osg::MaterialPool>(node->core) != osg::NullFC;
                        return isPool ? osg::Action::Quit : osg::Action::Continue;
                    });
                };
                return Contenders{{"ours", [scene] { return timed([] { ztOverlays::getOverlayPoolRoot(); }); }},
                                  {"a walk", [scene, walk] { return timed(walk); }}};
            }};
}

} // namespace

Cases frameCases()
{
    Cases cases;
    for (std::size_t const n : {100u, 1000u, 10000u, 100000u, 1000000u})
    {
        cases.push_back(repeated(
            "quiet update", n, [](Scene& scene) { ztOverlays::updateAllOverlays(scene.viewport); }, "bare reads",
            readAll));
        cases.push_back(repeated("visible walk", n, visit, "bare loop", countShown));
        cases.push_back(repeated("list of the visible", n, getAll));
        cases.push_back(repeated("add and remove", n, addAndRemove));
        cases.push_back(repeated("find an unknown name", n, [](Scene&) { ztOverlays::findOverlay("unknown"); }));
    }
    for (std::size_t const n : {1000u, 100000u})
    {
        auto const nothing = [](Scene&) {};
        cases.push_back(once("create", n, dropFromBack, [n](Scene& scene) {
            for (std::size_t i = 0; i < n; ++i)
                ztOverlays::createOverlay(scene.root);
        }));
        cases.push_back(once("duplicate", n, nothing, [n](Scene& scene) {
            OverlayPtr const source = Scene::overlayOf(scene.root->children.front());
            for (std::size_t i = 0; i < n; ++i)
                ztOverlays::duplicateOverlay(scene.root, source);
        }));
        cases.push_back(once("destroy", n, nothing, dropAll));
        cases.push_back(once("destroy one by one, last first", n, nothing, dropFromBack));
        cases.push_back(once("destroy one by one, first first", n, nothing, dropFromFront));
        cases.push_back(once("destroy sharing a picture", n, shareAPicture, dropAll));
        cases.push_back(once("destroy sharing a core", n, shareACore, dropAll));
    }
    for (std::size_t const n : {1u, 1000000u})
        cases.push_back(poolLookup(n));
    return cases;
}

} // namespace ztBenchmarks
