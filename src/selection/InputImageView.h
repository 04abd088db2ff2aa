#pragma once

#include <QPixmap>
#include <QPointer>
#include <QWidget>

#include "selection/InputViewDelegate.h"
#include "selection/Marquee.h"
#include "selection/SelectionCursors.h"

namespace marigold {

class Document;

// Shows the document's picture fitted into the view and the crop selection over it, and turns
// presses, drags and arrow keys into selection edits reported to the delegate. It keeps no
// document state of its own, only the gesture in progress. Geometry is y-up (origin at the
// lower-left of the view), as the selection model expects.
class InputImageView : public QWidget {
    Q_OBJECT

public:
    enum State { Idle = 0, Resizing = 1, Moving = 2 };

    explicit InputImageView(QWidget* parent = nullptr);

    // The document shown (it must outlive the view) and where edits go.
    void setDocument(const Document* document);
    void setDelegate(InputViewDelegate* delegate) { _delegate = delegate; }
    void setConstraint(SelectionConstraint* constraint) { _constraint = constraint; }

    // Where the picture is drawn, in view points.
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
    bool _hasImage() const;
    Marquee _marquee() const;
    Marquee _draggedTo(PointF p) const;
    void _applyActualSizeScale(const Marquee& marquee);
    // What a screen reader says of the view: the selection in source pixels.
    void _describeSelection();
    void _imageChanged();
    void _updateCursor();
    bool _crossHairWanted() const;
    const QPixmap& _displayPixmap();

    QPointer<const Document> _document;
    InputViewDelegate* _delegate = nullptr;
    SelectionConstraint* _constraint = nullptr;
    QPixmap _pixmap;  // the picture at its drawn size, so a paint never resamples

    // The gesture in progress.
    Marquee _marqueeAtMouseDown;
    PointF _downPoint;
    State _state = Idle;
    bool _isMouseDown = false;
    bool _drawCrossHair = false;
    bool _optionKeyDown = false;
    PointF _cursorPoint;
    // The context of the document's connections, gone before the widget is half destroyed.
    QObject _connections;
};

}  // namespace marigold
