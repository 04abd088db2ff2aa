#pragma once

class QMenu;
class QObject;
class QWidget;

namespace marigold {

class AppController;

// The Output menu: Preserve Metadata and Image Interpolation (one checked item each, the
// item's tag being the stored value) and Border. Check marks follow the stored settings
// whenever the menu opens or a setting changes; `context` scopes the connections.
QMenu* buildOutputMenu(AppController& controller, QWidget* parent, QObject* context);

}  // namespace marigold
