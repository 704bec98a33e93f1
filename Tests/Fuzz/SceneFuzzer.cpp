// Scenes of any shape with settings of any bits. After each operation every container is counted and linked as its
// fields say, what changed is marked, and searches find what a walk does.
#include "FuzzSupport.h"

#include "OSGChangeList.h"
#include "OSGDrawAction.h"
#include "OSGMaterialPool.h"
#include "OSGRefPtr.h"
#include "OSGThread.h"
#include "ztImage.h"
#include "ztMaterials.h"
#include "ztNodeUtils.h"
#include "ztOpenSGUtils.h"
#include "ztOverlayUtils.h"
#include "ztPlatform.h"

#include <array>
#include <cmath>
#include <list>
#include <map>
#include <memory>
#include <set>

using namespace ztFuzz;
using ztOpenSGUtils::RootScope;

namespace
{

using Container = osg::FieldContainer*;
using Nodes = std::vector<osg::NodePtr>;
using Fields = std::vector<osg::FieldContainerPtr>;

/// Visits a container if it is one of a type.
template <class T, class Visit>
void as(osg::FieldContainerPtr const& container, Visit const& visit)
{
    if (auto const typed = osg::dynamicCast<T>(container); typed != osg::NullFC)
        visit(*typed);
}

/// Those at and below a node, in the order of a walk.
Nodes nodesOf(osg::NodePtr const& top)
{
    Nodes nodes;
    if (top != osg::NullFC)
        nodes.push_back(top);
    for (std::size_t i = 0; top != osg::NullFC && i < top->children.size(); ++i)
        for (osg::NodePtr const& node : nodesOf(top->children[i]))
            nodes.push_back(node);
    return nodes;
}

osg::NodePtr firstPool(osg::NodePtr const& top, bool recursive)
{
    for (osg::NodePtr const& node : nodesOf(top))
        if (osg::dynamicCast<osg::MaterialPool>(node->core) != osg::NullFC)
            return node;
        else if (!recursive)
            break;
    return osg::NullFC;
}

/// What the fields of a container count.
Fields referencesOf(osg::FieldContainerPtr const& container)
{
    Fields fields;
    as<osg::Node>(container, [&](osg::Node& node) {
        fields.assign(node.children.begin(), node.children.end());
        fields.insert(fields.end(), {node.core, node.findAttachment(osg::Name::getClassType().getGroupId())});
    });
    as<osg::MaterialPool>(container, [&](osg::MaterialPool& pool) { fields = {pool.overlayRoot}; });
    as<osg::Overlay>(container, [&](osg::Overlay& overlay) { fields = {overlay.image, overlay.foreground}; });
    as<osg::PolygonForeground2>(container, [&](osg::PolygonForeground2& shown) { fields = {shown.material}; });
    as<osg::ChunkMaterial>(container, [&](osg::ChunkMaterial& material) {
        fields.assign(material.chunks.begin(), material.chunks.end());
    });
    as<osg::TextureChunk>(container, [&](osg::TextureChunk& texture) { fields = {texture.image}; });
    as<osg::Viewport>(container, [&](osg::Viewport& viewport) { fields = {viewport.camera}; });
    fields.erase(std::remove(fields.begin(), fields.end(), osg::NullFC), fields.end());
    return fields;
}

/// The containers that one knows to use it.
Fields usersOf(osg::FieldContainerPtr const& container)
{
    Fields users;
    as<osg::NodeCore>(container,
                      [&](osg::NodeCore& core) { users.assign(core.getParents().begin(), core.getParents().end()); });
    as<osg::Image>(container, [&](osg::Image& image) { users.assign(image.parents.begin(), image.parents.end()); });
    as<osg::Node>(container, [&](osg::Node& node) { users.assign(node.parent != osg::NullFC, node.parent); });
    return users;
}

/// What the library writes of a container, as bytes.
std::string stateOf(osg::FieldContainerPtr const& container)
{
    std::string state;
    auto const add = [&state](auto const* values, std::size_t count) {
        state.append(reinterpret_cast<char const*>(values), count * sizeof *values);
    };
    as<osg::Overlay>(container, [&](osg::Overlay& overlay) { add(&overlay.dirty, 1); });
    as<osg::Image>(container, [&](osg::Image& image) {
        add(image.pixelBuffer(), std::size_t(image.width) * std::size_t(image.height) * 4);
    });
    as<osg::PolygonForeground2>(container, [&](osg::PolygonForeground2& shown) { add(shown.positions.data(), 4); });
    as<osg::Node>(container, [&](osg::Node& node) {
        for (osg::NodePtr const& child : node.children)
            state += std::to_string(std::uintptr_t(child.get())) + ' ';
    });
    return state;
}

class Scenes : public osg::DrawActionBase
{
  public:
    explicit Scenes(Bytes input) : bytes(input) {}

    void run()
    {
        for (begin(); !bytes.isEmpty(); checkLaws())
        {
            unsigned const operation = bytes.below(std::size(operations));
            if (operation < numDestroying)
                detachAll();
            if (operation >= firstOfLibrary)
                for (osg::FieldContainerPtr const& container : living)
                    states[container.getContainer()] = stateOf(container);
            (this->*operations[operation])();
        }
        end();
    }

  private:
    template <class T>
    std::vector<osg::FCPtr<T>> all() const
    {
        std::vector<osg::FCPtr<T>> found;
        for (osg::FieldContainerPtr const& each : living)
            if (auto const wanted = osg::dynamicCast<T>(each); wanted != osg::NullFC)
                found.push_back(wanted);
        return found;
    }

    /// Seldom null.
    template <class T>
    osg::FCPtr<T> any()
    {
        auto const list = all<T>();
        std::size_t const choice = bytes.below(unsigned(list.size() + 1));
        return choice < list.size() ? list[choice] : osg::FCPtr<T>();
    }

    /// Seldom a new one.
    template <class T>
    osg::FCPtr<T> some()
    {
        auto const found = any<T>();
        return found != osg::NullFC ? found : hold(osg::create<T>());
    }

    template <class Pointer>
    Pointer hold(Pointer const& container)
    {
        osg::addRef(container);
        held.push_back(container);
        living.push_back(container);
        return container;
    }

    osg::NodePtr anyParent() { return bytes.flip() ? ztOverlays::getOverlayPoolRoot() : any<osg::Node>(); }

    /// As a host does before it lets go of foregrounds.
    void detachAll()
    {
        for (osg::ViewportPtr const& viewport : all<osg::Viewport>())
            for (osg::ForegroundPtr const& foreground : all<osg::Foreground>())
                viewport->subForeground(foreground);
    }

    /// Makes overlays small that would take much time on a target of a height.
    void tame(int height)
    {
        for (osg::OverlayPtr const& overlay : all<osg::Overlay>())
            if (!(std::abs(double(overlay->size) * (overlay->sizeMode == 0 ? 2.0 : height)) < 50.0))
                overlay->size = 0;
    }

    void make()
    {
        osg::FieldContainerType const* const types[] = {
            &osg::Group::getClassType(),        &osg::Switch::getClassType(),
            &osg::MaterialPool::getClassType(), &osg::Overlay::getClassType(),
            &osg::Node::getClassType(),         &osg::TextureChunk::getClassType(),
            &osg::Viewport::getClassType(),     &osg::TileCameraDecorator::getClassType()};
        auto const made = hold(types[bytes.below(std::size(types))]->createContainer());
        if (auto const core = osg::dynamicCast<osg::NodeCore>(made); core != osg::NullFC)
            hold(osg::create<osg::Node>())->setCore(core);
    }

    void makeImage()
    {
        int const width = int(bytes.below(20)), height = int(bytes.below(20));
        auto& pixels = pictures.emplace_back(std::size_t(width * height * 4), bytes.bits<osg::UInt8>());
        for (std::size_t step = bytes.below(50) + 1, i = step; i < pixels.size(); i += step)
            pixels[i] = osg::UInt8(i * step);
        hold(bytes.below(4) ? ztImage::create(width, height, pixels.data())
                            : ztImage::createOver(width, height, pixels.data()));
    }

    void writeViewport()
    {
        osg::ViewportPtr const viewport = some<osg::Viewport>();
        viewport->pixelWidth = bytes.integer();
        viewport->pixelHeight = bytes.integer();
        auto const tile = any<osg::TileCameraDecorator>();
        as<osg::TileCameraDecorator>(tile, [&](osg::TileCameraDecorator& camera) {
            camera.fullWidth = bytes.integer();
            camera.fullHeight = bytes.integer();
        });
        osg::setRefdCP(viewport->camera, tile);
    }

    /// Pools stay, since they may hang below their own roots.
    void drop()
    {
        auto const gone = held.begin() + bytes.below(unsigned(held.size() + 1));
        if (gone == held.end() || osg::dynamicCast<osg::MaterialPool>(*gone) != osg::NullFC)
            return;
        osg::FieldContainerPtr const container = *gone;
        held.erase(gone);
        osg::subRef(container);
    }

    void setCore() { some<osg::Node>()->setCore(any<osg::NodeCore>()); }
    void addChild() { some<osg::Node>()->addChild(any<osg::Node>()); }
    void insertChild() { some<osg::Node>()->insertChild(bytes.below(5), any<osg::Node>()); }

    void addNull()
    {
        Nodes& children = some<osg::Node>()->children;
        children.insert(children.begin() + bytes.below(unsigned(children.size() + 1)), osg::NullFC);
    }

    void subChild()
    {
        osg::NodePtr const child = any<osg::Node>();
        osg::NodePtr const parent = child != osg::NullFC && bytes.below(8) ? child->parent : any<osg::Node>();
        if (parent == osg::NullFC || (isInWalk && std::find(held.begin(), held.end(), child) == held.end()))
            return;
        Nodes left = parent->children;
        left.erase(std::remove(left.begin(), left.end(), child), left.end());
        parent->subChild(child);
        require(child == osg::NullFC || parent->children == left, "the others keep their order");
    }

    void moveChild() { ztNodeUtils::moveChild(any<osg::Node>(), bytes.below(5), any<osg::Node>()); }

    void replaceChild()
    {
        osg::NodePtr const parent = any<osg::Node>(), old = any<osg::Node>(), child = any<osg::Node>();
        parent != osg::NullFC ? parent->replaceChild(old, child) : ztNodeUtils::replaceChild(old, child);
    }

    void rename()
    {
        ztNodeUtils::reverseChildOrder(any<osg::Node>());
        ztNodeUtils::rename(some<osg::Node>(), std::string(bytes.below(3), 'n'));
    }

    /// Its children say that another node is their parent.
    void copy()
    {
        osg::RefPtr<osg::Node> const copied(osg::dynamicCast<osg::Node>(some<osg::Node>()->shallowCopy()));
        Fields const fields = referencesOf(copied);
        std::for_each(fields.begin(), fields.end(), osg::addRef);
        osg::RefPtr<osg::Node> const above(osg::create<osg::Node>());
        above->addChild(copied);
        for (unsigned edit = 0; edit < 3; ++edit)
        {
            lookUpPool(above);
            lookUpPool(copied);
            if (edit == 1)
                copied->setCore(any<osg::NodeCore>());
            else if (!copied->children.empty())
                copied->subChild(osg::NodePtr(copied->children.back()));
        }
    }

    void setRoot()
    {
        roots.front() = any<osg::Node>();
        ztOpenSGUtils::setRoot(roots.front());
    }

    void changeScope()
    {
        if (scopes.size() < 3 && bytes.flip())
            scopes.push_back(std::make_unique<RootScope>(roots.emplace_back(any<osg::Node>())));
        else if (!scopes.empty())
        {
            scopes.pop_back();
            roots.pop_back();
        }
    }

    void writeNode()
    {
        osg::UInt32 const masks[] = {0xFFFFFFFF, 0xFFFFFFFF, 0, 0xFFFFFFFE, bytes.bits<osg::UInt32>()};
        some<osg::Node>()->travMask = masks[bytes.below(std::size(masks))];
        some<osg::Switch>()->choice = bytes.below(8) ? int(bytes.below(5)) - 2 : bytes.bits<int>();
    }

    void writeOverlay()
    {
        osg::OverlayPtr const overlay = some<osg::Overlay>();
        osg::Overlay& o = *overlay;
        float* const numbers[] = {&o.size,     &o.anchor.x, &o.anchor.y,    &o.offset.x,
                                  &o.offset.y, &o.size,     &o.textColor.r, &o.backgroundTransparency.g};
        *numbers[bytes.below(std::size(numbers))] = bytes.number();
        if (bytes.flip())
            o.text = std::array{"", "a", "two\nlines", "\n"}[bytes.below(4)] + std::string(bytes.below(2), '\0') + "b";
        if (bytes.flip())
            (bytes.flip() ? o.contentType : o.sizeMode) = bytes.below(8) ? int(bytes.below(3)) : bytes.bits<int>();
        if (bytes.below(4) == 0)
            o.dirty = bytes.flip();
        if (bytes.flip())
            osg::markChanged(overlay, osg::BitVector(1) << bytes.below(13));
    }

    void assign()
    {
        osg::OverlayPtr const overlay = some<osg::Overlay>();
        unsigned const field = bytes.below(8);
        if (field == 0)
            osg::setRefdCP(overlay->foreground, any<osg::PolygonForeground2>());
        else if (field == 1 && overlay->foreground != osg::NullFC)
            osg::setRefdCP(overlay->foreground->material, osg::create<osg::ChunkMaterial>());
        else if (field == 2)
            osg::setRefdCP(some<osg::MaterialPool>()->overlayRoot, osg::NodePtr());
        else if (field == 3)
            some<osg::MaterialPool>()->initOverlayRoot();
        else if (field == 4 && overlay->foreground != osg::NullFC)
            overlay->foreground->texCoords.clear();
        else if (field < 6)
            osg::setRefdCP(overlay->image, any<osg::Image>());
        else
            some<osg::TextureChunk>()->setImage(any<osg::Image>());
    }

    void setScale() { ztPlatform::setDpiScale(1.0 + bytes.below(3) / 2.0, 1.0 + bytes.below(3)); }

    void createOverlay() { hold(ztOverlays::createOverlay(anyParent())); }

    void duplicateOverlay()
    {
        osg::NodePtr const parent = anyParent();
        hold(ztOverlays::duplicateOverlay(parent, some<osg::Overlay>()));
    }

    void update()
    {
        osg::OverlayPtr const overlay = any<osg::Overlay>();
        osg::NodePtr const node = any<osg::Node>();
        osg::ViewportPtr const viewport = any<osg::Viewport>();
        int width, height, layoutHeight;
        ztOverlays::getViewportSize(viewport, width, layoutHeight);
        tame(layoutHeight);
        tame(height = bytes.integer());
        if (bytes.flip())
            ztOverlays::updateOverlay(overlay, width, height);
        else
            ztOverlays::updateOverlayPosition(overlay, width, height);
        ztOverlays::updateOverlay(node, viewport);
        ztOverlays::updateVisibility(node);
        if (bytes.flip())
            ztOverlays::updateAllOverlays(viewport);
    }

    /// What a callback may do to the scene that is being walked over.
    void edit()
    {
        void (Scenes::*const edits[])() = {&Scenes::addChild, &Scenes::insertChild, &Scenes::addNull,
                                           &Scenes::subChild, &Scenes::writeNode,   &Scenes::writeOverlay};
        isInWalk = true;
        for (unsigned count = bytes.below(3); count > 0; --count)
            (this->*edits[bytes.below(std::size(edits))])();
        isInWalk = false;
    }

    void walk()
    {
        ztOverlays::traverseVisibleOverlays([this](osg::OverlayPtr& overlay) {
            overlay = osg::NullFC;
            edit();
        });
        std::function<osg::Action::ResultE(osg::NodePtr const&)> const visit = [this](osg::NodePtr const&) {
            edit();
            return osg::Action::Continue;
        };
        osg::traverse(any<osg::Node>(), visit);
    }

    void attach()
    {
        osg::ViewportPtr viewport = some<osg::Viewport>();
        (bytes.below(3) ? ztOverlays::addOverlays : ztOverlays::removeOverlays)(viewport);
    }

    void draw()
    {
        for (osg::OverlayPtr const& overlay : all<osg::Overlay>())
            if (overlay->foreground == osg::NullFC)
                return;
        osg::ViewportPtr const viewport = some<osg::Viewport>();
        ztOverlays::drawOverlays(this, viewport.get());
        viewport->render(this);
    }

    void drawPolygon(osg::TexturedPolygon const&, osg::Viewport&) override { edit(); }

    void stamp()
    {
        std::vector<osg::OverlayPtr> overlays;
        if (bytes.flip())
            ztOverlays::getAllVisibleOverlays(overlays);
        for (unsigned count = bytes.below(3); count > 0; --count)
            overlays.push_back(any<osg::Overlay>());
        osg::ImagePtr const target = any<osg::Image>();
        osg::ViewportPtr const viewport = any<osg::Viewport>();
        tame(target != osg::NullFC ? target->height : 0);
        tame(viewport != osg::NullFC ? viewport->pixelHeight : 0);
        ztOverlays::blendOverlaysOntoImage(overlays, target, viewport);
    }

    /// \return that of the whole tree
    osg::NodePtr lookUpPool(osg::NodePtr const& node)
    {
        osg::NodePtr top = node;
        while (top != osg::NullFC && top->parent != osg::NullFC)
            top = top->parent;
        for (bool const recursive : {false, true})
            require(ztMaterials::findMaterialPool(node, false, recursive) == firstPool(node, recursive) &&
                        ztMaterials::findMaterialPool(node, true, recursive) == firstPool(top, recursive),
                    "a pool is found");
        return firstPool(top, true);
    }

    void lookUp()
    {
        osg::NodePtr const node = any<osg::Node>(), poolNode = lookUpPool(node);
        osg::NodePtr const root =
            poolNode != osg::NullFC ? osg::dynamicCast<osg::MaterialPool>(poolNode->core)->overlayRoot : osg::NodePtr();
        require(ztOverlays::getOverlayPoolRootForNode(node) == root, "a pool root is found");
        Nodes named, all = nodesOf(ztOverlays::getOverlayPoolRoot());
        std::copy_if(all.begin(), all.end(), std::back_inserter(named),
                     [](osg::NodePtr const& each) { return ztNodeUtils::getName(each) == std::string("n"); });
        require(ztOverlays::findOverlays("n") == named, "names are found");
        Nodes const reversed = root != osg::NullFC ? Nodes(root->children.rbegin(), root->children.rend()) : Nodes();
        ztOverlays::reverseOverlaysSGOrder(node);
        require(root == osg::NullFC || root->children == reversed, "the overlays are reversed");
    }

    void begin();
    void checkLaws();
    void checkMarks(std::map<Container, int> const& references);
    void end();

    /// What may destroy foregrounds, what a host does besides, then what the library is called for.
    static constexpr void (Scenes::*operations[])() = {
        &Scenes::drop,    &Scenes::setCore,       &Scenes::subChild,         &Scenes::replaceChild,
        &Scenes::setRoot, &Scenes::changeScope,   &Scenes::assign,           &Scenes::assign,
        &Scenes::make,    &Scenes::makeImage,     &Scenes::addChild,         &Scenes::insertChild,
        &Scenes::addNull, &Scenes::writeNode,     &Scenes::writeViewport,    &Scenes::writeOverlay,
        &Scenes::copy,    &Scenes::writeOverlay,  &Scenes::setScale,         &Scenes::walk,
        &Scenes::draw,    &Scenes::moveChild,     &Scenes::rename,           &Scenes::attach,
        &Scenes::attach,  &Scenes::createOverlay, &Scenes::createOverlay,    &Scenes::update,
        &Scenes::update,  &Scenes::update,        &Scenes::update,           &Scenes::stamp,
        &Scenes::stamp,   &Scenes::lookUp,        &Scenes::duplicateOverlay,
    };
    static constexpr unsigned numDestroying = 8, firstOfLibrary = 21;

    Bytes bytes;
    /// What the host holds.
    Fields held;
    /// That of the process, then those of the scopes.
    Nodes roots{osg::NullFC};
    std::vector<std::unique_ptr<RootScope>> scopes;
    /// All containers, in the order of a walk over all references.
    Fields living;
    /// The bytes of images made here, which some of them borrow.
    std::list<std::vector<osg::UInt8>> pictures;
    osg::ChangeList recorded;
    /// The references of each container, by what was recorded.
    std::map<Container, int> counts;
    /// What was before an operation of the library.
    std::map<Container, std::string> states;
    bool isInWalk = false;
};

/// Mostly, scenes with overlays come first.
void Scenes::begin()
{
    osg::PThreadBase::setCurrentChangeList(bytes.flip() ? &recorded : nullptr);
    for (unsigned scenes = bytes.below(3); scenes > 0; --scenes)
    {
        roots.front() = hold(osg::create<osg::Node>());
        roots.front()->setCore(hold(osg::create<osg::MaterialPool>()));
        ztOpenSGUtils::setRoot(roots.front());
        writeViewport();
        makeImage();
        for (unsigned overlays = bytes.below(5); overlays > 0; --overlays)
            createOverlay();
    }
    checkLaws();
}

/// Counts and links are those that the fields say.
void Scenes::checkLaws()
{
    require(ztOpenSGUtils::getRoot() == roots.back(), "the innermost scope's root is the current one");
    std::map<Container, int> references;
    std::map<Container, Fields> users;
    living.clear();
    auto const count = [&](osg::FieldContainerPtr const& container) {
        if (container != osg::NullFC && ++references[container.getContainer()] == 1)
            living.push_back(container);
    };
    std::for_each(held.begin(), held.end(), count);
    std::for_each(roots.begin(), roots.end(), count);
    for (std::size_t i = 0; i < living.size(); ++i)
        for (osg::FieldContainerPtr const& field : referencesOf(osg::FieldContainerPtr(living[i])))
        {
            count(field);
            if (osg::dynamicCast<osg::Node>(living[i]) != osg::NullFC ||
                osg::dynamicCast<osg::TextureChunk>(living[i]) != osg::NullFC)
                users[field.getContainer()].push_back(living[i]);
        }
    require(osg::FieldContainerFactory::getNumContainers() == living.size(), "nothing else lives");
    for (osg::FieldContainerPtr const& container : living)
    {
        require(container->getRefCount() == references[container.getContainer()], "a container is counted");
        Fields const known = usersOf(container), &expected = users[container.getContainer()];
        require(osg::dynamicCast<osg::Name>(container) != osg::NullFC ||
                    std::is_permutation(known.begin(), known.end(), expected.begin(), expected.end()),
                "a container knows its users");
    }
    checkMarks(references);
}

void Scenes::checkMarks(std::map<Container, int> const& references)
{
    std::set<Container> marked;
    for (osg::ChangeList::Entry const& entry : recorded.getEntries())
        if (entry.event == osg::ChangeList::Event::Destroyed)
            counts.erase(entry.container.getContainer());
        else if (entry.event != osg::ChangeList::Event::Changed)
            counts[entry.container.getContainer()] += entry.event == osg::ChangeList::Event::AddRefd ? 1 : -1;
        else
            marked.insert(entry.container.getContainer());
    recorded.clear();
    bool const isRecording = osg::PThreadBase::getCurrentChangeList();
    require(!isRecording || counts == references, "counts are recorded");
    counts = references;
    for (osg::FieldContainerPtr const& container : living)
        if (auto const before = states.find(container.getContainer()); isRecording && before != states.end())
            require(before->second == stateOf(container) || marked.count(before->first), "what changed is marked");
    states.clear();
}

void Scenes::end()
{
    osg::PThreadBase::setCurrentChangeList(nullptr);
    ztPlatform::setDpiScale(1.0, 1.0);
    for (osg::MaterialPoolPtr const& pool : all<osg::MaterialPool>())
        osg::setRefdCP(pool->overlayRoot, osg::NodePtr());
    while (!scopes.empty())
        scopes.pop_back();
    ztOpenSGUtils::setRoot(osg::NullFC);
    for (; !held.empty(); held.pop_back())
        osg::subRef(held.back());
    requireNoContainers();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(osg::UInt8 const* data, std::size_t size)
{
    Scenes(Bytes(data, size)).run();
    return 0;
}
