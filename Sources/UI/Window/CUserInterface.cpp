// One interface: its tree, and what keeps it going.
#include "CUserInterface.h"

#include "CApplication.h"
#include "CInterfaceScale.h"
#include "CUIEventBridge.h"
#include "CWindow.h"

#include <charconv>

namespace qel {

CString pointerText(const void* pointer)
{
    char digits[2 * sizeof(std::uintptr_t)];
    const auto end =
        std::to_chars(digits, digits + sizeof(digits), reinterpret_cast<std::uintptr_t>(pointer), 16).ptr;
    return CString::fromUtf8(std::string(digits, end));
}

CError CUserInterface::create(const std::vector<std::pair<CString, CString>>& attributes)
{
    release();
    CApplication* const application = CApplication::get();
    if (!application) {
        QEL_FAIL({}, "@qelstr_CUserInterface_create_NoApp No application object created.");
    }
    CInterfaceScale::readSetting();
    QEL_TRY(application->initRootObject(root_), {});
    generation_ = std::make_shared<int>();
    for (const auto& [name, value] : attributes) {
        QEL_TRY(root_->setAttribute(name, value, true), {});
    }
    return {};
}

CError CUserInterface::load(const CString& fileName)
{
    return root_->loadCompiled(fileName, false);
}

CError CUserInterface::open()
{
    QEL_TRY(root_->require(bridge_, CUIEventBridge::kPath,
                           "@qelstr_CUserInterface_open_NoEventBridge Unable to locate a suitable event "
                           "bridge."),
            {});
    QEL_TRY(root_->require(mainWindow_, kMainWindowPath,
                           "@qelstr_CUserInterface_open_NoWindow The main window '%1' is missing."),
            {});
    return mainWindow_->open();
}

void CUserInterface::idle()
{
    if (!mainWindow_) {
        return;
    }
    const std::weak_ptr<int> generation = generation_;
    const auto system = mainWindow_->getSharedSystem();
    system->processEvents();
    if (generation.expired()) {
        return;
    }
    if (system->getDisplay() && !system->isConnected()) {
        release();
        return;
    }
    bridge_->drain();
    if (!generation.expired()) {
        system->flush();
    }
}

void CUserInterface::release()
{
    generation_.reset();
    mainWindow_ = nullptr;
    bridge_ = nullptr;
    if (CObject* const root = std::exchange(root_, nullptr)) {
        CApplication::get()->releaseRootObject(root);
    }
}

} // namespace qel
