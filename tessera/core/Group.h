// Group - an ordered set of model objects; it refers to its members and never owns them.
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
    void Transform(double m[3][3]) override;
    /// Members whose identifier is in `ids` are deep-copied along; the others are left out.
    Group* DeepCopy(std::set<int>& ids, std::map<int, TaggedObject*>& copies) const override;
    bool Replace(TaggedObject* other) override;

    bool AddObject(TaggedObject* object);
    void AddObjects(std::vector<TaggedObject*>& objects);
    bool RemoveObject(TaggedObject* object);
    bool FindObject(TaggedObject* object) const;
    void AskMembers(std::vector<TaggedObject*>& members) const;
    void AskAllMemberIds(std::set<int>& ids) const;
    int AskCount() const;
    void Clear();

private:
    using MemberSet = std::set<TaggedObject*>;
    std::shared_ptr<MemberSet> members_;
};

} // namespace Tessera::Core
