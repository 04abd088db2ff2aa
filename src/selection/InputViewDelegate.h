#pragma once

#include <QString>

namespace marigold {

class UndoManager;

// What the input view asks of the document that owns it.
class InputViewDelegate {
public:
    virtual ~InputViewDelegate() = default;
    virtual UndoManager& undoManager() = 0;
    virtual void resetControls() = 0;
    virtual void updatePreview() = 0;
    virtual void updatePreviewFast(bool fast) = 0;
    virtual void setScaleFactorWithoutUndo(float factor) = 0;
    virtual void setUserResizable(bool resizable) = 0;
    // The "LivePreview" preference: fast previews while the selection is dragged.
    virtual bool livePreview() const = 0;
    // A file dropped on the view; false leaves the document as it was.
    virtual bool openFile(const QString& path) = 0;
};

// The constraint put on the selection (ratio or exact pixel size); absent means free.
class SelectionConstraint {
public:
    virtual ~SelectionConstraint() = default;
    virtual float ratioHeight() const = 0;
    virtual float ratioWidth() const = 0;
    virtual bool actualSize() const = 0;
    virtual float scaleFactorForImageSize(float imageWidth, float imageHeight, float cropWidth,
                                          float cropHeight) const = 0;
};

}  // namespace marigold
