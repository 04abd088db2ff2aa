#pragma once

#include <QWidget>

namespace marigold::test {

// The control a screen reader announces under `name`, as a person finds it; null if none.
template <typename Control>
Control* byAccessibleName(const QWidget* root, const QString& name) {
    for (Control* control : root->findChildren<Control*>()) {
        if (control->accessibleName() == name) return control;
    }
    return nullptr;
}

}  // namespace marigold::test
