#include "destinations/TargetController.h"

#include <QTimer>

#include "platform/Defaults.h"
#include "platform/DefaultsKeys.h"
#include "platform/Workspace.h"

namespace marigold {

using namespace keys;

TargetController::TargetController(Defaults& defaults, QObject* parent)
    : QObject(parent), _defaults(defaults) {}

TargetWell* TargetController::well(int tag) {
    return tag >= 0 && tag < kWellCount ? &_wells[size_t(tag)] : nullptr;
}

void TargetController::setupWithDestinations(const QVariantMap& destinations,
                                             int defaultDestination) {
    for (auto it = destinations.begin(); it != destinations.end(); ++it) {
        bool isNumber = false;
        const int tag = it.key().toInt(&isNumber);
        if (TargetWell* target = isNumber ? well(tag) : nullptr) {
            target->setConfiguration(it.value().toMap());
            Q_EMIT wellChanged(tag);
        }
    }
    _setDoubleClickDestination(defaultDestination);
}

void TargetController::setup(int tag) {
    const TargetWell* target = well(tag);
    if (!target) return;
    QVariantMap destinations = _defaults.dictionaryForKey(DefDestinations);
    if (const auto configuration = target->configuration()) {
        destinations.insert(QString::number(tag), *configuration);
    } else {
        destinations.remove(QString::number(tag));
    }
    _defaults.setObject(DefDestinations, destinations);
    Q_EMIT wellChanged(tag);
    Q_EMIT destinationsDidChange();
}

DropOperation TargetController::dragOperation(int tag, const DropOffer& offer) {
    const TargetWell* target = well(tag);
    return target ? dragOperationFor(*target, offer) : DropOperation::None;
}

void TargetController::drop(int tag, const DropOffer& offer) {
    TargetWell* target = well(tag);
    if (!target) return;
    performDrop(*target, offer);
    if (!target->path().isEmpty()) {
        const QString file = target->path();
        target->setPath({});
        sendFile(tag, file);
    } else {
        setup(tag);
    }
}

void TargetController::wellDragEnded(int tag, DragEnd end) {
    TargetWell* target = well(tag);
    if (!target || end == DragEnd::Back) return;
    target->clear();
    setup(tag);
}

void TargetController::sendFile(int tag, const QString& path) {
    const TargetWell* target = well(tag);
    if (!target || path.isEmpty()) return;
    switch (target->targetType()) {
        case kApplicationTarget:
            if (!workspace::openWithApplication(path, target->destination(), nullptr) && _alert) {
                _alert(tr("Unable to launch application %1").arg(target->destination()),
                       tr("Please check your destination setup."), tr("Okay"));
            }
            break;
        case kFolderTarget:
            // The save dialog writes the output afresh; the file in hand is not used.
            if (_saveInFolder) _saveInFolder(target->destination());
            break;
        default:
            break;
    }
}

void TargetController::sendFile(const QString& path) {
    sendFile(doubleClickDestination(), path);
}

int TargetController::doubleClickDestination() const {
    return _defaults.integerForKey(DefDoubleClickDestination);
}

void TargetController::selectDoubleClickDestination(int tag) {
    const bool configured =
        _defaults.dictionaryForKey(DefDestinations).contains(QString::number(tag));
    _setDoubleClickDestination(configured ? tag : doubleClickDestination());
}

void TargetController::_setDoubleClickDestination(int tag) {
    _defaults.setInteger(DefDoubleClickDestination, tag);
    QTimer::singleShot(0, this, [this] { Q_EMIT doubleClickDestinationChanged(doubleClickDestination()); });
}

}  // namespace marigold
