#pragma once

#include <QObject>
#include <array>
#include <functional>

#include "destinations/TargetWell.h"
#include "output/OutputViewDelegate.h"

namespace marigold {

class Defaults;

// The destination wells' logic: their configuration, kept under "Destinations" and
// "DClickDestination" at every change; drops and drags between them; and sending a file to
// one (an application opens it, a folder starts the save dialog there). As the output view's
// double-click receiver it sends to the chosen double-click well.
class TargetController : public QObject, public FileReceiver {
    Q_OBJECT

public:
    static constexpr int kWellCount = 6;

    explicit TargetController(Defaults& defaults, QObject* parent = nullptr);

    // What sending needs from the document side: the save dialog in a folder, and the alert
    // shown when an application cannot be launched (title, text, button).
    void setSaveInFolderHandler(std::function<void(const QString&)> handler) {
        _saveInFolder = handler;
    }
    void setAlertHandler(
        std::function<void(const QString&, const QString&, const QString&)> handler) {
        _alert = handler;
    }

    // Null for a tag outside 0-5.
    TargetWell* well(int tag);

    // Loads the wells from a stored "Destinations" table, and the double-click well.
    void setupWithDestinations(const QVariantMap& destinations, int defaultDestination);
    // Stores the well's configuration (or its absence) and tells the menus.
    void setup(int tag);

    DropOperation dragOperation(int tag, const DropOffer& offer);
    // Takes a drop the well accepted: a configuration is stored, a file is sent.
    void drop(int tag, const DropOffer& offer);

    // How a drag that started at a well ended: on another well, which took its
    // configuration; nowhere, which clears it; or back on itself, which changes nothing.
    enum class DragEnd { Moved, Nowhere, Back };
    void wellDragEnded(int tag, DragEnd end);

    // Sends `path` to the well: opened in its application, or saved in its folder.
    void sendFile(int tag, const QString& path);
    // The double-click well's send.
    void sendFile(const QString& path) override;

    int doubleClickDestination() const;
    // An empty well is refused: the stored choice stays and is shown again.
    void selectDoubleClickDestination(int tag);

Q_SIGNALS:
    void wellChanged(int tag);
    // The stored table changed: the send-to menus are rebuilt.
    void destinationsDidChange();
    // Shown on the next pass, so a refused choice visibly snaps back.
    void doubleClickDestinationChanged(int tag);

private:
    void _setDoubleClickDestination(int tag);

    Defaults& _defaults;
    std::array<TargetWell, kWellCount> _wells{TargetWell(0), TargetWell(1), TargetWell(2),
                                              TargetWell(3), TargetWell(4), TargetWell(5)};
    std::function<void(const QString&)> _saveInFolder;
    std::function<void(const QString&, const QString&, const QString&)> _alert;
};

}  // namespace marigold
