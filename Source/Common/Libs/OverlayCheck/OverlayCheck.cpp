#include "ztOverlayCheck.h"

#include "Fonts.h"
#include "OSGOverlay.h"
#include "OSGRefPtr.h"
#include "OSGThread.h"
#include "QtLibraries.h"
#include "ztMaterials.h"
#include "ztNodeUtils.h"
#include "ztNumeric.h"
#include "ztOpenSGUtils.h"
#include "ztOverlayUtils.h"

#include <algorithm>
#include <cstring>
#include <sstream>
#include <tuple>

namespace ztOverlayCheck
{

namespace
{

struct Complaint
{
    std::string problem;
    std::string advice;
};

/// An overlay with what is looked at beside it.
struct Subject
{
    osg::OverlayPtr overlay;
    bool isVisible;
    osg::ViewportPtr viewport;
};

/// As long as this lives, the thread records no changes.
class NoChangeList
{
  public:
    NoChangeList() { osg::PThreadBase::setCurrentChangeList(nullptr); }
    NoChangeList(NoChangeList const&) = delete;
    NoChangeList& operator=(NoChangeList const&) = delete;
    ~NoChangeList() { osg::PThreadBase::setCurrentChangeList(_before); }

  private:
    osg::ChangeList* _before = osg::PThreadBase::getCurrentChangeList();
};

bool isText(osg::Overlay const& overlay)
{
    return overlay.contentType == osg::Overlay::ContentText;
}

std::string toText(float number)
{
    std::ostringstream text;
    text << number;
    return text.str();
}

osg::TextureChunk const* textureOf(osg::Overlay const& overlay)
{
    return overlay.foreground != osg::NullFC ? osg::drawChunksOf(overlay.foreground->material).texture : nullptr;
}

/// Null if the overlay shows none.
osg::Image* shownImage(osg::Overlay const& overlay)
{
    osg::TextureChunk const* const texture = textureOf(overlay);
    return texture ? texture->image.get() : nullptr;
}

int layoutHeight(osg::ViewportPtr const& viewport)
{
    int width, height;
    ztOverlays::getViewportSize(viewport, width, height);
    return height;
}

/// A copy of a text, rendered from its fields. If the text is `dirty`, it stays so where there is nothing to draw.
osg::RefPtr<osg::Node> renderCopy(Subject const& subject)
{
    osg::RefPtr<osg::Node> copy(ztOverlays::duplicateOverlay(osg::NullFC, subject.overlay));
    auto const overlay = osg::dynamicCast<osg::Overlay>(copy->core);
    ztOverlays::updateOverlayImage(overlay, 0, layoutHeight(subject.viewport));
    return copy;
}

bool isSame(osg::Image& a, osg::Image& b)
{
    if (a.width != b.width || a.height != b.height || !a.isComplete() || !b.isComplete())
        return a.width == b.width && a.height == b.height;
    return std::memcmp(a.pixelBuffer(), b.pixelBuffer(), 4 * std::size_t(a.width) * std::size_t(a.height)) == 0;
}

std::optional<Complaint> checkFont(Subject const& subject)
{
    auto const missing = isText(*subject.overlay) ? findMissingFont(subject.overlay->font) : std::nullopt;
    if (!missing)
        return std::nullopt;
    return Complaint{"the font family \"" + subject.overlay->font + "\" isn't there, \"" + missing->used +
                         "\" is used instead",
                     "install it or choose another in `font`; the nearest name is \"" + missing->nearest + '"'};
}

std::optional<Complaint> checkAlpha(Subject const& subject)
{
    osg::ImagePtr const& image = subject.overlay->image;
    if (isText(*subject.overlay) || image == osg::NullFC || !image->isComplete())
        return std::nullopt;
    osg::UInt8 const* const first = image->pixelBuffer();
    osg::UInt8 const* const end = first + 4 * std::size_t(image->width) * std::size_t(image->height);
    for (osg::UInt8 const* pixel = first; pixel != end; pixel += 4)
        if (std::max({pixel[0], pixel[1], pixel[2]}) > pixel[3])
        {
            std::size_t const place = std::size_t(pixel - first) / 4, width = std::size_t(image->width);
            return Complaint{"the picture's alpha is straight: column " + std::to_string(place % width) + " of row " +
                                 std::to_string(place / width) + " from below has more colour than alpha",
                             "call ztImage::premultiply() once after loading"};
        }
    return std::nullopt;
}

/// Whether the next update renders a text anew of its own accord.
bool isToBeRendered(Subject const& subject, osg::Image const& shown)
{
    osg::Overlay const& overlay = *subject.overlay;
    int const height = layoutHeight(subject.viewport);
    return overlay.dirty || (overlay.sizeMode != osg::Overlay::SizeAbsolute &&
                             ztNumeric::truncate(float(height) * overlay.size) != shown.height);
}

std::optional<Complaint> checkMarks(Subject const& subject)
{
    osg::Image* const shown = shownImage(*subject.overlay);
    if (!isText(*subject.overlay) || !shown || !hasApplication() || isToBeRendered(subject, *shown))
        return std::nullopt;
    osg::RefPtr<osg::Node> const copy = renderCopy(subject);
    if (isSame(*shown, *shownImage(*osg::dynamicCast<osg::Overlay>(copy->core))))
        return std::nullopt;
    return Complaint{
        "what is shown isn't what the fields say: one was written, or the DPI scale set, unannounced",
        "call osg::markChanged() with the masks of the fields that you write; AllFieldsMask leaves `dirty` as it is"};
}

std::optional<Complaint> checkSize(Subject const& subject)
{
    osg::Overlay const& overlay = *subject.overlay;
    if (overlay.sizeMode == osg::Overlay::SizeAbsolute || overlay.size <= 1.0f)
        return std::nullopt;
    return Complaint{"its size is relative and " + toText(overlay.size) + " times the target's height",
                     "write a fraction up to 1 into `size`, or SizeAbsolute into `sizeMode`"};
}

std::optional<Complaint> checkColors(Subject const& subject)
{
    auto const& [text, back, clear] =
        std::tie(subject.overlay->textColor, subject.overlay->backgroundColor, subject.overlay->backgroundTransparency);
    for (float const component : {text.r, text.g, text.b, text.a, back.r, back.g, back.b, clear.r, clear.g, clear.b})
        if (isText(*subject.overlay) && !(component >= 0.0f && component <= 1.0f))
            return Complaint{"a component of its colours is " + toText(component),
                             "write components from 0 to 1; divide those that go up to 255"};
    return std::nullopt;
}

std::ptrdiff_t countAttached(Subject const& subject)
{
    if (subject.viewport == osg::NullFC || subject.overlay->foreground == osg::NullFC)
        return 0;
    auto const& entries = subject.viewport->foregrounds;
    return std::count(entries.begin(), entries.end(), osg::ForegroundPtr(subject.overlay->foreground));
}

std::optional<Complaint> checkAttachedOnce(Subject const& subject)
{
    std::ptrdiff_t const count = countAttached(subject);
    if (count < 2)
        return std::nullopt;
    return Complaint{"it stands " + std::to_string(count) + " times in the viewport's foregrounds",
                     "call removeOverlays() before you call addOverlays() again"};
}

std::optional<Complaint> checkHidden(Subject const& subject)
{
    if (subject.isVisible || countAttached(subject) == 0)
        return std::nullopt;
    return Complaint{"it is hidden and stands in the viewport's foregrounds, where removeOverlays() passes over it",
                     "call removeOverlays() before you hide a node, and addOverlays() after"};
}

std::optional<Complaint> checkDirty(Subject const& subject)
{
    osg::Overlay const& overlay = *subject.overlay;
    if (!overlay.dirty)
        return std::nullopt;
    std::string const problem = "it is still dirty: ";
    if (isText(overlay) && *overlay.text.c_str() == '\0')
        return Complaint{problem + "it has no text", "write one, or take the node out of the scene"};
    if (isText(overlay) && !hasApplication())
        return Complaint{problem + "there is no application object", "make a QGuiApplication first"};
    if (isText(overlay) && overlay.foreground != osg::NullFC && !textureOf(overlay))
        return Complaint{problem + "its material has no chunk for a picture",
                         "leave the material's chunks as they are"};
    if (isText(overlay) && osg::dynamicCast<osg::Overlay>(renderCopy(subject)->core)->dirty)
        return Complaint{problem + "its font is smaller than a point", "raise `size`"};
    return Complaint{problem + "it hasn't been updated since", "call updateAllOverlays() before each frame"};
}

using Check = std::optional<Complaint> (*)(Subject const& subject);

constexpr std::pair<Kind, Check> checks[] = {
    {Kind::MissingFont, checkFont},         {Kind::StraightAlpha, checkAlpha}, {Kind::UnmarkedChange, checkMarks},
    {Kind::RelativeSize, checkSize},        {Kind::ColorRange, checkColors},   {Kind::AttachedTwice, checkAttachedOnce},
    {Kind::HiddenButAttached, checkHidden}, {Kind::StillDirty, checkDirty},
};

/// The nodes below the pool root that are overlays. Nothing is made.
std::vector<osg::NodePtr> overlayNodes(osg::NodePtr const& root)
{
    std::vector<osg::NodePtr> nodes;
    osg::traverse(ztOverlays::getOverlayPoolRootForNode(root), [&nodes](osg::NodePtr const& node) {
        if (osg::dynamicCast<osg::Overlay>(node->core) != osg::NullFC)
            nodes.push_back(node);
        return osg::Action::Continue;
    });
    return nodes;
}

bool hasText(osg::NodePtr const& root)
{
    std::vector<osg::NodePtr> const nodes = overlayNodes(root);
    return std::any_of(nodes.begin(), nodes.end(),
                       [](osg::NodePtr const& node) { return isText(*osg::dynamicCast<osg::Overlay>(node->core)); });
}

/// What concerns no single overlay.
std::vector<Finding> inspectWhole(osg::NodePtr const& root)
{
    std::vector<Finding> findings;
    if (loadedQtMajors().size() > 1)
        findings.push_back({Kind::SeveralQts, "", "two major versions of Qt are loaded; one has no application object",
                            "build the host and the overlay library with the same one (ZT_QT_MAJOR)"});
    if (root == osg::NullFC)
        findings.push_back({Kind::NoRoot, "", "there is no scene", "call ztOpenSGUtils::setRoot()"});
    else if (ztMaterials::findMaterialPool(root, true, true) == osg::NullFC)
        findings.push_back({Kind::NoPool, "", "the scene has no pool for overlays",
                            "add a node with an osg::MaterialPool as its core below the root"});
    if (hasText(root) && !hasApplication())
        findings.push_back({Kind::NoApplication, "", "there are texts and no application object, which has the fonts",
                            "make a QGuiApplication before the first update"});
    return findings;
}

} // namespace

std::vector<Finding> inspect(osg::ViewportPtr const& viewport)
{
    NoChangeList const noChangeList;
    osg::NodePtr const root = ztOpenSGUtils::getRoot();
    std::vector<Finding> findings = inspectWhole(root);
    std::vector<osg::NodePtr> const nodes = overlayNodes(root);
    std::vector<osg::OverlayPtr> visible;
    if (!nodes.empty())
        ztOverlays::getAllVisibleOverlays(visible);
    for (osg::NodePtr const& node : nodes)
    {
        auto const overlay = osg::dynamicCast<osg::Overlay>(node->core);
        bool const isVisible = std::find(visible.begin(), visible.end(), overlay) != visible.end();
        for (auto const& [kind, check] : checks)
            if (auto complaint = check({overlay, isVisible, viewport}))
                findings.push_back({kind, ztNodeUtils::getName(node), complaint->problem, complaint->advice});
    }
    return findings;
}

std::string toLine(Finding const& finding)
{
    return (finding.node.empty() ? "" : finding.node + ": ") + finding.problem + "; " + finding.advice;
}

} // namespace ztOverlayCheck
