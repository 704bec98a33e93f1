/// \file
/// What the tests share: a scene, a look at the change list, and the check that nothing leaks.
#pragma once

#include "OSGChangeList.h"
#include "OSGMaterialPool.h"
#include "OSGThread.h"
#include "ztOpenSGUtils.h"
#include "ztOverlayUtils.h"
#include "ztPlatform.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

/// The change list of the calling thread for as long as this lives.
class Recorder
{
  public:
    using Names = std::vector<std::pair<char const*, osg::FieldContainerPtr>>;

    Recorder() { osg::PThreadBase::setCurrentChangeList(&_list); }
    ~Recorder() { osg::PThreadBase::setCurrentChangeList(nullptr); }
    Recorder(Recorder const&) = delete;
    Recorder& operator=(Recorder const&) = delete;

    void clear() { _list.clear(); }

    /// All entries as text, a word each: `+` and `-` a reference, `x` destroyed, `!` changed with all fields,
    /// `!n` changed with the bits of the hexadecimal number n; then the container's name, if it was given
    /// one.
    std::string text(Names const& names = {}) const { return describe(names, false, false); }

    /// The changed entries alone.
    std::string marks(Names const& names = {}) const { return describe(names, true, false); }

    /// Like marks(), with the types of the containers that have no name.
    std::string typedMarks(Names const& names = {}) const { return describe(names, true, true); }

  private:
    std::string describe(Names const& names, bool marksOnly, bool types) const;

    osg::ChangeList _list;
};

osg::OverlayPtr overlayOf(osg::NodePtr const& node);
osg::TextureChunkPtr textureOf(osg::OverlayPtr const& overlay);

/// The image that an overlay shows.
osg::ImagePtr shownImage(osg::OverlayPtr const& overlay);

/// The pixel in a column and a row of the bytes, counted from the bottom.
std::array<int, 4> pixelAt(osg::ImagePtr const& image, int column, int row);

/// `positions` as text, with all digits: "(x, y) (x, y) ...".
std::string corners(osg::OverlayPtr const& overlay);

/// Holds what the test makes until its end, and checks then that no container has come to stay.
class SceneTest : public testing::Test
{
  protected:
    void TearDown() override;

    /// Counts a container until the end of the test.
    template <class Pointer>
    Pointer hold(Pointer const& container)
    {
        osg::addRef(container);
        _held.push_back(container);
        return container;
    }

    /// A node with a core, held.
    osg::NodePtr makeNode(osg::NodeCorePtr const& core = osg::NullFC, osg::NodePtr const& parent = osg::NullFC);

    /// Makes a scene with a material pool the current one and returns its pool root.
    osg::NodePtr makeScene();

    osg::ViewportPtr makeViewport(int width, int height);

    /// An overlay that hangs nowhere.
    osg::OverlayPtr makeOverlay() { return overlayOf(hold(ztOverlays::createOverlay(osg::NullFC))); }
    osg::OverlayPtr makeText(std::string const& text);
    osg::OverlayPtr makePicture(osg::ImagePtr const& image);

    /// An image whose pixels all have one value: red, green, blue, alpha.
    osg::ImagePtr makeImage(int width, int height, std::array<int, 4> pixel = {0, 0, 0, 0});

  private:
    std::vector<osg::FieldContainerPtr> _held;
    std::size_t _containersBefore = osg::FieldContainerFactory::getNumContainers();
};
