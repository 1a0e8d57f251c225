#include "platform/desktop/StartupNotification.h"

#include <QGuiApplication>

#ifdef PENWICK_XCB
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <xcb/xcb.h>
#endif

namespace penwick::startup {

std::optional<quint32> timeOf(const QByteArray &startupId)
{
    constexpr QByteArrayView kMark = "_TIME";
    const qsizetype mark = startupId.lastIndexOf(kMark);
    bool isNumber = false;
    const quint32 time = mark < 0 ? 0 : startupId.mid(mark + kMark.size()).toUInt(&isNumber);
    return isNumber ? std::optional(time) : std::nullopt;
}

QByteArray endMessage(const QByteArray &startupId)
{
    QByteArray escaped;
    for (const char c : startupId) {
        if (c == '"' || c == '\\')
            escaped.append('\\');
        escaped.append(c);
    }
    return "remove: ID=\"" + escaped + '"';
}

#ifdef PENWICK_XCB

namespace {

xcb_connection_t *connection()
{
    const auto *application = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return application != nullptr ? application->connection() : nullptr;
}

xcb_window_t rootOf(xcb_connection_t *display)
{
    return xcb_setup_roots_iterator(xcb_get_setup(display)).data->root;
}

xcb_atom_t atom(xcb_connection_t *display, QByteArrayView name)
{
    const auto cookie =
        xcb_intern_atom(display, 0, static_cast<uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(display, cookie, nullptr), &std::free);
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void sendToRoot(xcb_connection_t *display, uint32_t mask, const xcb_client_message_event_t &event)
{
    xcb_send_event(display, 0, rootOf(display), mask, reinterpret_cast<const char *>(&event));
}

} // namespace

void end(const QByteArray &startupId)
{
    xcb_connection_t *display = connection();
    if (display == nullptr)
        return;
    // Receivers recognise the pieces of one message by their window, so every message gets its own.
    const xcb_window_t sender = xcb_generate_id(display);
    xcb_create_window(display,
                      XCB_COPY_FROM_PARENT,
                      sender,
                      rootOf(display),
                      -1,
                      -1,
                      1,
                      1,
                      0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT,
                      0,
                      nullptr);
    const QByteArray message = endMessage(startupId) + '\0';
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 8;
    event.window = sender;
    event.type = atom(display, "_NET_STARTUP_INFO_BEGIN");
    constexpr qsizetype kPiece = sizeof event.data.data8;
    for (qsizetype i = 0; i < message.size(); i += kPiece) {
        const auto size = static_cast<std::size_t>(std::min(kPiece, message.size() - i));
        event.data = {};
        std::memcpy(event.data.data8, message.constData() + i, size);
        sendToRoot(display, XCB_EVENT_MASK_PROPERTY_CHANGE, event);
        event.type = atom(display, "_NET_STARTUP_INFO");
    }
    xcb_destroy_window(display, sender);
    xcb_flush(display);
}

void activate(quint64 window, quint32 time)
{
    xcb_connection_t *display = connection();
    if (display == nullptr)
        return;
    const auto target = static_cast<xcb_window_t>(window);
    xcb_change_property(display,
                        XCB_PROP_MODE_REPLACE,
                        target,
                        atom(display, "_NET_WM_USER_TIME"),
                        XCB_ATOM_CARDINAL,
                        32,
                        1,
                        &time);
    constexpr uint32_t kFromApplication = 1;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = target;
    event.type = atom(display, "_NET_ACTIVE_WINDOW");
    event.data.data32[0] = kFromApplication;
    event.data.data32[1] = time;
    sendToRoot(
        display, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, event);
    xcb_flush(display);
}

#else

void end(const QByteArray & /*startupId*/) {}

void activate(quint64 /*window*/, quint32 /*time*/) {}

#endif

} // namespace penwick::startup
