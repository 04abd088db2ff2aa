#pragma once

#include <QDockWidget>
#include <QList>

class QButtonGroup;

namespace marigold {

class TargetController;
class TargetView;

// The drawer on the right edge of the main window: the six destination wells, each with a
// button choosing it as the double-click destination, and a help button.
class DestinationDrawer : public QDockWidget {
    Q_OBJECT

public:
    // `tmpdir` is where the help page is put for the browser.
    DestinationDrawer(TargetController& controller, QString tmpdir, QWidget* parent = nullptr);

    TargetView* well(int tag) const { return _wells.value(tag); }

private:
    void _showDoubleClickDestination(int tag);

    TargetController& _controller;
    QString _tmpdir;
    QList<TargetView*> _wells;
    QButtonGroup* _doubleClick;
};

}  // namespace marigold
