// The UI side's end of the wire to an instance.
#include "CAudioInterfaceClientConnector.h"

#include "CAudioInterfaceBaseConnector.h"
#include "CAudioInterfaceClient.h"
#include "CNotifyServer.h"

#include <charconv>
#include <utility>

namespace qel {

namespace {

constexpr const char* kProxyEvent = "process-base-data-proxy";
constexpr const char* kEvent = "process-base-data";

CObject* rootOfVar(const CString& text)
{
    const std::string digits = text.toUtf8();
    std::uintptr_t address = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), address, 16);
    const bool isWhole = result.ec == std::errc() && result.ptr == digits.data() + digits.size();
    return isWhole ? reinterpret_cast<CObject*>(address) : nullptr;
}

} // namespace

void CAudioInterfaceClientConnector::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
    info.handleEvent<&CAudioInterfaceClientConnector::onProcessBaseData>(kEvent);
}

void CAudioInterfaceClientConnector::attachTo(CAudioInterfaceBaseConnector& base)
{
    listenObject(getFullName(), kProxyEvent, kEvent);
    listenObject(CNotifyServer::kServerName, CNotifyServer::kLoopEvent, kEvent);
    base_ = &base;
    index_ = base.attachClient(*this);
}

void CAudioInterfaceClientConnector::leaveBase()
{
    if (base_) {
        std::exchange(base_, nullptr)->detachClient(*this);
    }
}

void CAudioInterfaceClientConnector::release()
{
    leaveBase();
    {
        const CLock lock(lock_);
        queue_.clear();
    }
    CObject::release();
}

void CAudioInterfaceClientConnector::receive(const CByteBuffer& record)
{
    {
        const CLock lock(lock_);
        queue_.push_back(record);
    }
    postWaiting();
}

// One event is under way for all that a queue holds.
void CAudioInterfaceClientConnector::postWaiting()
{
    CNotifyServer* const server = getNotifyServer();
    if (!server) {
        return;
    }
    const std::int32_t loop = server->getLoopNumber();
    {
        const CLock lock(lock_);
        if (queue_.empty() || postedTo_ == loop) {
            return;
        }
        postedTo_ = loop;
    }
    if (!server->tryPost(getFullName(), kProxyEvent)) {
        const CLock lock(lock_);
        postedTo_ = kNoLoop;
    }
}

CError CAudioInterfaceClientConnector::sendToBase(const CByteBuffer& record)
{
    if (!base_) {
        return {};
    }
    // A host that is told of a change may close the editor at once.
    const CHold hold(*this);
    CError error = base_->processClientData(index_, record);
    postWaiting(); // what could not be posted when it came
    return error;
}

CError CAudioInterfaceClientConnector::onProcessBaseData(const CAttrMap&)
{
    if (!client_) {
        const CLock lock(lock_);
        queue_.clear();
        postedTo_ = kNoLoop;
        QEL_FAIL(getFullName(), "@qelstr_CAudioInterfaceClientConnector_onProcessBaseData_NoClientObject "
                                "No client object defined.");
    }
    if (std::exchange(isProcessing_, true)) {
        return {}; // the call further out goes on with it, behind what came before
    }
    for (;;) {
        std::vector<CByteBuffer> records;
        {
            const CLock lock(lock_);
            records.swap(queue_);
            postedTo_ = kNoLoop;
        }
        if (records.empty()) {
            break;
        }
        for (const CByteBuffer& record : records) {
            if (client_) { // acting on a record may close the window
                traceError(client_->processRecord(record));
            }
        }
    }
    isProcessing_ = false;
    return {};
}

CAttrValue CAudioInterfaceClientConnectorVST::rootVarOf(const CObject& audioRoot)
{
    char digits[2 * sizeof(std::uintptr_t)];
    const auto end =
        std::to_chars(digits, digits + sizeof(digits), reinterpret_cast<std::uintptr_t>(&audioRoot), 16).ptr;
    return CAttrValue(CString(std::string_view(digits, static_cast<std::size_t>(end - digits))));
}

void CAudioInterfaceClientConnectorVST::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioInterfaceClientConnectorVST;
    CAudioInterfaceClientConnector::buildClassInfo(info);
    info.bind<&Self::basePath_>("base-connector", "");
}

CError CAudioInterfaceClientConnectorVST::init()
{
    QEL_TRY(CAudioInterfaceClientConnector::init(), getFullName());
    CObject* audioRoot = rootOfVar(getRoot()->getAttrString(kRootVar));
    if (!audioRoot) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioInterfaceClientConnectorVST_init_NoVar 'PluginRootPtrVar' variable "
                 "not defined!");
    }
    CAudioInterfaceBaseConnector* base = nullptr;
    QEL_TRY(audioRoot->require(base, basePath_,
                               "@qelstr_CAudioInterfaceClientConnectorVST_init_InvalidConnector Invalid base "
                               "connector '%1' specified."),
            getFullName());
    attachTo(*base);
    return {};
}

} // namespace qel
