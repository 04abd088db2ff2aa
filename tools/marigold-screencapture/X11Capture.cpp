#include "X11Capture.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace x11capture {

namespace {

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, Free>;

struct Connection {
    xcb_connection_t* xcb = xcb_connect(nullptr, nullptr);
    ~Connection() { xcb_disconnect(xcb); }
    bool usable() const { return xcb && !xcb_connection_has_error(xcb); }
    xcb_window_t root() const { return xcb_setup_roots_iterator(xcb_get_setup(xcb)).data->root; }
};

QRect rootGeometry(const Connection& x, xcb_window_t window) {
    Reply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(x.xcb, xcb_get_geometry(x.xcb, window), nullptr));
    Reply<xcb_translate_coordinates_reply_t> origin(xcb_translate_coordinates_reply(
        x.xcb, xcb_translate_coordinates(x.xcb, window, x.root(), 0, 0), nullptr));
    if (!geometry || !origin) return {};
    return QRect(origin->dst_x, origin->dst_y, geometry->width, geometry->height);
}

bool isViewable(const Connection& x, xcb_window_t window) {
    Reply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        x.xcb, xcb_get_window_attributes(x.xcb, window), nullptr));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
           attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
}

std::vector<xcb_window_t> children(const Connection& x, xcb_window_t window) {
    Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(x.xcb, xcb_query_tree(x.xcb, window), nullptr));
    if (!tree) return {};
    const xcb_window_t* list = xcb_query_tree_children(tree.get());
    return {list, list + xcb_query_tree_children_length(tree.get())};
}

bool hasProperty(const Connection& x, xcb_window_t window, const char* name) {
    Reply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        x.xcb, xcb_intern_atom(x.xcb, 1, uint16_t(std::strlen(name)), name), nullptr));
    if (!atom || atom->atom == XCB_ATOM_NONE) return false;
    Reply<xcb_get_property_reply_t> property(xcb_get_property_reply(
        x.xcb, xcb_get_property(x.xcb, 0, window, atom->atom, XCB_GET_PROPERTY_TYPE_ANY, 0, 0),
        nullptr));
    return property && property->type != XCB_ATOM_NONE;
}

// The application's window inside a window manager's frame: the one marked with WM_STATE.
xcb_window_t clientOf(const Connection& x, xcb_window_t frame) {
    if (hasProperty(x, frame, "WM_STATE")) return frame;
    for (xcb_window_t child : children(x, frame)) {
        if (xcb_window_t client = clientOf(x, child)) return client;
    }
    return 0;
}

}  // namespace

QImage grabScreens(bool mainScreenOnly) {
    QScreen* primary = QGuiApplication::primaryScreen();
    if (!primary) return {};
    const QRect area = mainScreenOnly ? primary->geometry() : primary->virtualGeometry();
    return primary->grabWindow(0, area.x(), area.y(), area.width(), area.height()).toImage();
}

QPoint grabOrigin(bool mainScreenOnly) {
    QScreen* primary = QGuiApplication::primaryScreen();
    if (!primary) return {};
    const QRect area = mainScreenOnly ? primary->geometry() : primary->virtualGeometry();
    return area.topLeft() * primary->devicePixelRatio();
}

QRect windowAt(QPoint point, bool noFrame, unsigned ignored) {
    const Connection x;
    if (!x.usable()) return {};
    const std::vector<xcb_window_t> stack = children(x, x.root());
    // The tree lists them bottom to top.
    for (auto it = stack.rbegin(); it != stack.rend(); ++it) {
        if (*it == ignored || !isViewable(x, *it)) continue;
        const QRect frame = rootGeometry(x, *it);
        if (!frame.contains(point)) continue;
        if (!noFrame) return frame;
        const xcb_window_t client = clientOf(x, *it);
        return client ? rootGeometry(x, client) : frame;
    }
    return {};
}

}  // namespace x11capture
