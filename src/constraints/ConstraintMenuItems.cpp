#include "constraints/ConstraintMenuItems.h"

#include <QStringList>

namespace marigold {

namespace {

constexpr int kManageConstraintsTag = -4;

}  // namespace

QString itemStringWithTitle(const QString& title, int tag) {
    return QStringLiteral("::$$%1$$%2").arg(title).arg(tag);
}

QString itemStringForSeparator() {
    return itemStringWithTitle(QStringLiteral("-"), kSeparatorTag);
}

TaggedMenuItem::TaggedMenuItem(const QString& title) : _title(title) {
    const QStringList parts = title.split(QStringLiteral("$$"));
    if (!title.startsWith(QStringLiteral("::")) || parts.size() != 3) return;
    _title = parts[1];
    _tag = parts[2].toInt();
    _separator = _title == QStringLiteral("-");
    if (_tag == kManageConstraintsTag) _keyEquivalent = QStringLiteral(";");
}

void TaggedMenuItem::setTag(int tag) {
    if (_tag == kUntaggedItem) _tag = tag;
}

QString TaggedMenuItem::description() const {
    return QStringLiteral("%1 - %2").arg(_tag).arg(_title);
}

}  // namespace marigold
