#include "OSGAttachment.h"

#include "OSGRefPtr.h"

#include <algorithm>

namespace osg::v1
{

ZT_ABSTRACT_CONTAINER_TYPE(Attachment, FieldContainer);
ZT_ABSTRACT_CONTAINER_TYPE(AttachmentContainer, FieldContainer);
ZT_CONTAINER_TYPE(Name, Attachment);

AttachmentContainer::~AttachmentContainer()
{
    if (_attachments)
        for (Entry const& entry : *_attachments)
            subRef(entry.attachment);
}

AttachmentContainer::Entry* AttachmentContainer::find(UInt32 groupId, UInt16 binding) const
{
    if (!_attachments)
        return nullptr;
    auto const entry = std::find_if(_attachments->begin(), _attachments->end(), [=](Entry const& each) {
        return each.groupId == groupId && each.binding == binding;
    });
    return entry != _attachments->end() ? &*entry : nullptr;
}

void AttachmentContainer::addAttachment(AttachmentPtr const& attachment, UInt16 binding)
{
    if (attachment == NullFC)
        return;
    if (!_attachments)
        _attachments = std::make_unique<std::vector<Entry>>();
    makeRoom(*_attachments); // what follows can't fail
    addRef(attachment);
    UInt32 const groupId = attachment->getType().getGroupId();
    subAttachment(groupId, binding);
    _attachments->push_back({groupId, binding, attachment});
}

AttachmentPtr AttachmentContainer::findAttachment(UInt32 groupId, UInt16 binding) const
{
    Entry const* const entry = find(groupId, binding);
    return entry ? entry->attachment : AttachmentPtr();
}

void AttachmentContainer::subAttachment(UInt32 groupId, UInt16 binding)
{
    Entry* const entry = find(groupId, binding);
    if (!entry)
        return;
    AttachmentPtr const attachment = entry->attachment;
    _attachments->erase(_attachments->begin() + (entry - _attachments->data()));
    subRef(attachment);
}

void setName(AttachmentContainerPtr const& container, std::string const& name)
{
    NewPtr<Name> const attachment;
    attachment->name = name;
    container->addAttachment(attachment);
}

} // namespace osg::v1
