#pragma once

#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <optional>

#include "destinations/Destination.h"

namespace marigold {

// One destination well's state: empty, or a folder or application it sends to. The label is
// always derived from the destination's path, never taken from a stored one.
class TargetWell {
public:
    explicit TargetWell(int tag) : _tag(tag) {}

    int tag() const { return _tag; }
    int targetType() const { return _targetType; }
    bool isEmpty() const { return _targetType == kEmptyTarget; }
    QString label() const { return _label; }
    QString destination() const { return _destination; }
    // The file being sent, set only while a send is under way.
    QString path() const { return _path; }

    void setTargetType(int type) { _targetType = type; }
    void setPath(const QString& path) { _path = path; }
    // Stores the path and names the well after it.
    void setDestination(const QString& path);
    void clear();

    // Null for an empty well.
    std::optional<QVariantMap> configuration() const;
    // Takes a stored or dragged configuration; a destination that no longer exists leaves
    // the well empty.
    void setConfiguration(const QVariantMap& configuration);

private:
    int _tag;
    int _targetType = kEmptyTarget;
    QString _label;
    QString _destination;
    QString _path;
};

// What is dragged over a well, as the well judges it.
struct DropOffer {
    QStringList files;  // local paths, in the order offered
    std::optional<QVariantMap> wellConfiguration;  // another well (or this one) being moved
    bool fromThisWell = false;
    bool fromInsideApp = false;  // the output file, dragged from the preview
};

enum class DropOperation { None, Copy, Link, Move, Generic };

// Whether `well` takes the drag, and how: a well's configuration moves (and is generic back
// onto its own well); exactly one file, which from inside Marigold is copied to a configured
// well only, and from outside links when it is a folder or an application.
DropOperation dragOperationFor(const TargetWell& well, const DropOffer& offer);

// Takes the drop into the well: a folder or an application configures it, a well's
// configuration replaces its own, any other file becomes its `path`, to be sent.
void performDrop(TargetWell& well, const DropOffer& offer);

}  // namespace marigold
