// Sets attributes of views by a value.
#include "CViewStateSwitch.h"

#include "CStateSwitchSource.h"
#include "CView.h"
#include "CViewStateSwitchObject.h"
#include "NumberSyntax.h"

namespace qel {

namespace {

constexpr const char* kGroupIndex = "group-index";
constexpr const char* kUnionTag = "view-state-switch-object";
// The group index under the name it is followed by here; no name a tree would use.
constexpr const char* kFollowed = "*value";
constexpr double kSameNumber = 1e-9;

} // namespace

void CViewStateSwitch::buildClassInfo(CClassInfo& info)
{
    using Self = CViewStateSwitch;
    CObject::buildClassInfo(info);
    info.bind<&Self::target_>("target", "");
    info.bind<&Self::bridge_>("bridge", "");
    info.bind<&Self::element_>("element", "");
    info.bind<&Self::groupSelector_>("group-selector", "");
    info.bind<&Self::uiParam_>("ui-param", "");
    info.bind<&Self::value_>("value", "");
    info.bind<&Self::union_>("union", "");
    info.bind<&Self::unionId_>("union-id", "");
    info.bind<&Self::activeAttrs_>("active-attrs", "");
    info.bind<&Self::inactiveAttrs_>("inactive-attrs", "");
    info.handleEvent<&Self::onContentReady>("content-ready");
}

CError CViewStateSwitch::init()
{
    QEL_TRY(CObject::init(), getFullName());
    if (!parseAttrs(activeAttrs_, activeList_)) {
        QEL_FAIL(getFullName(), "@qelstr_CViewStateSwitch_init_ActiveAttrs Invalid active-attrs syntax.");
    }
    if (!parseAttrs(inactiveAttrs_, inactiveList_)) {
        QEL_FAIL(getFullName(), "@qelstr_CViewStateSwitch_init_InactiveAttrs Invalid inactive-attrs syntax.");
    }
    if (target_.splitWords().empty()) {
        QEL_FAIL(getFullName(), "@qelstr_CViewStateSwitch_init_NoTargets No target views specified.");
    }
    if (!union_.isEmpty() && unionId_.isEmpty()) {
        QEL_FAIL(getFullName(), "@qelstr_CViewStateSwitch_init_NoUnionId Invalid ID of view disabler.");
    }
    return {};
}

CError CViewStateSwitch::initChilds()
{
    QEL_TRY(CObject::initChilds(), getFullName());
    for (CObject* above = getParent(); above; above = above->getParent()) {
        if (const auto* view = dynamic_cast<const CViewBaseState*>(above)) {
            // In a window that is open already nobody calls.
            return view->getViewContext().isContentReady() ? onContentReady({}) : CError();
        }
    }
    return {};
}

void CViewStateSwitch::release()
{
    if (source_) {
        source_->removeSwitch(*this);
        source_ = nullptr;
    }
    if (!unionName_.isEmpty()) {
        if (CError error = tellUnion(CViewStateSwitchObject::kUnregister, false)) {
            traceError(error);
        }
        unionName_.clear();
    }
    CObject::release();
}

bool CViewStateSwitch::parseAttrs(const CString& text, Attrs& out)
{
    if (text.isEmpty()) {
        return true;
    }
    for (const CString& item : text.split(u';')) {
        const std::size_t equals = item.find(u'=');
        const std::vector<CString> name = item.substring(0, equals).splitWords();
        if (equals == CString::kNone || name.size() != 1) {
            return false;
        }
        out.emplace_back(name[0], item.substring(equals + 1));
    }
    return true;
}

// --- start

CError CViewStateSwitch::onContentReady(const CAttrMap&)
{
    if (isWatching_) {
        return {};
    }
    isWatching_ = true;
    QEL_TRY(findTargets(), getFullName());
    QEL_TRY(joinUnion(), getFullName());
    QEL_TRY(startWatching(), getFullName());
    return {};
}

CError CViewStateSwitch::findTargets()
{
    for (const CString& path : target_.splitWords()) {
        const auto* view = dynamic_cast<const CViewBasePlacement*>(findObject(path));
        if (!view) {
            QEL_FAIL(getFullName(),
                     "@qelstr_CViewStateSwitch_findTargets_NotFound Unable to locate target view.");
        }
        targetNames_.push_back(view->getFullName());
    }
    return {};
}

CError CViewStateSwitch::joinUnion()
{
    if (union_.isEmpty()) {
        return {};
    }
    CObject* const owner = findObject(union_);
    if (!owner) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CViewStateSwitch_joinUnion_NotFound View disabler union object not found.");
    }
    CObject* shared = owner->findChild(kUnionTag);
    if (!shared) {
        QEL_TRY(owner->createChild(shared, kUnionTag, kUnionTag), getFullName());
    }
    unionName_ = shared->getFullName();
    return tellUnion(CViewStateSwitchObject::kRegister, false);
}

CError CViewStateSwitch::startWatching()
{
    const CString& path = uiParam_.isEmpty() ? bridge_ : uiParam_;
    CObject* const object = findObject(path.isEmpty() ? groupSelector_ : path);
    if (auto* source = path.isEmpty() ? nullptr : dynamic_cast<CStateSwitchSource*>(object)) {
        source_ = source;
        return source->addSwitch(*this);
    }
    if (!path.isEmpty() || !object || groupSelector_.isEmpty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CViewStateSwitch_startWatching_NoValue Unable to locate value to watch '%1'.",
                 path.isEmpty() ? groupSelector_ : path);
    }
    listenAttribute(*object, kGroupIndex, kFollowed);
    return setWatchedValue(CAttrValue(object->getAttrInt(kGroupIndex)));
}

// --- values

CError CViewStateSwitch::onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value)
{
    return key == kFollowed ? setWatchedValue(value) : CObject::onAttrChanged(sender, key, value);
}

bool CViewStateSwitch::isValue(const CAttrValue& value) const
{
    const CString text = value.toString();
    const auto wanted = parseReal(value_);
    const auto present = parseReal(text);
    if (wanted && present) {
        return *wanted - *present < kSameNumber && *present - *wanted < kSameNumber;
    }
    return text == value_;
}

CError CViewStateSwitch::setWatchedValue(const CAttrValue& value)
{
    const bool isActive = isValue(value);
    return unionName_.isEmpty() ? apply(isActive) : tellUnion(CViewStateSwitchObject::kUpdate, isActive);
}

CError CViewStateSwitch::tellUnion(const char* event, bool isActive)
{
    CObject* const shared = findObject(unionName_);
    if (!shared) {
        return {}; // it has ended with its window
    }
    CAttrMap parameters;
    parameters["union-id"] = CAttrValue(unionId_);
    parameters["switch"] = CAttrValue(getFullName());
    parameters["is-active"] = CAttrValue(isActive);
    return sendEvent(*shared, event, parameters);
}

CError CViewStateSwitch::apply(bool isActive)
{
    const CHold hold(*this);
    CError first;
    for (const CString& name : targetNames_) {
        for (const auto& [key, value] : isActive ? activeList_ : inactiveList_) {
            CObject* const target = isReleased() ? nullptr : findObject(name);
            CError error = target ? target->setAttribute(key, value, true) : CError();
            if (!first) {
                first = std::move(error);
            }
        }
    }
    return first;
}

} // namespace qel
