/// \file
/// What is amiss with a scene's overlays, in plain words: for a host's log, a key of a viewer or a test.
///
/// The overlay library itself is silent: what it can't show it leaves out. Here a host asks why.
///
/// \code
/// ztOverlays::updateAllOverlays(viewport);
/// for (ztOverlayCheck::Finding const& finding : ztOverlayCheck::inspect(viewport))
///     std::cerr << ztOverlayCheck::toLine(finding) << '\n';
/// \endcode
#pragma once

#include "OSGViewport.h"
#include "ztOverlayCheck_export.h"

#include <optional>
#include <string>
#include <vector>

namespace ztOverlayCheck
{

enum class Kind
{
    /// Qt of two major versions is loaded.
    SeveralQts,
    /// There is no current scene.
    NoRoot,
    /// The current scene has no material pool.
    NoPool,
    /// There are texts and no QGuiApplication.
    NoApplication,
    /// A text's font family isn't there.
    MissingFont,
    /// A picture has a pixel with more colour than alpha.
    StraightAlpha,
    /// A text doesn't look as its fields say, and nothing announces that it is to be rendered anew.
    UnmarkedChange,
    /// A relative size is above 1.
    RelativeSize,
    /// A component of a text's colours is not from 0 to 1.
    ColorRange,
    /// A foreground stands more than once in the viewport's `foregrounds`.
    AttachedTwice,
    /// A hidden overlay's foreground stands in the viewport's `foregrounds`.
    HiddenButAttached,
    /// An overlay is `dirty`.
    StillDirty
};

struct Finding
{
    Kind kind;
    /// The name of the overlay's node as ztNodeUtils::getName() gives it; empty if the scene or the process is meant.
    std::string node;
    /// What is amiss and what to do about it, two phrases in English without a full stop.
    std::string problem;
    std::string advice;
};

/// Looks at the overlays of the current scene, hidden ones too, and at a viewport. It is meant to be called after
/// updateAllOverlays() with that viewport. The scene and the thread's change list stay as they are.
///
/// Each text is rendered once for the comparison: nothing for every frame.
///
/// \param viewport  null: what depends on it isn't looked at
/// \return first what concerns the whole, then overlay by overlay in the order of osg::traverse()
ZTOVERLAYCHECK_EXPORT std::vector<Finding> inspect(osg::ViewportPtr const& viewport);

/// "title: the size is relative and 36, that is 36 times the target's height; write a fraction …"
ZTOVERLAYCHECK_EXPORT std::string toLine(Finding const& finding);

/// What takes the place of a font family.
struct MissingFont
{
    /// The family that texts are drawn with instead.
    std::string used;
    /// Of the families that are there, the one whose name is nearest.
    std::string nearest;
};

/// Whether a text with this `font` is drawn in another family. Upper and lower case don't matter, and of several names
/// with commas between them one suffices. Nothing if the family is there, if the name is empty, which asks for the
/// default, and without a QGuiApplication.
ZTOVERLAYCHECK_EXPORT std::optional<MissingFont> findMissingFont(std::string const& font);

/// The name that takes the fewest insertions, deletions and replacements of bytes to come from another one (Wagner and
/// Fischer, The String-to-String Correction Problem, 1974), the first of several; empty if none is known.
ZTOVERLAYCHECK_EXPORT std::string nearestName(std::string const& name, std::vector<std::string> const& known);

} // namespace ztOverlayCheck
