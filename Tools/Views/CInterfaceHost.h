// One instance with its interface, without a host and without a screen.
#pragma once

#include "CAudioWrapper.h"
#include "COffscreenUser.h"
#include "CUserInterface.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace qel::tools {

// Plays the host: makes an instance and opens its editor in memory, with the settings of a user who has none
// yet, kept in a folder of its own that goes with it. One at a time in a process. For tools, tests and
// benchmarks; throws CToolError with what the tree or the instance reports.
class CInterfaceHost
{
public:
    struct Options
    {
        double scale = 1.0;
        std::string palette = "Default";
    };

    explicit CInterfaceHost(const Options& options);
    ~CInterfaceHost();
    CInterfaceHost(const CInterfaceHost&) = delete;
    CInterfaceHost& operator=(const CInterfaceHost&) = delete;

    CObject& root() { return *interface_.getRoot(); }
    CWindow& mainWindow() { return *interface_.getMainWindow(); }
    // The window that was opened last.
    CWindow& topWindow();
    COffscreenUser& user() { return *user_; }
    CAudioWrapper& instance();

    // Opens a window from a template, as a button of the main window would. Returns the one that came.
    CWindow& openWindow(const std::string& tag);
    // Presses a view, by its path from the root of the tree.
    void click(const std::string& path);
    // Puts the pointer on a view.
    void hover(const std::string& path);
    // A parameter by the end of its name ("lf-gain"), with a text as a user would type it; or an attribute of
    // an object, "path:attribute".
    void set(const std::string& name, const std::string& value);
    // Sound at the inputs while the interface goes on: a low sine, on each channel softer than on the one
    // before.
    void play(double sec, double levelDb);
    // Time goes on until nothing moves any more.
    void settle();

private:
    class CInstance;

    void startApplication();
    CView& findView(const std::string& path);
    void processBlock();
    void advance(double sec);

    std::filesystem::path home_;
    std::unique_ptr<CInstance> instance_;
    CUserInterface interface_;
    std::unique_ptr<COffscreenUser> user_;
    double gain_ = 0.0; // of the sound at the inputs
    double positionSec_ = 0.0;
};

} // namespace qel::tools
