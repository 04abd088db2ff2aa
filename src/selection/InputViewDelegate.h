#pragma once

#include <QString>

namespace marigold {

class Marquee;

// How the input view reports edits of the selection to the controller that owns the document.
class InputViewDelegate {
public:
    virtual ~InputViewDelegate() = default;
    // While the pointer drags: the selection follows without an undo step.
    virtual void dragMarquee(const Marquee& marquee) = 0;
    // The pointer let go: one undo step back to the selection from before the press.
    virtual void finishMarqueeDrag(const Marquee& before, const Marquee& after) = 0;
    // An arrow key moved the selection: deliberately no undo step.
    virtual void nudgeMarquee(const Marquee& marquee) = 0;
    // A size preset holds the output size while the selection changes.
    virtual void setScaleFactorWithoutUndo(float factor) = 0;
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
