/// \file
/// A textured polygon in front of a viewport's scene.
#pragma once

#include "OSGForeground.h"
#include "OSGMaterial.h"
#include "ztOpenSGExt_export.h"

namespace osg::v1
{

class ZTOPENSGEXT_EXPORT PolygonForeground2Base : public Foreground
{
  public:
    /// 0: positions are pixels.
    ZT_FIELD(Foreground, 3, NormalizedX, normalizedX, bool) = false;
    ZT_FIELD(Foreground, 4, NormalizedY, normalizedY, bool) = false;
    /// 0: drawn once.
    ZT_FIELD(Foreground, 7, Tile, tile, bool) = false;
    /// 0: the polygon's shape doesn't depend on the viewport's.
    ZT_FIELD(Foreground, 5, AspectHeight, aspectHeight, UInt16) = 0;
    ZT_FIELD(Foreground, 6, AspectWidth, aspectWidth, UInt16) = 0;
    /// A texture coordinate for each corner; (0, 0) is the first pixel of the image's bytes.
    ZT_FIELD(Foreground, 1, TexCoords, texCoords, MField<Vec3f>);
    // What each update reads comes last in memory: corners that are allocated next follow closely.

    /// Counted.
    ZT_FIELD(Foreground, 0, Material, material, MaterialPtr);
    /// The corners, in pixels of the size that the viewport's overlays are laid out for, y up from the lower edge.
    ZT_FIELD(Foreground, 2, Positions, positions, MField<Pnt2f>);
    static constexpr UInt16 FieldEnd = Foreground::FieldEnd + 8;
};

class ZTOPENSGEXT_EXPORT PolygonForeground2 : public PolygonForeground2Base
{
    ZT_CONTAINER(PolygonForeground2)

  public:
    /// Hands the polygon to the action.
    void draw(DrawActionBase* action, Viewport* viewport) override;

  protected:
    ~PolygonForeground2() override;
};

using PolygonForeground2Ptr = FCPtr<PolygonForeground2>;

} // namespace osg::v1
