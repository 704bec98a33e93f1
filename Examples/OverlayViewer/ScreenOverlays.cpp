#include "ScreenOverlays.h"

#include "OSGThread.h"
#include "OverlayNodes.h"
#include "View.h"
#include "ztOverlayCheck.h"
#include "ztOverlayUtils.h"
#include "ztPlatform.h"

#include <algorithm>
#include <utility>

namespace ztExamples
{

namespace
{

constexpr char helpText[] = "  H          show or hide this list  \n"
                            "  C          show what is amiss with the overlays  \n"
                            "  V          hide or show what is under the pointer  \n"
                            "  drag       move an overlay, or turn the mesh  \n"
                            "  wheel      enlarge the mesh  \n"
                            "  R          reverse the order of the overlays  \n"
                            "  S          save at 1x, 2x, 4x, stamped  \n"
                            "  T          save at 1x, 2x, 4x, in tiles  \n"
                            "  Space      pause or go on  \n"
                            "  Q, Escape  quit  ";

/// Light on dark, as large as a fraction of the window's height.
OverlayEntry createPanel(QString const& text, float size, osg::Vec2f const& anchor)
{
    OverlayEntry panel;
    panel.text = parseTemplate(text);
    panel.font = "DejaVu Sans Mono";
    panel.textColor = {0.9f, 0.94f, 0.96f, 1.0f};
    panel.backgroundColor = {0.02f, 0.03f, 0.05f};
    panel.backgroundTransparency = {0.25f, 0.25f, 0.25f};
    panel.sizeMode = osg::Overlay::SizeRelative;
    panel.size = size;
    panel.anchor = anchor;
    return panel;
}

/// Of the panel with a text.
float heightOf(std::string const& text)
{
    return std::min(0.045f * float(1 + std::count(text.begin(), text.end(), '\n')), 0.9f);
}

/// The viewer's own come first: in front of the others.
std::vector<OverlayEntry> withPanels(std::vector<OverlayEntry> entries)
{
    OverlayEntry panel = createPanel(helpText, heightOf(helpText), {0.5f, 0.5f});
    panel.visible = false;
    OverlayEntry const status = createPanel(" ", 0.028f, {0.5f, 0.012f}); // until it is told
    entries.insert(entries.begin(), {panel, status});
    return entries;
}

bool isShown(osg::NodePtr const& node)
{
    return node->travMask == osg::Node::AllTravMask;
}

/// The library clears `dirty`, and marks that, once it has brought a picture up to date, a text by rendering it.
/// Overlays live as long as the list, other containers may not: the mask is looked at first.
bool isRendering(osg::ChangeList::Entry const& entry)
{
    return entry.event == osg::ChangeList::Event::Changed && entry.mask == osg::Overlay::DirtyFieldMask &&
           osg::dynamicCast<osg::Overlay>(entry.container)->contentType == osg::Overlay::ContentText;
}

} // namespace

ScreenOverlays::ScreenOverlays(std::vector<OverlayEntry> const& entries, Placeholders const& values)
    : _viewport(osg::create<osg::Viewport>())
{
    osg::PThreadBase::setCurrentChangeList(&_changes);
    load(entries, values);
}

ScreenOverlays::~ScreenOverlays()
{
    osg::PThreadBase::setCurrentChangeList(nullptr);
}

void ScreenOverlays::load(std::vector<OverlayEntry> const& entries, Placeholders const& values)
{
    std::vector<OverlayEntry> const before = std::exchange(_entries, entries);
    try
    {
        show(values);
    }
    catch (std::exception const&)
    {
        _entries = before;
        show(values);
        throw;
    }
}

void ScreenOverlays::show(Placeholders const& values)
{
    _viewport->foregrounds.clear(); // holds no references
    _scene.reset();
    _scene.emplace(withPanels(_entries));
    _changes.clear(); // names what is gone
    _poolRoot = ztOverlays::getOverlayPoolRoot();
    _panel = _poolRoot->children[0];
    _status = overlayOf(_poolRoot->children[1]);
    _scene->setValues(values);
    if (QSize const size(_viewport->pixelWidth, _viewport->pixelHeight); !size.isEmpty())
        _scene->layOut(size);
    ztOverlays::addOverlays(_viewport);
}

void ScreenOverlays::setTexts(Placeholders const& values)
{
    _scene->setValues(values);
    setPanel(helpText); // as its entry says, too
}

void ScreenOverlays::layOut(QSize const& pixels, double scale)
{
    if (scale != ztPlatform::getDpiScaleX() && ztPlatform::setDpiScale(scale, scale))
        makeDirty();
    if (pixels != QSize(_viewport->pixelWidth, _viewport->pixelHeight))
    {
        _viewport->pixelWidth = pixels.width();
        _viewport->pixelHeight = pixels.height();
        osg::markChanged(_viewport, osg::Viewport::PixelWidthFieldMask | osg::Viewport::PixelHeightFieldMask);
    }
    _scene->layOut(pixels);
    countRenderings();
}

void ScreenOverlays::makeDirty()
{
    countRenderings();
    for (osg::NodePtr const& node : _poolRoot->children)
    {
        contentOf(node)->dirty = true;
        osg::markChanged(contentOf(node), osg::Overlay::DirtyFieldMask);
    }
    _changes.clear(); // these are no renderings
}

void ScreenOverlays::countRenderings()
{
    auto const& entries = _changes.getEntries();
    _renderingCount += std::size_t(std::count_if(entries.begin(), entries.end(), isRendering));
    _changes.clear();
}

void ScreenOverlays::setStatus(QString const& text)
{
    setText(_status, text.toStdString());
}

void ScreenOverlays::toggleHelp()
{
    togglePanel(helpText);
}

void ScreenOverlays::toggleFindings()
{
    std::string text;
    for (ztOverlayCheck::Finding const& finding : ztOverlayCheck::inspect(_viewport))
        text += "  " + (finding.node.empty() ? "" : finding.node + ": ") + finding.problem + "  \n      " +
                finding.advice + "  \n";
    togglePanel(text.empty() ? "  nothing is amiss  " : text.substr(0, text.size() - 1));
}

void ScreenOverlays::togglePanel(std::string const& text)
{
    bool const isOther = overlayOf(_panel)->text != text;
    setPanel(text);
    if (!isOther || !isShown(_panel))
        toggle(_panel);
}

void ScreenOverlays::setPanel(std::string const& text)
{
    osg::OverlayPtr const panel = overlayOf(_panel);
    setText(panel, text);
    if (panel->size == heightOf(text))
        return;
    panel->size = heightOf(text);
    osg::markChanged(panel, osg::Overlay::SizeFieldMask);
}

void ScreenOverlays::toggleAt(QPointF const& point)
{
    std::vector<osg::NodePtr> nodes = _poolRoot->children;
    nodes.erase(std::find(nodes.begin(), nodes.end(), _panel)); // has its own keys
    osg::NodePtr const node = findAt(point, nodes);
    if (node != osg::NullFC)
        toggle(node);
}

void ScreenOverlays::toggle(osg::NodePtr const& node)
{
    ztOverlays::removeOverlays(_viewport);
    node->travMask = isShown(node) ? 0 : osg::Node::AllTravMask;
    osg::markChanged(node, osg::Node::TravMaskFieldMask);
    ztOverlays::updateVisibility(node);
    ztOverlays::addOverlays(_viewport);
}

void ScreenOverlays::reverse()
{
    ztOverlays::removeOverlays(_viewport);
    ztOverlays::reverseOverlaysSGOrder(_poolRoot);
    ztOverlays::addOverlays(_viewport);
}

osg::OverlayPtr ScreenOverlays::visibleAt(QPointF const& point) const
{
    std::vector<osg::NodePtr> nodes;
    std::copy_if(_poolRoot->children.begin(), _poolRoot->children.end(), std::back_inserter(nodes), isShown);
    osg::NodePtr const node = findAt(point, nodes);
    return node != osg::NullFC ? contentOf(node) : osg::OverlayPtr();
}

void moveTo(osg::OverlayPtr const& overlay, osg::Vec2f const& offset)
{
    overlay->offset = offset;
    osg::markChanged(overlay, osg::Overlay::OffsetFieldMask);
}

} // namespace ztExamples
