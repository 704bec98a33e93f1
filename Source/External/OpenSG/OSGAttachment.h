/// \file
/// Attachments: extra data that nodes, cores and other containers carry, a name above all.
#pragma once

#include "OSGFieldContainer.h"

#include <memory>
#include <string>
#include <vector>

namespace osg::v1
{

/// The base of what can be attached.
class ZTOPENSG_EXPORT Attachment : public FieldContainer
{
    ZT_ABSTRACT_CONTAINER(Attachment)
};

using AttachmentPtr = FCPtr<Attachment>;

/// A container that attachments can be added to. It holds a reference on each.
class ZTOPENSG_EXPORT AttachmentContainer : public FieldContainer
{
    ZT_ABSTRACT_CONTAINER(AttachmentContainer)

  public:
    /// Adds an attachment under its type's group and `binding`, in the place of one that stands there already. Null:
    /// nothing happens. Marks nothing.
    void addAttachment(AttachmentPtr const& attachment, UInt16 binding = 0);

    /// The attachment under a group and a binding, or null.
    AttachmentPtr findAttachment(UInt32 groupId, UInt16 binding = 0) const;

    /// Takes the attachment under a group and a binding away, if there is one. Marks nothing.
    void subAttachment(UInt32 groupId, UInt16 binding = 0);

  protected:
    ~AttachmentContainer() override;

  private:
    struct Entry
    {
        UInt32 groupId;
        UInt16 binding;
        AttachmentPtr attachment;
    };

    /// Null without one.
    Entry* find(UInt32 groupId, UInt16 binding) const;

    /// Null until the first is added.
    NotCopied<std::unique_ptr<std::vector<Entry>>> _attachments;
};

using AttachmentContainerPtr = FCPtr<AttachmentContainer>;

class ZTOPENSG_EXPORT NameBase : public Attachment
{
  public:
    ZT_FIELD(Attachment, 0, Name, name, std::string);
    static constexpr UInt16 FieldEnd = Attachment::FieldEnd + 1;
};

/// The attachment that holds a node's or a core's name.
class ZTOPENSG_EXPORT Name : public NameBase
{
    ZT_CONTAINER(Name)
};

using NamePtr = FCPtr<Name>;

/// Gives a container, which must not be null, an osg::Name in the place of one that it has. Marks nothing.
ZTOPENSG_EXPORT void setName(AttachmentContainerPtr const& container, std::string const& name);

} // namespace osg::v1
