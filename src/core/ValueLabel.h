#pragma once

#include <QLabel>

namespace marigold {

// Shows `text` in a label whose accessible name says what it is ("Source size"). The name
// would hide the text from a screen reader, so the value is its description too, which is
// read after the name.
inline void showLabelValue(QLabel* label, const QString& text) {
    label->setText(text);
    label->setAccessibleDescription(text);
}

}  // namespace marigold
