// The D-Bus client library, found at run time.
#pragma once

#include <dbus/dbus.h>

#include <type_traits>

// clang-format off
#define QEL_DBUS_FUNCTIONS(use) \
    use(dbus_bus_set_unique_name) use(dbus_connection_close) \
    use(dbus_connection_get_is_connected) use(dbus_connection_open_private) \
    use(dbus_connection_pop_message) use(dbus_connection_read_write) use(dbus_connection_send) \
    use(dbus_connection_set_exit_on_disconnect) use(dbus_connection_unref) use(dbus_message_get_args) \
    use(dbus_message_get_path) use(dbus_message_get_reply_serial) use(dbus_message_get_type) \
    use(dbus_message_is_signal) use(dbus_message_iter_append_basic) \
    use(dbus_message_iter_append_fixed_array) use(dbus_message_iter_close_container) \
    use(dbus_message_iter_get_arg_type) use(dbus_message_iter_get_basic) use(dbus_message_iter_init) \
    use(dbus_message_iter_init_append) use(dbus_message_iter_next) use(dbus_message_iter_open_container) \
    use(dbus_message_iter_recurse) use(dbus_message_new_method_call) use(dbus_message_set_no_reply) \
    use(dbus_message_unref) use(dbus_threads_init_default)
// clang-format on

namespace qel::platform {

// Hide the functions of the same names, like those of the X libraries.
#define QEL_DECLARE_POINTER(name) extern std::add_pointer_t<decltype(::name)> name;
QEL_DBUS_FUNCTIONS(QEL_DECLARE_POINTER)
#undef QEL_DECLARE_POINTER

// False when the library is missing. Any thread; the first call loads.
bool loadDbus();

} // namespace qel::platform
