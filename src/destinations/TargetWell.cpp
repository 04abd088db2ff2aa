#include "destinations/TargetWell.h"

#include <QFileInfo>

#include "platform/Workspace.h"

namespace marigold {

using workspace::ItemKind;

void TargetWell::setDestination(const QString& path) {
    _destination = path;
    _label = workspace::displayName(path);
}

void TargetWell::clear() {
    _targetType = kEmptyTarget;
    _label.clear();
    _destination.clear();
    _path.clear();
}

std::optional<QVariantMap> TargetWell::configuration() const {
    if (isEmpty()) return std::nullopt;
    return configWithDestination(_destination, _label, _tag, _targetType);
}

void TargetWell::setConfiguration(const QVariantMap& configuration) {
    const QString destination = configuration.value(QStringLiteral("destination")).toString();
    if (destination.isEmpty() || !QFileInfo::exists(destination)) {
        clear();
        return;
    }
    _targetType = configuration.value(QStringLiteral("targetType"), kEmptyTarget).toInt();
    _label = configuration.value(QStringLiteral("label")).toString();
    setDestination(destination);
}

DropOperation dragOperationFor(const TargetWell& well, const DropOffer& offer) {
    if (offer.wellConfiguration) {
        return offer.fromThisWell ? DropOperation::Generic : DropOperation::Move;
    }
    if (offer.files.size() != 1) return DropOperation::None;
    if (offer.fromInsideApp) {
        return well.isEmpty() || well.destination().isEmpty() ? DropOperation::None
                                                              : DropOperation::Copy;
    }
    switch (workspace::kindOf(offer.files.first())) {
        case ItemKind::Folder:
        case ItemKind::Application:
            return DropOperation::Link;
        default:
            return DropOperation::None;
    }
}

void performDrop(TargetWell& well, const DropOffer& offer) {
    if (!offer.files.isEmpty()) {
        const QString file = offer.files.first();
        well.setPath({});
        switch (workspace::kindOf(file)) {
            case ItemKind::Folder:
                well.setTargetType(kFolderTarget);
                well.setDestination(file);
                break;
            case ItemKind::Application:
                // The output file is never taken for an application, even when executable.
                if (!offer.fromInsideApp) {
                    well.setTargetType(kApplicationTarget);
                    well.setDestination(file);
                    break;
                }
                [[fallthrough]];
            default:
                well.setPath(file);
                break;
        }
        return;
    }
    if (offer.wellConfiguration) well.setConfiguration(*offer.wellConfiguration);
}

}  // namespace marigold
