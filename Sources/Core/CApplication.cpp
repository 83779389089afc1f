// Start and end of the library, and the roots of its trees.
#include "CApplication.h"

#include "CBridge.h"
#include "CNotifyServer.h"
#include "CObject.h"
#include "CSystem.h"
#include "NumberSyntax.h"
#include "Trace.h"
#include "WindowClasses.h"

#include <atomic>

namespace qel {

namespace {

constexpr const char* kMaker = "Brintal";
constexpr const char* kProduct = "Drumfell";

// What a window can be drawn at; anything else in the setting was never written by us.
constexpr double kMinUIScale = 0.25;
constexpr double kMaxUIScale = 8.0;

std::atomic<CApplication*> theApplication{nullptr};

// Brings up a tree whose root stands alone.
CError initTree(CObject& root, const CString& fileName)
{
    if (!fileName.isEmpty()) {
        return root.loadCompiled(fileName, true);
    }
    QEL_TRY(root.init(), {});
    QEL_TRY(root.applyAttrs(), {});
    QEL_TRY(root.initChilds(), {});
    return {};
}

} // namespace

// --- start and end

CError CApplication::start(const CApplicationParts& parts)
{
    if (get()) {
        QEL_FAIL({}, "@qelstr_CApplication_start_Running Application is running already.");
    }
    std::unique_ptr<CApplication> application(new CApplication());
    QEL_TRY(registerWindowClasses(), {});
    CApplication* const running = application.release();
    theApplication = running;
    if (CError error = running->initApplication(parts)) {
        finish();
        return reportError(std::move(error), __FILE__, __LINE__);
    }
    return {};
}

void CApplication::finish()
{
    CApplication* const application = get();
    if (!application) {
        return;
    }
    application->finishApplication();
    theApplication = nullptr;
    delete application;
    platform::unregisterWindowClasses();
}

CApplication* CApplication::get()
{
    return theApplication;
}

CApplication::CApplication() : modulePath_(CSystem::modulePath())
{
    // Statics end in the reverse order of their beginning, and the settings of a library that ends with the
    // process still unlink their bridges. So the registry of links has to begin now.
    const CBridgeBase firstUser;
}

CApplication::~CApplication() = default;

double CApplication::getUIScale()
{
    const double scale = parseReal(localData_.loadString("ui-scale", {})).value_or(1.0);
    return scale >= kMinUIScale && scale <= kMaxUIScale ? scale : 1.0;
}

CError CApplication::registerWindowClasses()
{
    platform::WindowClass failed = platform::WindowClass::kNone;
    const int code = platform::registerWindowClasses(kMaker, kProduct, failed);
    if (code == 0) {
        return {};
    }
    if (failed == platform::WindowClass::kTimer) {
        QEL_FAIL({},
                 "@qelstr_CTimerClass_init_ClassRegError Unable to register timer window class: error %1.",
                 code);
    }
    QEL_FAIL({}, "@qelstr_CWindowClass_init_BridgeClass Unable to register bridge window class (error %1).",
             code);
}

CError CApplication::initApplication(const CApplicationParts& parts)
{
    trace("Initializing application...");
    if (parts.creators) {
        QEL_TRY(registerCreators(parts.creators), {});
    }
    if (parts.resources) {
        registerResourceDirectory(parts.resources);
    }
    traceError(initSharedObject(parts.sharedFile));
    return {};
}

void CApplication::finishApplication()
{
    trace("Finalizing application...");
    CObject::releaseObject(CObject::sharedObject());
    CObject::setSharedObject(nullptr);
    clearCreators();
}

// --- trees

CError CApplication::initSharedObject(const CString& fileName)
{
    if (CObject::sharedObject()) {
        QEL_FAIL({}, "@qelstr_CApplication_initSharedObject Shared object already exists.");
    }
    auto* const root = new CObject();
    CObject::setSharedObject(root);
    if (CError error = initTree(*root, fileName)) {
        CObject::releaseObject(root);
        CObject::setSharedObject(nullptr);
        return reportError(std::move(error), __FILE__, __LINE__, fileName);
    }
    return {};
}

CError CApplication::initRootObject(CObject*& outRoot, const CString& fileName)
{
    outRoot = nullptr;
    if (!CObject::sharedObject()) {
        QEL_FAIL({}, "@qelstr_CApplication_initRootObject No shared object created.");
    }
    auto* const root = new CObject();
    auto* const server = new CNotifyServer();
    {
        const CLock lock(instanceSection_);
        server->setInstanceNumber(++lastInstanceNumber_);
        instances_[lastInstanceNumber_] = server;
    }
    root->setNotifyServer(server);
    if (CError error = initTree(*root, fileName)) {
        releaseRootObject(root);
        return reportError(std::move(error), __FILE__, __LINE__, fileName);
    }
    outRoot = root;
    return {};
}

void CApplication::releaseRootObject(CObject* root)
{
    if (!root) {
        return;
    }
    CNotifyServer* const server = root->getNotifyServer();
    CObject::releaseObject(root);
    {
        const CLock lock(instanceSection_);
        instances_.erase(server->getInstanceNumber());
    }
    delete server;
}

CNotifyServer* CApplication::findInstance(std::int32_t number)
{
    const CLock lock(instanceSection_);
    const auto entry = instances_.find(number);
    return entry == instances_.end() ? nullptr : entry->second;
}

} // namespace qel
