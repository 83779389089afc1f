// Who follows the attributes of an object, and whose attributes it follows.
#pragma once

#include "CAttrValue.h"
#include "CError.h"

#include <map>
#include <memory>
#include <set>

namespace qel {

class CObject;

// A part of every object. Both ends of a link know each other, so that either may go first. Tree's thread.
class CAttrFollowers
{
public:
    explicit CAttrFollowers(CObject& owner) : owner_(owner) {}
    CAttrFollowers(const CAttrFollowers&) = delete;
    CAttrFollowers& operator=(const CAttrFollowers&) = delete;
    ~CAttrFollowers();

    // From now on the owner follows attribute `sourceName` of the source as its own `ownName`. Empty names:
    // every attribute under its own key.
    void follow(CAttrFollowers& source, const CString& sourceName, const CString& ownName);
    // The owner follows nothing any more.
    void stopFollowing();

    // Calls onAttrChanged() of all who follow attribute `key` of the owner, up to the first error. They may
    // start or stop following, or end any object, while they are told.
    CError tell(const CString& key, const CAttrValue& value);

private:
    // Attribute name here -> name there; empty: everything.
    using FollowedNames = CStringMap<CString>;

    struct Links
    {
        std::map<CAttrFollowers*, FollowedNames> followers;
        std::set<CAttrFollowers*> sources;
    };

    Links& links();

    CObject& owner_;
    std::unique_ptr<Links> links_; // null until there is one: most objects have none
};

} // namespace qel
