/// \file
/// What the tests share: a scene, a look at the change list, and the check that nothing leaks.
#pragma once

#include "OSGChangeList.h"
#include "OSGMaterialPool.h"
#include "OSGThread.h"
#include "ztOpenSGUtils.h"
#include "ztOverlayUtils.h"
#include "ztPlatform.h"

#include <QImage>

#include <gtest/gtest.h>

#include <string>

/// The change list of the calling thread for as long as this lives.
class Recorder
{
  public:
    using Names = std::vector<std::pair<char const*, osg::FieldContainerPtr>>;

    Recorder() { osg::PThreadBase::setCurrentChangeList(&_list); }
    ~Recorder() { osg::PThreadBase::setCurrentChangeList(nullptr); }
    Recorder(Recorder const&) = delete;

    /// Empties the list. Its entries as text, a word each: `+` and `-` a reference, `x` destroyed, `!` changed; then
    /// the container's name, if it was given one, and the field that has changed, if it isn't all. A question
    /// mark stands for the field of a container that is gone.
    std::string take(Names const& names = {});

  private:
    osg::ChangeList _list;
};

/// Holds what the test makes until its end, and checks then that no container has come to stay.
class SceneTest : public testing::Test
{
  public:
    static osg::OverlayPtr overlayOf(osg::NodePtr const& node) { return osg::dynamicCast<osg::Overlay>(node->core); }

    static osg::TextureChunkPtr textureOf(osg::OverlayPtr const& overlay)
    {
        auto const material = osg::dynamicCast<osg::ChunkMaterial>(overlay->foreground->material);
        return osg::dynamicCast<osg::TextureChunk>(material->chunks.at(0));
    }

    /// The image that an overlay shows.
    static osg::ImagePtr shownImage(osg::OverlayPtr const& overlay) { return textureOf(overlay)->image; }

    /// x and y of each corner.
    static std::vector<float> corners(osg::OverlayPtr const& overlay);

    /// The pixel in a column and a row of the bytes, counted from the bottom.
    static std::array<int, 4> pixelAt(osg::ImagePtr const& image, int column, int row);

    /// With its top row first, as Qt has it.
    static QImage toQImage(osg::ImagePtr const& image);

    static osg::TileCameraDecoratorPtr createTile(int fullWidth, int fullHeight);

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

    osg::ViewportPtr makeViewport(int width, int height, osg::CameraPtr const& camera = osg::NullFC);

    /// Overlays that hang nowhere.
    osg::OverlayPtr makeText(std::string const& text, float size = 12, int sizeMode = osg::Overlay::SizeAbsolute);
    osg::OverlayPtr makePicture(osg::ImagePtr const& image, float size = 12, int sizeMode = osg::Overlay::SizeAbsolute);

    /// An image whose pixels all have one value: red, green, blue, alpha.
    osg::ImagePtr makeImage(int width, int height, std::array<int, 4> pixel = {0, 0, 0, 0});

    std::vector<osg::FieldContainerPtr> _held;

  private:
    std::size_t _containersBefore = osg::FieldContainerFactory::getNumContainers();
};
