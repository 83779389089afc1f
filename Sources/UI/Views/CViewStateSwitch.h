// Sets attributes of views by a value.
#pragma once

#include "CObject.h"

#include <utility>
#include <vector>

namespace qel {

class CStateSwitchSource;

// Tag `ui:view-state-switch`. Whenever the watched value changes, one of two lists of attributes is set on
// all targets: "active-attrs" if it equals "value", otherwise "inactive-attrs". Begins when the tree of the
// window is complete.
//
//     target                          paths of views, with blanks in between
//     ui-param, or bridge             path of the object that knows the value (CStateSwitchSource), with
//                                     "element" and "group-selector" for its use
//     group-selector                  without those: the object whose "group-index" is the value
//     value                           compared as numbers if both are, otherwise as texts
//     active-attrs, inactive-attrs    "name=value", several with ";" in between
//     union, union-id                 path of an object, and a name: of all switches with both in common any
//                                     one that is active makes all of them active
class CViewStateSwitch : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    // Fails for lists that cannot be read, without targets, and for a union without an id.
    CError init() override;
    CError initChilds() override;
    void release() override;
    CError onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value) override;

    // The tree is complete: finds the targets and begins to watch.
    virtual CError onContentReady(const CAttrMap& parameters);

    // --- for the source
    const CString& getElement() const { return element_; }
    const CString& getGroupSelector() const { return groupSelector_; }
    CError setWatchedValue(const CAttrValue& value);
    // The source ends before the switch.
    void forgetSource() { source_ = nullptr; }

    // --- for the union
    // Sets the list on all targets.
    CError apply(bool isActive);

private:
    using Attrs = std::vector<std::pair<CString, CString>>;

    static bool parseAttrs(const CString& text, Attrs& out);
    CError findTargets();
    CError joinUnion();
    CError startWatching();
    CError tellUnion(const char* event, bool isActive);
    bool isValue(const CAttrValue& value) const;

    Attrs activeList_;
    Attrs inactiveList_;
    std::vector<CString> targetNames_; // in full: what ends meanwhile is passed over
    CString unionName_;
    CStateSwitchSource* source_ = nullptr;
    bool isWatching_ = false;

    // Bound attributes.
    CString target_;
    CString bridge_;
    CString element_;
    CString groupSelector_;
    CString uiParam_;
    CString value_;
    CString union_;
    CString unionId_;
    CString activeAttrs_;
    CString inactiveAttrs_;
};

} // namespace qel
