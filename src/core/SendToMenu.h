#pragma once

#include <QMenu>

namespace marigold {

class AppController;

// File ▸ Send To, also the output view's context menu: an entry per configured well, with
// Ctrl+Alt and the well's number, then "Copy to clipboard". Rebuilt whenever a well changes.
class SendToMenu : public QMenu {
    Q_OBJECT

public:
    SendToMenu(AppController& controller, QWidget* parent = nullptr);

    // Sending needs an output; so does copying.
    void setOutputAvailable(bool available);

private:
    void _rebuild();

    AppController& _controller;
    bool _outputAvailable = false;
};

}  // namespace marigold
