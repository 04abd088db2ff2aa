#include "core/CursorImages.h"

#include "core/SettingRanges.h"
#include "platform/DefaultsKeys.h"
#include "platform/Resources.h"

namespace marigold {

const QStringList& cursorNames() {
    static const QStringList names = {QStringLiteral("arrow"), QStringLiteral("IBeam"),
                                      QStringLiteral("crosshair"), QStringLiteral("openHand"),
                                      QStringLiteral("pointingHand")};
    return names;
}

const QMap<QString, CursorImage>& cursorImages() {
    static const QMap<QString, CursorImage> images = [] {
        initResources();
        const auto load = [](const char* file, QPoint hotSpot) {
            return CursorImage{
                QImage(QStringLiteral(":/cursors/%1.png").arg(QLatin1StringView(file)))
                    .convertToFormat(QImage::Format_RGBA8888),
                hotSpot};
        };
        // The arrow and the hand point with their tips; the others at their centres.
        return QMap<QString, CursorImage>{
            {QStringLiteral("arrow"), load("cursor_arrow", {1, 0})},
            {QStringLiteral("IBeam"), load("cursor_ibeam", {8, 8})},
            {QStringLiteral("crosshair"), load("cursor_cross", {8, 8})},
            {QStringLiteral("openHand"), load("cursor_open_hand", {8, 8})},
            {QStringLiteral("pointingHand"), load("cursor_pointing_hand", {5, 0})},
        };
    }();
    return images;
}

std::optional<CursorImage> selectedCursor(const Defaults& defaults) {
    const int code = integerSetting(defaults, keys::DefCursor);
    if (code < 1 || code > cursorNames().size()) return std::nullopt;
    return cursorImages().value(cursorNames()[code - 1]);
}

}  // namespace marigold
