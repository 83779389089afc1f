// What is done to a whole group of channels.
#include "CParamGroupController.h"

#include "CParamBridgeAudio.h"
#include "CParamGroupSelector.h"
#include "ChannelLayout.h"

#include <algorithm>

namespace qel {

namespace {

std::int32_t numberOf(const CAttrMap& parameters, const char* name, std::int32_t fallback)
{
    const auto entry = parameters.find(name);
    return entry == parameters.end() ? fallback : entry->second.toInteger().value_or(fallback);
}

} // namespace

void CParamGroupController::buildClassInfo(CClassInfo& info)
{
    using Self = CParamGroupController;
    CObject::buildClassInfo(info);
    info.bind<&Self::clientPath_>("interface-client", "");
    info.bind<&Self::selectorPath_>("group-selector", "");
    info.bind<&Self::title_>("title", "Group");
    info.bind<&Self::isUndoDisabled_>("is-undo-disabled", false);
    info.handleEvent<&Self::onCopyGroup>("copy-group");
    info.handleEvent<&Self::onResetGroup>("reset-group");
    info.handleEvent<&Self::onGroupChange>(CParamGroupSelector::kGroupChange);
    info.handleEvent<&Self::onGroupCount>("update-group-count");
}

CError CParamGroupController::init()
{
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(require(client_, clientPath_,
                    "@qelstr_CParamGroupController_init_NoInterfaceClient No interfacing object '%1' found."),
            getFullName());
    QEL_TRY(
        require(selector_, selectorPath_,
                "@qelstr_CParamGroupController_init_NoGroupSelector No group selector object '%1' found."),
        getFullName());
    listenObject(selectorPath_, CParamGroupSelector::kGroupChange, CParamGroupSelector::kGroupChange);
    listenObject(clientPath_, "update-group-count", "update-group-count");
    return {};
}

CError CParamGroupController::initChilds()
{
    QEL_TRY(CObject::initChilds(), getFullName());
    for (std::size_t i = 0; i < getChildCount(); ++i) {
        CObject& child = *getChild(i);
        const CString path = child.getAttrString("bridge");
        CString param = child.getAttrString("param");
        if (!path.isEmpty()) {
            CParamBridgeAudio* bridge = nullptr;
            QEL_TRY(
                child.require(bridge, path,
                              "@qelstr_CParamGroupController_initChilds_NoBridge Invalid parameter bridge "
                              "object '%1'."),
                getFullName());
            param = bridge->getParam();
        }
        if (!param.isEmpty()) {
            client_->watchParam(param);
            params_.push_back(param);
        }
    }
    return {};
}

// --- events

CError CParamGroupController::onCopyGroup(const CAttrMap& parameters)
{
    return copyGroup(numberOf(parameters, "source", selector_->getGroup()),
                     numberOf(parameters, "index", -1));
}

CError CParamGroupController::onResetGroup(const CAttrMap& parameters)
{
    return resetGroup(numberOf(parameters, "index", selector_->getGroup()));
}

CError CParamGroupController::onGroupChange(const CAttrMap& parameters)
{
    return notify(CParamGroupSelector::kGroupChange, parameters, false);
}

// A group that has gone is not to stay selected.
CError CParamGroupController::onGroupCount(const CAttrMap&)
{
    const std::int32_t count = client_->getEnvironment().groups;
    return count > 0 && selector_->getGroup() >= count ? selector_->setGroup(count - 1) : CError();
}

// --- actions

bool CParamGroupController::isGroup(std::int32_t group) const
{
    return group >= 0 && group < client_->getEnvironment().groups;
}

CString CParamGroupController::stepName(std::int32_t group, const char* action) const
{
    return isUndoDisabled_ ? CString()
                           : title_ + CString(" (") + layout::groupName(*client_, group) + CString(action);
}

CError CParamGroupController::tell(std::int32_t group)
{
    return notify(CParamGroupSelector::kGroupChange, {{"index", CAttrValue(group)}}, false);
}

CError CParamGroupController::copyGroup(std::int32_t from, std::int32_t to)
{
    client_->takeWaiting();
    if (!isGroup(from) || !isGroup(to) || from == to) {
        return {};
    }
    record::CChangeParams change{
        .stepName = stepName(to, ") copy"), .source = getObjectNumber(), .mergeable = false, .writes = {}};
    for (const CString& param : params_) {
        const CAudioInterfaceParam& source = client_->watchParam(param);
        if (!source.info.valid || source.info.isSingleGroup) {
            continue;
        }
        const CAudioParamStorage& values = source.values;
        const std::int32_t stored = values.getCount(from);
        const std::int32_t count = stored > 0 ? stored : values.getFillCount();
        record::CParamWrite write{
            .param = param, .group = to, .start = 0, .resize = true, .values = {}, .texts = {}};
        for (std::int32_t entry = 0; entry < count; ++entry) {
            if (values.isString()) {
                write.texts.push_back(values.getString(from, entry));
                continue;
            }
            for (std::int32_t element = 0; element < values.getEsize(); ++element) {
                write.values.push_back(values.get(from, entry, element));
            }
        }
        change.writes.push_back(std::move(write));
    }
    QEL_TRY(change.writes.empty() ? CError() : client_->send(change), getFullName());
    return tell(to);
}

CError CParamGroupController::resetGroup(std::int32_t group)
{
    client_->takeWaiting();
    if (!isGroup(group)) {
        return {};
    }
    record::CResetParams reset{.stepName = stepName(group, ") reset"),
                               .params = {},
                               .group = group,
                               .entry = -1,
                               .toInitial = false};
    for (const CString& param : params_) {
        const CAudioInterfaceParam& source = client_->watchParam(param);
        if (source.info.valid && !source.info.isSingleGroup) {
            reset.params.push_back(param);
        }
    }
    QEL_TRY(reset.params.empty() ? CError() : client_->send(reset), getFullName());
    return tell(group);
}

} // namespace qel
