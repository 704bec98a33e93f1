/// \file
/// What a viewport shows in front of its scene.
#pragma once

#include "OSGFieldContainer.h"

namespace osg::v1
{

class DrawActionBase;
class Viewport;

class ZTOPENSG_EXPORT ForegroundBase : public FieldContainer
{
  public:
    /// Whether the viewport shows it.
    ZT_FIELD(FieldContainer, 0, Active, active, bool) = true;
    static constexpr UInt16 FieldEnd = FieldContainer::FieldEnd + 1;
};

/// The base of all foregrounds.
class ZTOPENSG_EXPORT Foreground : public ForegroundBase
{
    ZT_ABSTRACT_CONTAINER(Foreground)

  public:
    /// Draws the foreground into the viewport, whether it is active or not. Neither pointer may be null.
    virtual void draw(DrawActionBase* action, Viewport* viewport) = 0;
};

using ForegroundPtr = FCPtr<Foreground>;

} // namespace osg::v1
