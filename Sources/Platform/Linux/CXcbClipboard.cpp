// Both sides of a selection.
#include "CXcbClipboard.h"

#include "MonotonicClock.h"
#include "Utf8.h"

#include <algorithm>
#include <utility>

namespace qel::platform {

namespace {

std::string toLatin1(const std::string& utf8)
{
    std::string latin1;
    for (const char32_t character : fromUtf8(utf8)) {
        latin1 += character < 0x100 ? static_cast<char>(character) : '?';
    }
    return latin1;
}

} // namespace

void CXcbClipboard::open()
{
    window_ = xcb_generate_id(connection_.get());
    constexpr std::uint32_t kEventMask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_.out(), 0, window_, connection_.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &kEventMask);
}

void CXcbClipboard::setText(const std::string& text)
{
    if (!connection_.isAlive()) {
        return;
    }
    offered_ = text;
    offeredTime_ = eventTime_;
    const CBrokenPipeGuard guard;
    xcb_set_selection_owner(connection_.out(), window_, connection_.atoms().clipboard, eventTime_);
}

void CXcbClipboard::requestText(TextHandler handler)
{
    handler_ = std::move(handler);
    ++requestNumber_;
    isInParts_ = false;
    received_.clear();
    deadlineSec_ = monotonicSec() + kTimeoutSec;
    if (connection_.isAlive()) {
        convert(connection_.atoms().utf8String);
    }
}

void CXcbClipboard::convert(xcb_atom_t target)
{
    const CBrokenPipeGuard guard;
    const XcbAtoms& atoms = connection_.atoms();
    target_ = target;
    xcb_delete_property(connection_.out(), window_, atoms.clipboardData);
    xcb_convert_selection(connection_.out(), window_, atoms.clipboard, target, atoms.clipboardData,
                          eventTime_);
}

bool CXcbClipboard::handle(const xcb_generic_event_t& event)
{
    switch (event.response_type & 0x7F) {
    case XCB_SELECTION_REQUEST:
        answer(reinterpret_cast<const xcb_selection_request_event_t&>(event));
        return true;
    case XCB_SELECTION_CLEAR:
        offered_.reset();
        return true;
    case XCB_SELECTION_NOTIFY:
        takeNotify(reinterpret_cast<const xcb_selection_notify_event_t&>(event));
        return true;
    case XCB_PROPERTY_NOTIFY: {
        const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (notify.window != window_) {
            return false;
        }
        const bool isNextPart =
            notify.atom == connection_.atoms().clipboardData && notify.state == XCB_PROPERTY_NEW_VALUE;
        if (isInParts_ && handler_ && isNextPart) {
            readProperty();
        }
        return true;
    }
    default:
        return false;
    }
}

void CXcbClipboard::answer(const xcb_selection_request_event_t& request)
{
    const CBrokenPipeGuard guard;
    // Old clients name no property and mean the target.
    const xcb_atom_t property = request.property ? request.property : request.target;
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    const bool isOurs = offered_ && request.selection == connection_.atoms().clipboard;
    notify.property = isOurs && writeTarget(request, property) ? property : xcb_atom_t{XCB_ATOM_NONE};
    // The server sends 32 bytes, which is more than the record.
    char bytes[32] = {};
    std::copy_n(reinterpret_cast<const char*>(&notify), sizeof(notify), bytes);
    xcb_send_event(connection_.out(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, bytes);
}

bool CXcbClipboard::writeTarget(const xcb_selection_request_event_t& request, xcb_atom_t property)
{
    const XcbAtoms& atoms = connection_.atoms();
    const auto write = [&](xcb_atom_t type, std::uint8_t format, const void* data, std::size_t count) {
        constexpr std::size_t kHeaderBytes = 64;
        const std::size_t room =
            std::size_t{4} * xcb_get_maximum_request_length(connection_.get()) - kHeaderBytes;
        if (count * format / 8 > room) {
            return false;
        }
        xcb_change_property(connection_.out(), XCB_PROP_MODE_REPLACE, request.requestor, property, type,
                            format, static_cast<std::uint32_t>(count), data);
        return true;
    };
    if (request.target == atoms.targets) {
        const xcb_atom_t targets[] = {atoms.targets, atoms.timestamp,     atoms.utf8String,
                                      atoms.text,    atoms.textPlainUtf8, XCB_ATOM_STRING};
        return write(XCB_ATOM_ATOM, 32, targets, std::size(targets));
    }
    if (request.target == atoms.timestamp) {
        return write(XCB_ATOM_INTEGER, 32, &offeredTime_, 1);
    }
    if (request.target == XCB_ATOM_STRING) {
        const std::string latin1 = toLatin1(*offered_);
        return write(XCB_ATOM_STRING, 8, latin1.data(), latin1.size());
    }
    if (request.target == atoms.utf8String || request.target == atoms.text) {
        return write(atoms.utf8String, 8, offered_->data(), offered_->size());
    }
    if (request.target == atoms.textPlainUtf8) {
        return write(atoms.textPlainUtf8, 8, offered_->data(), offered_->size());
    }
    return false;
}

void CXcbClipboard::takeNotify(const xcb_selection_notify_event_t& notify)
{
    if (!handler_ || notify.requestor != window_ || notify.target != target_) {
        return;
    }
    if (notify.property != XCB_ATOM_NONE) {
        readProperty();
    } else if (target_ != XCB_ATOM_STRING) {
        convert(XCB_ATOM_STRING);
    } else {
        finish(std::nullopt);
    }
}

// Reading deletes the property, which asks the owner of a text in parts for the next one.
void CXcbClipboard::readProperty()
{
    const CBrokenPipeGuard guard;
    constexpr std::uint8_t kDelete = 1;
    const auto cookie =
        xcb_get_property(connection_.out(), kDelete, window_, connection_.atoms().clipboardData,
                         XCB_GET_PROPERTY_TYPE_ANY, 0, kMaxTextBytes / 4);
    connection_.whenAnswered(cookie, [this, number = requestNumber_](const void* reply) {
        if (number == requestNumber_ && handler_) {
            takeProperty(static_cast<const xcb_get_property_reply_t*>(reply));
        }
    });
}

void CXcbClipboard::takeProperty(const xcb_get_property_reply_t* reply)
{
    if (!reply) {
        finish(std::nullopt);
        return;
    }
    deadlineSec_ = monotonicSec() + kTimeoutSec;
    if (!isInParts_ && reply->type == connection_.atoms().incr) {
        isInParts_ = true;
        return;
    }
    if (isInParts_ && reply->type == XCB_ATOM_NONE) {
        return; // the next part is not there yet
    }
    const auto length = static_cast<std::size_t>(xcb_get_property_value_length(reply));
    if (isInParts_ && length == 0) {
        finish(toUtf8(received_, receivedType_));
        return;
    }
    if (reply->format != 8 || reply->bytes_after > 0 || received_.size() + length > kMaxTextBytes) {
        // Of an empty text some owners leave out the format.
        const bool isEmptyText = length == 0 && reply->bytes_after == 0 && reply->type != XCB_ATOM_NONE;
        finish(isEmptyText ? std::optional<std::string>("") : std::nullopt);
        return;
    }
    received_.append(static_cast<const char*>(xcb_get_property_value(reply)), length);
    receivedType_ = reply->type;
    if (!isInParts_) {
        finish(toUtf8(received_, receivedType_));
    }
}

// Whatever the owner sent, what comes out is UTF-8 without NUL.
std::string CXcbClipboard::toUtf8(const std::string& bytes, xcb_atom_t type) const
{
    std::string text;
    const auto append = [&text](char32_t character) {
        if (character != 0) {
            appendUtf8(text, character);
        }
    };
    if (type == XCB_ATOM_STRING) {
        for (const char byte : bytes) {
            append(static_cast<unsigned char>(byte));
        }
    } else {
        for (const char32_t character : fromUtf8(bytes)) {
            append(character);
        }
    }
    return text;
}

void CXcbClipboard::checkTimeout()
{
    if (handler_ && monotonicSec() > deadlineSec_) {
        finish(std::nullopt);
    }
}

void CXcbClipboard::finish(const std::optional<std::string>& text)
{
    received_.clear();
    isInParts_ = false;
    ++requestNumber_;
    const TextHandler handler = std::exchange(handler_, nullptr);
    handler(text); // may destroy the display, or ask again
}

} // namespace qel::platform
