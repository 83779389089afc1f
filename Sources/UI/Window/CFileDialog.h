// The chooser of files and folders.
#pragma once

#include "CObject.h"
#include "CSystemFileDialog.h"

#include <memory>

namespace qel {

class CView;
class CWindow;

// Tag `ui:file-dialog`, below a view. The event "open" shows the system's own dialog over that view's window
// and returns at once or, on systems where a dialog is modal, when it ends. The result comes as an event; a
// cancel is no event and no error. One that is open already only comes to the front.
//
//     mode              "open", "save" or "folder"
//     title             of the dialog
//     filter-name       what the files are: "Compressed bank files"
//     extension         theirs, without the dot; none: all files. "save" adds it where the user left it out
//     path              the folder to start in; the result writes its own here. None: the system's choice, or
//                       the user's own folder
//     filename          proposed
//     result-event      name of the event that brings the result, with the parameters
//                           filename    the whole path of the file; empty for a folder
//                           path        the folder
//                           extension   of the file, without the dot
//     result-target     path of the object that it goes to; the parent by default
//
// Without a dialog of the system a window of our own takes a path: the template "ui:win-file-path", whose
// root view is given "title", "path-text" (the proposal), "path-message" (what is wrong with the path, or a
// question; it changes) and "file-dialog" (the full name of this object). It reports here by the events
// "path-changed" ("text", and "is-cancelled" if the user gave up editing) and, for what was typed last,
// "path-entered"; to give up, it closes.
class CFileDialog : public CObject
{
public:
    static constexpr const char* kPathWindowTag = "ui:win-file-path";

    static void buildClassInfo(CClassInfo& info);

    // Fails without a view above.
    CError init() override;
    void release() override;

    // Fails for a mode that there is none of.
    CError open();

    virtual CError eventOpen(const CAttrMap& parameters);
    virtual CError eventPathChanged(const CAttrMap& parameters);
    virtual CError eventPathEntered(const CAttrMap& parameters);

private:
    CError readMode(platform::FileDialogMode& out) const;
    platform::FileDialogRequest makeRequest(const CWindow& window) const;
    CError onSystemResult(const platform::FileDialogResult& result);
    CError takeSystemPath(const std::string& path);
    CError openPathWindow();
    CError showPathWindow(const std::string& path, const CString& message);
    CView* findPathWindow() const;
    // About the file that is to be replaced.
    CString replacingQuestion() const;
    CError showMessage(const CString& message);
    // What is wrong with a path that was typed; empty if nothing is.
    CString checkPath(const std::string& path) const;
    std::string withExtension(const std::string& path) const;
    CError finish(const std::string& path);

    CView* view_ = nullptr;
    platform::FileDialogMode openMode_ = platform::FileDialogMode::kOpen;
    // While the system's dialog is open; its handler outlives this object.
    std::shared_ptr<CFileDialog*> request_;
    CString typed_;
    CString confirmed_; // an existing file that the user was asked about

    // Bound attributes.
    CString mode_;
    CString title_;
    CString filterName_;
    CString extension_;
    CString folder_;
    CString fileName_;
    CString resultEvent_;
    CString resultTarget_;
};

} // namespace qel
