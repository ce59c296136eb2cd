#include "tessera/core/Group.h"

#include "tessera/core/DisplayableObject.h"

namespace Tessera::Core {

namespace {

// Gathers the members that are not groups, each once, however groups are nested or contain themselves.
void CollectLeaves(const Group& group, std::set<const Group*>& visited, std::set<TaggedObject*>& leaves) {
    if (!visited.insert(&group).second) {
        return;
    }
    std::vector<TaggedObject*> members;
    group.AskMembers(members);
    for (TaggedObject* member : members) {
        if (const auto* inner = dynamic_cast<const Group*>(member)) {
            CollectLeaves(*inner, visited, leaves);
        } else {
            leaves.insert(member);
        }
    }
}

} // namespace

Group::Group() : members_(std::make_shared<MemberSet>()) {}

Group* Group::Copy() const {
    auto copy = std::make_unique<Group>();
    *copy->members_ = *members_;
    return copy.release();
}

void Group::Transform(double m[3][3]) {
    std::set<const Group*> visited;
    std::set<TaggedObject*> leaves;
    CollectLeaves(*this, visited, leaves);
    for (TaggedObject* leaf : leaves) {
        leaf->Transform(m);
    }
}

Group* Group::DeepCopy(std::set<int>& ids, std::map<int, TaggedObject*>& copies) const {
    // The base enters the copy in the map before any member is visited: a group that contains itself ends.
    const bool isCopied = copies.count(GetId()) != 0;
    auto* copy = dynamic_cast<Group*>(TaggedObject::DeepCopy(ids, copies));
    if (isCopied || copy == nullptr) {
        return copy;
    }
    const MemberSet members = *members_;
    copy->Clear();
    for (TaggedObject* member : members) {
        if (ids.count(member->GetId()) == 0) {
            continue;
        }
        TaggedObject* memberCopy = member->DeepCopy(ids, copies);
        if (memberCopy == nullptr) {
            continue;
        }
        copy->AddObject(memberCopy);
        if (auto* displayable = dynamic_cast<DisplayableObject*>(memberCopy)) {
            displayable->SetGroup(copy);
        } else {
            memberCopy->LogForChange();
        }
    }
    return copy;
}

bool Group::Replace(TaggedObject* other) {
    if (other == nullptr || other->AskClass() != AskClass()) {
        return false;
    }
    const auto* source = dynamic_cast<const Group*>(other);
    if (source == nullptr) {
        return false;
    }
    LogForChange();
    *members_ = *source->members_; // assignment, not clear and insert: the source may be this group
    return true;
}

bool Group::AddObject(TaggedObject* object) {
    if (object == nullptr) {
        return false;
    }
    LogForChange();
    return members_->insert(object).second;
}

void Group::AddObjects(std::vector<TaggedObject*>& objects) {
    LogForChange();
    for (TaggedObject* object : objects) {
        AddObject(object);
    }
}

bool Group::RemoveObject(TaggedObject* object) {
    if (object == nullptr) {
        return false;
    }
    LogForChange();
    return members_->erase(object) == 1;
}

bool Group::FindObject(TaggedObject* object) const {
    return members_->count(object) != 0; // null is never a member
}

void Group::AskMembers(std::vector<TaggedObject*>& members) const {
    members.insert(members.end(), members_->begin(), members_->end());
}

void Group::AskAllMemberIds(std::set<int>& ids) const {
    for (const TaggedObject* member : *members_) {
        ids.insert(member->GetId());
    }
}

int Group::AskCount() const {
    return static_cast<int>(members_->size());
}

void Group::Clear() {
    LogForChange();
    members_->clear();
}

} // namespace Tessera::Core
