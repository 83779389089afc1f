// Who follows the attributes of an object, and whose attributes it follows.
#include "CAttrFollowers.h"

#include "CObject.h"

namespace qel {

CAttrFollowers::Links& CAttrFollowers::links()
{
    if (!links_) {
        links_ = std::make_unique<Links>();
    }
    return *links_;
}

CAttrFollowers::~CAttrFollowers()
{
    if (!links_) {
        return;
    }
    stopFollowing();
    for (const auto& [follower, names] : links_->followers) {
        follower->links_->sources.erase(this);
    }
}

void CAttrFollowers::follow(CAttrFollowers& source, const CString& sourceName, const CString& ownName)
{
    FollowedNames& names = source.links().followers[this];
    if (sourceName.isEmpty()) {
        names.clear();
    } else {
        names[sourceName] = ownName;
    }
    links().sources.insert(&source);
}

void CAttrFollowers::stopFollowing()
{
    if (!links_) {
        return;
    }
    for (CAttrFollowers* source : links_->sources) {
        source->links_->followers.erase(this);
    }
    links_->sources.clear();
}

CError CAttrFollowers::tell(const CString& key, const CAttrValue& value)
{
    if (!links_ || links_->followers.empty()) {
        return {};
    }
    const CObject::CHold ownerHold(owner_);
    std::vector<CAttrFollowers*> followers;
    for (const auto& [follower, names] : links_->followers) {
        followers.push_back(follower);
    }
    for (CAttrFollowers* follower : followers) {
        const auto entry = links_->followers.find(follower);
        if (owner_.isReleased() || entry == links_->followers.end()) {
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
