#pragma once

#include <QObject>
#include <functional>
#include <vector>

#include "core/PreferencesBuffer.h"

class QCheckBox;
class QComboBox;
class QDialog;
class QFormLayout;
class QSpinBox;
class QToolButton;
class QWidget;

namespace marigold {

class AppController;

// The preferences dialog: window-modal over the main window, its controls editing a buffer
// that OK writes and Cancel drops. Either way the controller re-reads the preferences a
// moment after the dialog has gone.
class PreferenceController : public QObject {
    Q_OBJECT

public:
    PreferenceController(AppController& controller, QWidget* parentWindow);
    ~PreferenceController() override;

    // Refreshes the buffer and the controls, then shows the dialog without blocking.
    void showWindow();
    // OK: ends the dialog with code 1. Cancel: with code 0.
    void accept();
    void cancel();
    // Below 1 the edits are dropped, otherwise written; preferenceDidChange follows 0.2 s later.
    void sheetDidEnd(int returnCode);
    void updateDefaultsController();
    bool isVisible() const;
    QDialog* window() const { return _dialog; }

private:
    void _build();
    QFormLayout* _group(const QString& title);
    template <typename Control, typename Changed, typename Store, typename Load>
    Control* _bound(Control* control, const QString& name, const QString& tip, Changed changed,
                    Store store, Load load);
    QCheckBox* _checkBox(QLatin1StringView key, const QString& text, const QString& tip);
    QSpinBox* _spinBox(QLatin1StringView key, const QString& name, const QString& suffix,
                       const QString& tip);
    QComboBox* _popUp(QLatin1StringView key, const QString& name, const QStringList& items,
                      const QString& tip);
    QToolButton* _colorSwatch(QLatin1StringView key, const QString& name, const QString& tip);
    void _chooseColor(QLatin1StringView key, QToolButton* swatch);
    void _loadControls();

    AppController& _controller;
    PreferencesBuffer _buffer;
    QDialog* _dialog = nullptr;
    QWidget* _groups = nullptr;
    // One per control: sets it from the buffer without recording an edit.
    std::vector<std::function<void()>> _loaders;
};

}  // namespace marigold
