// Group - an ordered set of model objects; it refers to its members and never owns them.
//
// Members   ordered by address; each must outlive the group or be removed first. Membership does not set a
//           member's own group pointer (DisplayableObject::SetGroup): callers keep the two together.
// Reports   every change of the set tells the host before it is made, also one that turns out to be none.
#pragma once

#include <memory>
#include <set>
#include <vector>

#include "tessera/core/TaggedObject.h"

namespace Tessera::Core {

class TESSERA_API Group : public TaggedObject {
public:
    Group();
    /// Same identifier and the same (shared) member set; Copy() is the independent copy.
    Group(const Group&) = default;
    Group& operator=(const Group&) = default;
    ~Group() override = default;

    int AskClass() const override { return ClassID_Group; }
    /// New identifier, own set with the same members; caller deletes.
    Group* Copy() const override;
    /// Moves every member once, those of nested groups included, however groups contain each other.
    void Transform(double m[3][3]) override;
    /// Members whose identifier is in `ids` are deep-copied along; the others are left out.
    Group* DeepCopy(std::set<int>& ids, std::map<int, TaggedObject*>& copies) const override;
    /// Takes the members of another group; false and unchanged for anything else.
    bool Replace(TaggedObject* other) override;

    /// True when the object is newly in; false for null (not reported) and for a member.
    bool AddObject(TaggedObject* object);
    /// AddObject for each; reports once for the call and once for each object.
    void AddObjects(std::vector<TaggedObject*>& objects);
    /// True when the object was a member; false for null (not reported) and for a stranger.
    bool RemoveObject(TaggedObject* object);
    /// False for null.
    bool FindObject(TaggedObject* object) const;
    /// Appends the members in order.
    void AskMembers(std::vector<TaggedObject*>& members) const;
    /// Adds the members' identifiers; those of a nested group's members are not among them.
    void AskAllMemberIds(std::set<int>& ids) const;
    int AskCount() const;
    void Clear();

private:
    using MemberSet = std::set<TaggedObject*>;
    std::shared_ptr<MemberSet> members_;
};

} // namespace Tessera::Core
