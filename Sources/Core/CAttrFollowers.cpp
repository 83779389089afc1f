// Who follows the attributes of an object, and whose attributes it follows.
#include "CAttrFollowers.h"

#include "CObject.h"

namespace qel {

CAttrFollowers::~CAttrFollowers()
{
    stopFollowing();
    for (const auto& [follower, names] : followers_) {
        follower->sources_.erase(this);
    }
}

void CAttrFollowers::follow(CAttrFollowers& source, const CString& sourceName, const CString& ownName)
{
    FollowedNames& names = source.followers_[this];
    if (sourceName.isEmpty()) {
        names.clear();
    } else {
        names[sourceName] = ownName;
    }
    sources_.insert(&source);
}

void CAttrFollowers::stopFollowing()
{
    for (CAttrFollowers* source : sources_) {
        source->followers_.erase(this);
    }
    sources_.clear();
}

CError CAttrFollowers::tell(const CString& key, const CAttrValue& value)
{
    if (followers_.empty()) {
        return {};
    }
    const CObject::CHold ownerHold(owner_);
    std::vector<CAttrFollowers*> followers;
    for (const auto& [follower, names] : followers_) {
        followers.push_back(follower);
    }
    for (CAttrFollowers* follower : followers) {
        const auto entry = followers_.find(follower);
        if (owner_.isReleased() || entry == followers_.end()) {
            continue;
        }
        CString followerKey = key;
        if (!entry->second.empty()) {
            const auto followed = entry->second.find(key);
            if (followed == entry->second.end()) {
                continue;
            }
            followerKey = followed->second;
        }
        const CObject::CHold hold(follower->owner_);
        QEL_TRY(follower->owner_.onAttrChanged(owner_, followerKey, value), owner_.getFullName());
    }
    return {};
}

} // namespace qel
