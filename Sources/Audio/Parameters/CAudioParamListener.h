// Hears of every change to a parameter of one instance.
#pragma once

#include "CAudioParamContext.h"
#include "CBridge.h"

namespace qel {

// A bridge on a collector: attach(&collector) begins, detach() ends it. Notices come in the thread that
// wrote, outside the parameter's lock unless the writer held it, and not for writes whose context names this
// bridge as their sender. As with any bridge, a derived class calls endLink() first thing in its destructor,
// holding no lock that onParamChange() takes.
class CAudioParamListener : public CBridge
{
public:
    virtual void onParamChange(const CAudioParamNotice& notice) = 0;

    void update(CBridge* sender, std::uintptr_t userWord) final;

    // Tells all listeners of a source.
    static void tellAll(CBridgeBase& source, const CAudioParamNotice& notice);
};

// A listener that calls a method of its owner.
template <class T>
class COwnedParamListener : public CAudioParamListener
{
public:
    using Method = void (T::*)(const CAudioParamNotice& notice);

    COwnedParamListener(T& owner, Method method) : owner_(&owner), method_(method) {}
    ~COwnedParamListener() override { endLink(); }

    void onParamChange(const CAudioParamNotice& notice) override { (owner_->*method_)(notice); }

private:
    T* owner_;
    Method method_;
};

} // namespace qel
