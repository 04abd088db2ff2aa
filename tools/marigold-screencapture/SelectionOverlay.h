#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QWidget>

// A full-screen picture of the frozen screen on which a person drags out a region, or clicks
// a window. Esc cancels. The answer is a rectangle in the picture's pixels, null when
// cancelled.
class SelectionOverlay : public QWidget {
    Q_OBJECT

public:
    SelectionOverlay(const QImage& frozen, QPoint origin, bool pickWindow, bool noFrame);

Q_SIGNALS:
    void chosen(QRect region);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    // The pixels between two pointer positions: from the first up to, not including, the second.
    static QRect _spanned(QPoint from, QPoint to);
    QPoint _devicePoint(QPointF widgetPoint) const;
    QRect _windowUnder(QPointF widgetPoint) const;

    QImage _frozen;
    QPoint _origin;  // the picture's top-left in X server pixels
    bool _pickWindow;
    bool _noFrame;
    QPoint _start;
    QRect _region;  // in the picture's pixels
    bool _dragging = false;
};
