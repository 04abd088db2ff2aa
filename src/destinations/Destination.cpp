#include "destinations/Destination.h"

#include <QCoreApplication>

namespace marigold {

namespace {

constexpr int kWellCount = 6;

QString tr(const char* text) {
    return QCoreApplication::translate("Destination", text);
}

}  // namespace

QVariantMap configWithDestination(const QString& destination, const QString& label, int tag,
                                  int targetType) {
    return {{QStringLiteral("targetType"), targetType},
            {QStringLiteral("label"), label},
            {QStringLiteral("destination"), destination},
            {QStringLiteral("tag"), tag}};
}

QString labelForDestination(const QVariantMap& record) {
    const QString name = record.value(QStringLiteral("label")).toString();
    switch (record.value(QStringLiteral("targetType"), kEmptyTarget).toInt()) {
        case kFolderTarget:
            return name == QLatin1String("Desktop") ? tr("Save on %1").arg(name)
                                                    : tr("Save in %1").arg(name);
        case kApplicationTarget:
            return tr("Open in %1").arg(name);
        default:
            return tr("Unknown");
    }
}

QList<SendToItem> sendToMenuItems(const QVariantMap& destinations) {
    QList<SendToItem> items;
    for (int i = 0; i < kWellCount; ++i) {
        const QVariant stored = destinations.value(QString::number(i));
        if (!stored.isValid()) continue;
        const QVariantMap record = stored.toMap();
        items.append({labelForDestination(record), record.value(QStringLiteral("tag")).toInt(),
                      i + 1});
    }
    return items;
}

}  // namespace marigold
