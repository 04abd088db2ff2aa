#pragma once

#include <QList>
#include <QString>
#include <QVariantMap>

namespace marigold {

// What a well sends to.
enum TargetType { kEmptyTarget = -1, kFolderTarget = 0, kApplicationTarget = 1 };

// A well's configuration as stored under "Destinations" and carried by a well's drag:
// "targetType", "label", "destination" (the path) and "tag".
QVariantMap configWithDestination(const QString& destination, const QString& label, int tag,
                                  int targetType);

// The send-to title of a stored configuration: "Save on Desktop", "Save in NAME",
// "Open in NAME" or "Unknown".
QString labelForDestination(const QVariantMap& record);

// One entry of a send-to menu: its title, the well it sends to, and the digit of its
// shortcut (Ctrl+Alt+digit), which is the well's place, not the entry's.
struct SendToItem {
    QString title;
    int tag = 0;
    int digit = 0;
    friend bool operator==(const SendToItem&, const SendToItem&) = default;
};

// The send-to entries for the stored "Destinations", wells 0 to 5 in order; an empty well
// leaves no entry.
QList<SendToItem> sendToMenuItems(const QVariantMap& destinations);

}  // namespace marigold
