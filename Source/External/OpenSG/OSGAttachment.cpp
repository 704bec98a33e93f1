#include "OSGAttachment.h"

#include <algorithm>

namespace osg
{

OSG_ABSTRACT_CONTAINER_TYPE(Attachment, FieldContainer);
OSG_ABSTRACT_CONTAINER_TYPE(AttachmentContainer, FieldContainer);
OSG_CONTAINER_TYPE(Name, Attachment);

AttachmentContainer::~AttachmentContainer()
{
    for (Entry const& entry : _attachments)
        subRef(entry.attachment);
}

std::vector<AttachmentContainer::Entry>::const_iterator AttachmentContainer::find(UInt32 groupId, UInt16 binding) const
{
    return std::find_if(_attachments.begin(), _attachments.end(),
                        [=](Entry const& entry) { return entry.groupId == groupId && entry.binding == binding; });
}

void AttachmentContainer::addAttachment(AttachmentPtr const& attachment, UInt16 binding)
{
    if (attachment == NullFC)
        return;
    addRef(attachment);
    UInt32 const groupId = attachment->getType().getGroupId();
    subAttachment(groupId, binding);
    _attachments.push_back({groupId, binding, attachment});
}

AttachmentPtr AttachmentContainer::findAttachment(UInt32 groupId, UInt16 binding) const
{
    auto const entry = find(groupId, binding);
    return entry != _attachments.end() ? entry->attachment : AttachmentPtr();
}

void AttachmentContainer::subAttachment(UInt32 groupId, UInt16 binding)
{
    auto const entry = find(groupId, binding);
    if (entry == _attachments.end())
        return;
    AttachmentPtr const attachment = entry->attachment;
    _attachments.erase(entry);
    subRef(attachment);
}

void setName(AttachmentContainerPtr const& container, std::string const& name)
{
    NamePtr const attachment = create<Name>();
    attachment->name = name;
    container->addAttachment(attachment);
}

} // namespace osg
