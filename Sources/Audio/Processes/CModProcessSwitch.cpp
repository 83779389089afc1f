// One of several processes in one place of the graph.
#include "CModProcessSwitch.h"

#include "NumberSyntax.h"
#include "ParamRounding.h"

#include <algorithm>

namespace qel {

namespace {

enum : int
{
    kIndexSlot
};

bool isBelow(const CObject* object, const CObject& ancestor)
{
    while (object && object != &ancestor) {
        object = object->getParent();
    }
    return object != nullptr;
}

} // namespace

// --- definition

void CModProcessSwitchDef::buildClassInfo(CClassInfo& info)
{
    using Self = CModProcessSwitchDef;
    CAudioProcessDefBase::buildClassInfo(info);
    info.bind<&Self::defIndex_>("def-index", 0);
    info.bind<&Self::element_>("is-element", 0);
    info.bind<&Self::childName_>("def-child-name", "");
    info.bind<&Self::processList_>("process-list", "");
}

CError CModProcessSwitchDef::init()
{
    QEL_TRY(CAudioProcessDefBase::init(), getFullName());
    element_ = std::max(element_, 0);
    if (processList_.isEmpty()) {
        return {};
    }
    std::size_t number = 0;
    for (const CString& text : processList_.split(u';')) {
        QEL_TRY(readItem(text, ++number), getFullName());
    }
    return {};
}

CError CModProcessSwitchDef::readItem(const CString& text, std::size_t number)
{
    const auto shown = static_cast<std::int32_t>(number);
    const std::size_t colon = text.find(u':');
    if (colon == CString::kNone) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CModProcessSwitchDef_init_NoIndex No index delimiter ':' found in item #%1.",
                 shown);
    }
    const CString indexText = text.substring(0, colon);
    const std::optional<std::int32_t> index = parseInteger(indexText);
    if (!index) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CModProcessSwitchDef_init_IndexError Invalid index value '%1' in item #%2.",
                 indexText, shown);
    }
    if (find(*index) != items_.size()) {
        QEL_FAIL(
            getFullName(),
            "@qelstr_CModProcessSwitchDef_init_IndexDupeError Duplicate index value '%1' used in item #%2.",
            indexText, shown);
    }
    CString path = text.substring(colon + 1);
    if (path.isEmpty() && childName_.isEmpty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CModProcessSwitchDef_init_NameEmpty "
                 "Process's name for index %1 is empty while default name is not provided.",
                 indexText);
    }
    if (path.isEmpty()) {
        path = "." + childName_;
    }
    items_.push_back({*index, path, nullptr});
    return {};
}

// Only what stands below the switch can be its child; anything else, such as a path to the switch itself,
// would be built without end.
CError CModProcessSwitchDef::initChilds()
{
    QEL_TRY(CAudioProcessDefBase::initChilds(), getFullName());
    for (Item& item : items_) {
        const CObject* found = findObject(item.path);
        item.def = dynamic_cast<const CAudioProcessDefBase*>(found);
        if (!item.def || found == this || !isBelow(found, *this)) {
            QEL_FAIL(getFullName(),
                     "@qelstr_CModProcessSwitchDef_init_DefNotFound "
                     "Process definition object '%1' not found for index %2.",
                     item.path, item.index);
        }
    }
    return {};
}

std::unique_ptr<CAudioProcessBase> CModProcessSwitchDef::createProcess() const
{
    return std::make_unique<CModProcessSwitch>(*this);
}

std::size_t CModProcessSwitchDef::find(std::int32_t index) const
{
    const auto item =
        std::find_if(items_.begin(), items_.end(), [index](const Item& each) { return each.index == index; });
    return static_cast<std::size_t>(item - items_.begin());
}

std::size_t CModProcessSwitchDef::place(std::int32_t index) const
{
    const std::size_t found = find(index);
    return found != items_.size() ? found : find(defIndex_);
}

// --- process

CError CModProcessSwitch::init()
{
    QEL_TRY(CModProcessSeq::init(), fullName());
    for (const CModProcessSwitchDef::Item& item : switchDef_.items()) {
        const CString& name = switchDef_.childName();
        QEL_TRY(addMember(*item.def, name.isEmpty() ? item.def->getName() : name), fullName());
    }
    selected_ = memberCount();
    select(switchDef_.defIndex());
    return {};
}

void CModProcessSwitch::applyEvents()
{
    const int readGroup = group() == kGroupOfChannel ? format().group : group();
    const bool isBound = slots().entryCount(kIndexSlot, readGroup) > 0;
    select(isBound ? roundParam(slots().value(kIndexSlot, readGroup, switchDef_.element()))
                   : switchDef_.defIndex());
}

void CModProcessSwitch::select(std::int32_t index)
{
    const std::size_t place = switchDef_.place(index);
    if (place != selected_) {
        selected_ = place;
        fadeTo(place, std::min(place + 1, memberCount()));
    }
}

} // namespace qel
