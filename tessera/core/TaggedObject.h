// TaggedObject - root of the object model: identifiers, copying, replacing and change reports.
//
// Threads   identifiers and callbacks are plain process-wide data of the host's modelling thread.
// Failure   bool results, null pointers or unchanged values; nothing here throws a message. A host that
//           installs getContext without getOwner gets std::bad_function_call from the next report or query.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>

#include "tessera/core/Export.h"

namespace Tessera::Core {

class TaggedObject;

/// Answer of TaggedObject::AskClass.
enum ClassID_e : std::int32_t {
    ClassID_Stroke = 1,
    ClassID_Curve = 2,
    ClassID_Dimension = 3,
    ClassID_Group = 4
};

/// The host's functions; a member without a target is a service that the host does not offer.
struct CRKCoreCallbacks {
    std::function<void*()> getOwner;               ///< host object that owns the model
    std::function<std::int64_t(void*)> getContext; ///< owner -> change context, 0 = none
    std::function<void(std::int64_t, TaggedObject*, std::int32_t)>
        logChange;                                       ///< context, object, change kind
    std::function<std::int32_t(std::int64_t)> askDigits; ///< context -> length-unit code
};

/// Installs a copy of the four callbacks; null changes nothing. The record may die afterwards.
TESSERA_API void TesseraCore_InitCallbacks(CRKCoreCallbacks* callbacks);

/// The document's length-unit code from `askDigits`; 0 without a change context or without that callback.
TESSERA_API std::int32_t AskLengthUnitCode();

/// Adds 1 to the process-wide counter (1000 at start) and returns the new value.
TESSERA_API int GetNextId();
/// The identifier handed out last.
TESSERA_API int GetIdCounter();
/// The next identifier is value + 1; objects keep theirs, so a lower value can make identifiers meet.
TESSERA_API void SetIdCounter(int value);
/// True while the counter stands at 1000: no identifier handed out yet, or the counter set back.
TESSERA_API bool IsPartEmpty();

class TESSERA_API TaggedObject {
public:
    TaggedObject();
    TaggedObject(const TaggedObject&) = default;            ///< the copy has the same identifier
    TaggedObject& operator=(const TaggedObject&) = default; ///< copies the identifier

    // Slot order is part of the binary interface.
    virtual ~TaggedObject() = default;
    /// A value of ClassID_e.
    virtual int AskClass() const = 0;
    /// New shallow copy; caller deletes.
    virtual TaggedObject* Copy() const = 0;
    virtual bool IsDisplayable() const { return false; }
    /// Applies a 3 x 3 homogeneous transform to column vectors; does nothing here.
    virtual void Transform(double m[3][3]);
    /// Copy that keeps the source's identifier and is made at most once per `copies`
    /// (identifier -> copy); caller deletes. `ids` selects the members that a group takes along.
    virtual TaggedObject* DeepCopy(std::set<int>& ids, std::map<int, TaggedObject*>& copies) const;
    /// Replaces this object's content by a copy of another's; false and unchanged when they do not match.
    virtual bool Replace(TaggedObject* other) = 0;
    /// Tells the host that this object is about to change (change kind 2).
    virtual void LogForChange();

    int GetId() const { return id_; }
    /// Takes a fresh identifier from the counter.
    void ResetId();

protected:
    void SetId(int id) { id_ = id; }
    /// SetId through a base pointer, for the deep copies of derived classes.
    static void SetIdOf(TaggedObject& object, int id) { object.id_ = id; }

private:
    std::int32_t id_;
};

} // namespace Tessera::Core
