#pragma once

#include <QObject>
#include <QStringList>
#include <functional>

#include "constraints/ConstraintPresets.h"
#include "selection/InputViewDelegate.h"

namespace marigold {

class Defaults;
class UndoManager;

// The constraint on the crop selection: none, a ratio or a pixel size from the presets, or the
// custom ratio or size. The choice and the lists live in the settings, so they survive
// restarts; choosing is one undo step, "Select Preset".
//
// Tags: -1 none, -2 custom ratio, -3 custom size, -4 the manager (a command, never stored),
// 0 to R-1 the ratio presets, R to R+S-1 the size presets.
class RatioController : public QObject, public SelectionConstraint {
    Q_OBJECT

public:
    static constexpr int kNone = -1, kCustomRatio = -2, kCustomSize = -3, kManage = -4;

    RatioController(Defaults& defaults, UndoManager& undoManager, QObject* parent = nullptr);

    // What choosing a constraint also does: the output size fields follow (the controller's
    // `setUserResizable`), and -4 opens the manager.
    void setUserResizableHandler(std::function<void()> handler) { _userResizable = handler; }
    void setShowManagerHandler(std::function<void()> handler) { _showManager = handler; }

    // The entry behind a tag: width, height and whether it is an exact pixel size. Empty
    // (0, 0, not a size) for none, the manager and tags past the lists.
    struct Lookup {
        float width = 0;
        float height = 0;
        bool actualSize = false;
    };
    Lookup presetForTag(int tag) const;

    int selectedPreset() const;
    void setSelectedPreset(int tag);

    float ratioWidth() const override;
    float ratioHeight() const override;
    // Into the custom ratio or size, whichever is chosen; nothing for any other choice.
    void setRatioWidth(float width);
    void setRatioHeight(float height);
    // An emptied custom field stores 0.
    void setNilValueForKey(const QString& key);
    // The custom fields can be typed in.
    bool widthHeightEnabled() const;
    bool actualSize() const override;
    // The scale that makes a size preset's width (or, for a width of 0, its height) come out
    // of a selection `cropWidth` x `cropHeight` (fractions of the image) of an image in pixels.
    float scaleFactorForImageSize(float imageWidth, float imageHeight, float cropWidth,
                                  float cropHeight) const override;

    // The pop-up's items as tagged strings: none, the ratio presets and the custom ratio, the
    // size presets and the custom size, the manager; separators between.
    QStringList constraintMenuItems();
    // Re-publishes the choice (a choice past the lists becomes none) and the items.
    void setConstraintMenuItems();

    // The saved lists; a missing one is the factory list, written back at once.
    QList<ConstraintPreset> presets(PresetKind kind);
    void setPresets(PresetKind kind, const QList<ConstraintPreset>& presets);

Q_SIGNALS:
    // The choice or the custom values changed: everything that depends on them is re-read.
    void constraintChanged();
    // The lists changed: the pop-up is built again from `constraintMenuItems`.
    void menuItemsChanged();

private:
    QList<ConstraintPreset> _stored(PresetKind kind) const;
    void _setCustom(bool width, float value);

    Defaults& _defaults;
    UndoManager& _undoManager;
    std::function<void()> _userResizable;
    std::function<void()> _showManager;
};

}  // namespace marigold
