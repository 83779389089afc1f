// The file chooser of the desktop's portal, over the session's D-Bus.
#include "CFileDialogMethod.h"

#include "DbusLibrary.h"
#include "MonotonicClock.h"
#include "Utf8.h"

#include <unistd.h>

#include <algorithm>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace qel::platform {

namespace {

using State = CFileDialogMethod::State;

constexpr const char* kBusName = "org.freedesktop.DBus";
constexpr const char* kPortalName = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kChooser = "org.freedesktop.portal.FileChooser";
constexpr const char* kRequest = "org.freedesktop.portal.Request";

// For the portal to take the request; the bus may have to start it first. The user may take any time.
constexpr double kAnswerTimeoutSec = 5.0;

struct MessageUnref
{
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using Message = std::unique_ptr<DBusMessage, MessageUnref>;

// Of a local socket, which takes a connection at once; any other way to a bus could keep the host waiting.
std::string busAddress()
{
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address && std::string_view(address).starts_with("unix:")) {
        return address;
    }
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    const std::string socket = folder && *folder ? std::string(folder) + "/bus" : std::string();
    return !socket.empty() && access(socket.c_str(), F_OK) == 0 ? "unix:path=" + socket : std::string();
}

// A file of a "file:" address, or nothing.
std::string pathOfUri(std::string_view uri)
{
    constexpr std::string_view kScheme = "file://";
    if (!uri.starts_with(kScheme)) {
        return {};
    }
    uri.remove_prefix(kScheme.size());
    uri.remove_prefix(std::min(uri.find('/'), uri.size())); // a host's name
    std::string path;
    for (std::size_t i = 0; i < uri.size(); ++i) {
        unsigned code = 0;
        if (uri[i] == '%' && uri.size() - i > 2 &&
            std::sscanf(std::string(uri.substr(i + 1, 2)).c_str(), "%2x", &code) == 1) {
            path += static_cast<char>(code);
            i += 2;
        } else {
            path += uri[i];
        }
    }
    return path;
}

// Texts on the bus must be UTF-8 without NUL, or the library refuses the message.
std::string busText(const std::string& text)
{
    std::string clean;
    for (const char32_t character : fromUtf8(text)) {
        if (character != 0) {
            appendUtf8(clean, character);
        }
    }
    return clean;
}

// Writes the options of a request: a dictionary from names to values of any type.
class COptions
{
public:
    explicit COptions(DBusMessageIter& arguments) : arguments_(arguments)
    {
        dbus_message_iter_open_container(&arguments_, DBUS_TYPE_ARRAY, "{sv}", &dictionary_);
    }
    COptions(const COptions&) = delete;
    COptions& operator=(const COptions&) = delete;
    ~COptions() { dbus_message_iter_close_container(&arguments_, &dictionary_); }

    void addBool(const char* name, bool value)
    {
        const dbus_bool_t word = value;
        add(name, "b",
            [&](DBusMessageIter& to) { dbus_message_iter_append_basic(&to, DBUS_TYPE_BOOLEAN, &word); });
    }
    void addText(const char* name, const std::string& value)
    {
        const std::string text = busText(value);
        add(name, "s", [&](DBusMessageIter& to) { appendText(to, text); });
    }
    // A path, as bytes with the NUL.
    void addBytes(const char* name, const std::string& value)
    {
        add(name, "ay", [&](DBusMessageIter& to) {
            DBusMessageIter bytes;
            dbus_message_iter_open_container(&to, DBUS_TYPE_ARRAY, "y", &bytes);
            const char* data = value.c_str();
            dbus_message_iter_append_fixed_array(&bytes, DBUS_TYPE_BYTE, &data,
                                                 static_cast<int>(value.size() + 1));
            dbus_message_iter_close_container(&to, &bytes);
        });
    }
    // A list of one filter: its name, and its list of one pattern.
    void addFilter(const char* name, const std::string& label, const std::string& pattern)
    {
        const std::string labelText = busText(label);
        const std::string patternText = busText(pattern);
        add(name, "a(sa(us))", [&](DBusMessageIter& to) {
            DBusMessageIter filters;
            DBusMessageIter filter;
            DBusMessageIter patterns;
            DBusMessageIter entry;
            dbus_message_iter_open_container(&to, DBUS_TYPE_ARRAY, "(sa(us))", &filters);
            dbus_message_iter_open_container(&filters, DBUS_TYPE_STRUCT, nullptr, &filter);
            appendText(filter, labelText);
            dbus_message_iter_open_container(&filter, DBUS_TYPE_ARRAY, "(us)", &patterns);
            dbus_message_iter_open_container(&patterns, DBUS_TYPE_STRUCT, nullptr, &entry);
            constexpr dbus_uint32_t kGlob = 0;
            dbus_message_iter_append_basic(&entry, DBUS_TYPE_UINT32, &kGlob);
            appendText(entry, patternText);
            dbus_message_iter_close_container(&patterns, &entry);
            dbus_message_iter_close_container(&filter, &patterns);
            dbus_message_iter_close_container(&filters, &filter);
            dbus_message_iter_close_container(&to, &filters);
        });
    }

private:
    static void appendText(DBusMessageIter& to, const std::string& text)
    {
        const char* data = text.c_str();
        dbus_message_iter_append_basic(&to, DBUS_TYPE_STRING, &data);
    }

    template <typename Write>
    void add(const char* name, const char* type, Write write)
    {
        DBusMessageIter entry;
        DBusMessageIter value;
        dbus_message_iter_open_container(&dictionary_, DBUS_TYPE_DICT_ENTRY, nullptr, &entry);
        dbus_message_iter_append_basic(&entry, DBUS_TYPE_STRING, &name);
        dbus_message_iter_open_container(&entry, DBUS_TYPE_VARIANT, type, &value);
        write(value);
        dbus_message_iter_close_container(&entry, &value);
        dbus_message_iter_close_container(&dictionary_, &entry);
    }

    DBusMessageIter& arguments_;
    DBusMessageIter dictionary_;
};

// A connection of its own to the bus, so that nothing of the host's is touched, driven by poll() alone: even
// the greeting of the bus is sent and answered like any other message. The portal answers the call with the
// name of a request, and later, when the user has chosen, sends a signal from it.
class CPortalDialog : public CFileDialogMethod
{
public:
    CPortalDialog() = default;
    CPortalDialog(const CPortalDialog&) = delete;
    CPortalDialog& operator=(const CPortalDialog&) = delete;
    ~CPortalDialog() override;

    bool start(const FileDialogRequest& request);
    State poll(FileDialogResult& out) override;

private:
    dbus_uint32_t send(Message message);
    void listen();
    void sendOpen();
    State handle(DBusMessage& message, FileDialogResult& out);
    State takeReply(DBusMessage& message);
    static void readResponse(DBusMessage& message, FileDialogResult& out);
    static std::string firstUri(DBusMessageIter& options);

    FileDialogRequest request_;
    DBusConnection* connection_ = nullptr;
    dbus_uint32_t helloSerial_ = 0;
    dbus_uint32_t openSerial_ = 0;
    std::string handle_; // path of the portal's request; empty until it has answered
    double deadlineSec_ = 0.0;
};

CPortalDialog::~CPortalDialog()
{
    if (!connection_) {
        return;
    }
    if (!handle_.empty() && dbus_connection_get_is_connected(connection_)) {
        Message close(dbus_message_new_method_call(kPortalName, handle_.c_str(), kRequest, "Close"));
        if (close) {
            dbus_message_set_no_reply(close.get(), TRUE);
            send(std::move(close));
            dbus_connection_read_write(connection_, 0);
        }
    }
    dbus_connection_close(connection_);
    dbus_connection_unref(connection_);
}

bool CPortalDialog::start(const FileDialogRequest& request)
{
    const std::string address = busAddress();
    if (address.empty() || !loadDbus()) {
        return false;
    }
    request_ = request;
    connection_ = dbus_connection_open_private(address.c_str(), nullptr);
    if (!connection_) {
        return false;
    }
    dbus_connection_set_exit_on_disconnect(connection_, FALSE);
    helloSerial_ =
        send(Message(dbus_message_new_method_call(kBusName, "/org/freedesktop/DBus", kBusName, "Hello")));
    deadlineSec_ = monotonicSec() + kAnswerTimeoutSec;
    return helloSerial_ != 0;
}

// 0 when memory is short.
dbus_uint32_t CPortalDialog::send(Message message)
{
    dbus_uint32_t serial = 0;
    return message && dbus_connection_send(connection_, message.get(), &serial) ? serial : 0;
}

// The portal's signal is sent to whoever wants it.
void CPortalDialog::listen()
{
    Message message(dbus_message_new_method_call(kBusName, "/org/freedesktop/DBus", kBusName, "AddMatch"));
    if (message) {
        const char* rule = "type='signal',interface='org.freedesktop.portal.Request',member='Response'";
        DBusMessageIter arguments;
        dbus_message_iter_init_append(message.get(), &arguments);
        dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &rule);
        dbus_message_set_no_reply(message.get(), TRUE);
        send(std::move(message));
    }
}

void CPortalDialog::sendOpen()
{
    const bool isSave = request_.mode == FileDialogMode::kSave;
    Message message(
        dbus_message_new_method_call(kPortalName, kPortalPath, kChooser, isSave ? "SaveFile" : "OpenFile"));
    if (!message) {
        return;
    }
    char owner[32] = "";
    if (request_.owner) {
        std::snprintf(owner, sizeof(owner), "x11:%lx", static_cast<unsigned long>(request_.owner));
    }
    const std::string title = busText(request_.title);
    const char* ownerText = owner;
    const char* titleText = title.c_str();
    DBusMessageIter arguments;
    dbus_message_iter_init_append(message.get(), &arguments);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &ownerText);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &titleText);
    {
        COptions options(arguments);
        options.addBool("modal", true);
        if (request_.mode == FileDialogMode::kFolder) {
            options.addBool("directory", true);
        } else if (!request_.extension.empty()) {
            options.addFilter("filters", request_.filterText, "*." + request_.extension);
        }
        if (isSave && !request_.fileName.empty()) {
            options.addText("current_name", request_.fileName);
        }
        if (!request_.folder.empty()) {
            options.addBytes("current_folder", request_.folder);
        }
    }
    openSerial_ = send(std::move(message));
}

State CPortalDialog::poll(FileDialogResult& out)
{
    constexpr int kNoWaitMs = 0;
    const bool isConnected = dbus_connection_read_write(connection_, kNoWaitMs);
    State state = State::kRunning;
    while (state == State::kRunning) {
        const Message message(dbus_connection_pop_message(connection_));
        if (!message) {
            break;
        }
        state = handle(*message, out);
    }
    const bool isLate = handle_.empty() && monotonicSec() > deadlineSec_;
    if (state == State::kRunning && (!isConnected || isLate)) {
        return State::kUnavailable;
    }
    return state;
}

State CPortalDialog::handle(DBusMessage& message, FileDialogResult& out)
{
    const int type = dbus_message_get_type(&message);
    if (type == DBUS_MESSAGE_TYPE_METHOD_RETURN || type == DBUS_MESSAGE_TYPE_ERROR) {
        return takeReply(message);
    }
    const char* path = dbus_message_get_path(&message);
    if (dbus_message_is_signal(&message, kRequest, "Response") && path && handle_ == path) {
        readResponse(message, out);
        handle_.clear(); // the portal's request is over, nothing to close
        return State::kDone;
    }
    return State::kRunning;
}

State CPortalDialog::takeReply(DBusMessage& message)
{
    const dbus_uint32_t serial = dbus_message_get_reply_serial(&message);
    const bool isError = dbus_message_get_type(&message) == DBUS_MESSAGE_TYPE_ERROR;
    const char* text = nullptr;
    if (serial == helloSerial_) {
        if (isError ||
            !dbus_message_get_args(&message, nullptr, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID)) {
            return State::kUnavailable;
        }
        dbus_bus_set_unique_name(connection_, text);
        listen();
        sendOpen();
        return openSerial_ ? State::kRunning : State::kUnavailable;
    }
    if (serial == openSerial_) {
        if (isError ||
            !dbus_message_get_args(&message, nullptr, DBUS_TYPE_OBJECT_PATH, &text, DBUS_TYPE_INVALID)) {
            return State::kUnavailable; // no portal, or one without a file chooser
        }
        handle_ = text;
    }
    return State::kRunning;
}

// A number (0: the user has chosen) and a dictionary with the addresses of the files.
void CPortalDialog::readResponse(DBusMessage& message, FileDialogResult& out)
{
    out.outcome = FileDialogResult::Outcome::kCancelled;
    DBusMessageIter arguments;
    if (!dbus_message_iter_init(&message, &arguments) ||
        dbus_message_iter_get_arg_type(&arguments) != DBUS_TYPE_UINT32) {
        return;
    }
    dbus_uint32_t response = 1;
    dbus_message_iter_get_basic(&arguments, &response);
    if (response != 0 || !dbus_message_iter_next(&arguments) ||
        dbus_message_iter_get_arg_type(&arguments) != DBUS_TYPE_ARRAY) {
        return;
    }
    DBusMessageIter options;
    dbus_message_iter_recurse(&arguments, &options);
    out.path = pathOfUri(firstUri(options));
    if (!out.path.empty()) {
        out.outcome = FileDialogResult::Outcome::kAccepted;
    }
}

std::string CPortalDialog::firstUri(DBusMessageIter& options)
{
    for (; dbus_message_iter_get_arg_type(&options) == DBUS_TYPE_DICT_ENTRY;
         dbus_message_iter_next(&options)) {
        DBusMessageIter entry;
        DBusMessageIter value;
        DBusMessageIter list;
        dbus_message_iter_recurse(&options, &entry);
        const char* name = "";
        dbus_message_iter_get_basic(&entry, &name);
        dbus_message_iter_next(&entry);
        if (std::string_view(name) != "uris" || dbus_message_iter_get_arg_type(&entry) != DBUS_TYPE_VARIANT) {
            continue;
        }
        dbus_message_iter_recurse(&entry, &value);
        if (dbus_message_iter_get_arg_type(&value) != DBUS_TYPE_ARRAY) {
            continue;
        }
        dbus_message_iter_recurse(&value, &list);
        if (dbus_message_iter_get_arg_type(&list) == DBUS_TYPE_STRING) {
            const char* uri = "";
            dbus_message_iter_get_basic(&list, &uri);
            return uri;
        }
    }
    return {};
}

} // namespace

std::unique_ptr<CFileDialogMethod> startPortalDialog(const FileDialogRequest& request)
{
    auto dialog = std::make_unique<CPortalDialog>();
    return dialog->start(request) ? std::move(dialog) : nullptr;
}

} // namespace qel::platform
