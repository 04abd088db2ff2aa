#pragma once

#include <QLabel>
#include <QPixmap>
#include <QPointer>
#include <QWidget>

#include "platform/Image.h"
#include "selection/InputViewDelegate.h"
#include "selection/Marquee.h"
#include "selection/SelectionCursors.h"

namespace marigold {

// Shows the source image fitted into the view and the crop selection over it; turns presses,
// drags and arrow keys into selection edits. Geometry is y-up (origin at the lower-left of
// the view), as the selection model expects; Qt's y-down widget coordinates are converted
// on the way in (events) and out (painting) by _viewPoint and _widgetRect only.
class InputImageView : public QWidget {
    Q_OBJECT

public:
    enum State { Idle = 0, Resizing = 1, Moving = 2 };

    explicit InputImageView(QWidget* parent = nullptr);

    void setDelegate(InputViewDelegate* delegate) { _delegate = delegate; }
    void setConstraint(SelectionConstraint* constraint) { _constraint = constraint; }
    void setSizeTextField(QLabel* field) { _sizeTextField = field; }

    void setImage(const Image& image);
    void setDisplayImage(const Image& image, bool shouldDeselect = true);
    const Image& image() const { return _displayImage; }
    const Image& origImage() const { return _origImage; }
    const Image& previewImage() const { return _previewImage; }

    const Marquee& marquee() const { return _marquee; }
    void setMarquee(const Marquee& marquee);
    // Changes the selection without an undo entry (deselect, nudges).
    void editMarqueeWithoutUndo(const Marquee& marquee);
    RectF cropRect() const;
    RectF imageBounds() const;

    void setDrawCrossHair(bool on);
    State state() const { return _state; }
    // The cursor a pointer at `viewPoint` shows now (knobs over selection over image).
    CursorKind cursorKindAt(PointF viewPoint) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    PointF _viewPoint(QPointF widgetPoint) const;
    QRectF _widgetRect(RectF viewRect) const;
    void _mouseDragged(PointF p);
    void _applyActualSizeScale();
    void _updateCursor();
    bool _crossHairWanted() const;
    const QPixmap& _displayPixmap();

    InputViewDelegate* _delegate = nullptr;
    SelectionConstraint* _constraint = nullptr;
    QPointer<QLabel> _sizeTextField;

    Image _origImage;
    Image _previewImage;
    Image _displayImage;
    QPixmap _pixmap;  // the displayed image at its drawn size, so a paint never resamples

    Marquee _marquee;
    Marquee _marqueeAtMouseDown;
    PointF _downPoint;
    State _state = Idle;
    bool _isMouseDown = false;
    bool _drawCrossHair = false;
    bool _optionKeyDown = false;
    bool _mouseInside = false;
    PointF _cursorPoint;
};

}  // namespace marigold
