#include "TemporaryFolder.h"
#include "WholeFile.h"
#include "WindowFixture.h"

#include <dbus/dbus.h>
#include <signal.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

namespace qel::platform {

namespace {

// Sets a variable of the environment as long as it lives.
class CVariable
{
public:
    CVariable(const char* name, const std::string& value) : name_(name)
    {
        if (const char* old = std::getenv(name)) {
            old_ = old;
        }
        setenv(name, value.c_str(), 1);
    }
    CVariable(const CVariable&) = delete;
    CVariable& operator=(const CVariable&) = delete;
    ~CVariable() { old_ ? setenv(name_, old_->c_str(), 1) : unsetenv(name_); }

private:
    const char* const name_;
    std::optional<std::string> old_;
};

// A bus of the tests' own, with a portal on it that answers every call with the same file.
class CTestPortal
{
public:
    CTestPortal()
    {
        FILE* output = popen("dbus-daemon --session --fork --print-address=1 --print-pid=1 2>/dev/null", "r");
        std::array<char, 1024> line{};
        if (output && std::fgets(line.data(), line.size(), output)) {
            address_ = line.data();
            address_.pop_back();
        }
        if (output && std::fgets(line.data(), line.size(), output)) {
            daemon_ = std::atoi(line.data());
        }
        pclose(output);
        connection_ = dbus_connection_open_private(address_.c_str(), nullptr);
        if (connection_) {
            dbus_bus_register(connection_, nullptr);
            dbus_bus_request_name(connection_, "org.freedesktop.portal.Desktop", 0, nullptr);
        }
    }
    CTestPortal(const CTestPortal&) = delete;
    CTestPortal& operator=(const CTestPortal&) = delete;
    ~CTestPortal()
    {
        if (connection_) {
            dbus_connection_close(connection_);
            dbus_connection_unref(connection_);
        }
        if (daemon_ > 0) {
            kill(daemon_, SIGTERM);
        }
    }

    const std::string& address() const { return address_; }
    // Calls that came, with all their arguments that are texts.
    const std::vector<std::string>& calls() const { return calls_; }
    // 0: chosen, 1: cancelled.
    void run(dbus_uint32_t response, const char* uri)
    {
        dbus_connection_read_write(connection_, 0);
        while (DBusMessage* message = dbus_connection_pop_message(connection_)) {
            const char* interface = dbus_message_get_interface(message);
            if (interface && std::string(interface) == "org.freedesktop.portal.FileChooser") {
                answer(message, response, uri);
            }
            dbus_message_unref(message);
        }
        dbus_connection_flush(connection_);
    }

private:
    void answer(DBusMessage* call, dbus_uint32_t response, const char* uri)
    {
        std::string text =
            std::string(dbus_message_get_member(call)) + " " + dbus_message_get_signature(call);
        DBusMessageIter arguments;
        dbus_message_iter_init(call, &arguments);
        for (; dbus_message_iter_get_arg_type(&arguments) == DBUS_TYPE_STRING;
             dbus_message_iter_next(&arguments)) {
            const char* value = "";
            dbus_message_iter_get_basic(&arguments, &value);
            text += std::string(" ") + value;
        }
        calls_.push_back(text);
        const char* path = "/org/freedesktop/portal/desktop/request/1";
        DBusMessage* reply = dbus_message_new_method_return(call);
        dbus_message_append_args(reply, DBUS_TYPE_OBJECT_PATH, &path, DBUS_TYPE_INVALID);
        dbus_connection_send(connection_, reply, nullptr);
        dbus_message_unref(reply);

        DBusMessage* signal = dbus_message_new_signal(path, "org.freedesktop.portal.Request", "Response");
        DBusMessageIter body;
        DBusMessageIter options;
        DBusMessageIter entry;
        DBusMessageIter value;
        DBusMessageIter list;
        const char* name = "uris";
        dbus_message_iter_init_append(signal, &body);
        dbus_message_iter_append_basic(&body, DBUS_TYPE_UINT32, &response);
        dbus_message_iter_open_container(&body, DBUS_TYPE_ARRAY, "{sv}", &options);
        dbus_message_iter_open_container(&options, DBUS_TYPE_DICT_ENTRY, nullptr, &entry);
        dbus_message_iter_append_basic(&entry, DBUS_TYPE_STRING, &name);
        dbus_message_iter_open_container(&entry, DBUS_TYPE_VARIANT, "as", &value);
        dbus_message_iter_open_container(&value, DBUS_TYPE_ARRAY, "s", &list);
        dbus_message_iter_append_basic(&list, DBUS_TYPE_STRING, &uri);
        dbus_message_iter_close_container(&value, &list);
        dbus_message_iter_close_container(&entry, &value);
        dbus_message_iter_close_container(&options, &entry);
        dbus_message_iter_close_container(&body, &options);
        dbus_connection_send(connection_, signal, nullptr);
        dbus_message_unref(signal);
    }

    pid_t daemon_ = 0;
    std::string address_;
    DBusConnection* connection_ = nullptr;
    std::vector<std::string> calls_;
};

} // namespace

TEST_F(WindowFixture, FileDialogsAskThePortalFirst)
{
    CTestPortal portal;
    const CVariable bus("DBUS_SESSION_BUS_ADDRESS", portal.address());
    const test::TemporaryFolder folder;
    const CVariable path("PATH", folder.root().string()); // nothing else to fall back on
    using Outcome = FileDialogResult::Outcome;
    FileDialogRequest open;
    open.title = "Load \xC3\xA9";
    open.extension = "cbf";
    open.filterText = "Banks (*.cbf)";
    open.folder = "/tmp";
    open.owner = 0x1234;
    const auto ask = [&](dbus_uint32_t response, const char* uri) {
        std::optional<FileDialogResult> result;
        display->fileDialog().start(open, [&](const auto& got) { result = got; });
        EXPECT_TRUE(idleUntil([&] {
            portal.run(response, uri);
            return result.has_value();
        }));
        return result.value_or(FileDialogResult{});
    };
    const FileDialogResult chosen = ask(0, "file:///tmp/caf%C3%A9%20100%25.cbf");
    EXPECT_EQ(chosen.outcome, Outcome::kAccepted);
    EXPECT_EQ(chosen.path, "/tmp/caf\xC3\xA9 100%.cbf");
    EXPECT_EQ(portal.calls().front(), "OpenFile ssa{sv} x11:1234 Load \xC3\xA9");
    EXPECT_EQ(ask(1, "").outcome, Outcome::kCancelled);
}

// The desktop's programs are played by scripts: what they are told, and with what environment they start, is
// what counts.
TEST_F(WindowFixture, FileDialogsRunAsProcesses)
{
    const test::TemporaryFolder folder;
    const CVariable path("PATH", folder.root().string());
    const CVariable bus("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + folder.path("none"));
    const CVariable runtime("XDG_RUNTIME_DIR", folder.root().string());
    const CVariable libraries("LD_LIBRARY_PATH", "/of/the/host");
    const CVariable style("GTK_THEME", "Host");
    const auto put = [&](const std::string& name, const std::string& script) {
        std::ofstream(folder.path(name)) << "#!/bin/sh\n" << script;
        std::filesystem::permissions(folder.path(name), std::filesystem::perms::owner_all);
    };
    using Outcome = FileDialogResult::Outcome;
    const auto ask = [&](const FileDialogRequest& request) {
        std::optional<FileDialogResult> result;
        EXPECT_TRUE(display->fileDialog().start(request, [&](const auto& got) { result = got; }));
        EXPECT_FALSE(result) << "never before the call returns";
        EXPECT_FALSE(display->fileDialog().start(request, [](const auto&) {})) << "one at a time";
        EXPECT_TRUE(idleUntil([&] { return result.has_value(); }));
        return result.value_or(FileDialogResult{});
    };
    FileDialogRequest save;
    save.mode = FileDialogMode::kSave;
    save.title = "Save";
    save.filterText = "Banks (*.cbf)";
    save.extension = "cbf";
    save.folder = "/tmp/a folder";
    save.fileName = "x.cbf";
    EXPECT_EQ(ask(save).outcome, Outcome::kUnavailable);

    // The second program, since the first cannot start.
    put("zenity", "exit 127\n");
    put("kdialog", "echo '/tmp/caf\xC3\xA9.cbf'\nexit 0\n");
    FileDialogResult result = ask(save);
    EXPECT_EQ(result.outcome, Outcome::kAccepted);
    EXPECT_EQ(result.path, "/tmp/caf\xC3\xA9.cbf");

    put("zenity", "for a in \"$@\"; do echo \"$a\"; done > \"$0.log\"\n"
                  "echo \"$LD_LIBRARY_PATH$GTK_THEME\" >> \"$0.log\"\nexit 1\n");
    result = ask(save);
    EXPECT_EQ(result.outcome, Outcome::kCancelled);
    EXPECT_EQ(readWhole(folder.path("zenity.log")),
              "--file-selection\n--title=Save\n--save\n--confirm-overwrite\n--filename=/tmp/a folder/x.cbf\n"
              "--file-filter=Banks (*.cbf) | *.cbf\n\n");

    // Closed with the editor, however long it would have stood.
    put("zenity", "echo $$ > \"$0.pid\"\nexec /bin/sleep 1000\n");
    display->fileDialog().start(save, [](const auto&) { FAIL() << "the display is gone"; });
    std::string pid;
    EXPECT_TRUE(idleUntil([&] {
        pid = std::filesystem::exists(folder.path("zenity.pid")) ? readWhole(folder.path("zenity.pid")) : "";
        return !pid.empty();
    }));
    display.reset();
    EXPECT_FALSE(std::filesystem::exists("/proc/" + pid.substr(0, pid.size() - 1)));
}

} // namespace qel::platform
