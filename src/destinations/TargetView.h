#pragma once

#include <QFrame>
#include <QPixmap>
#include <QPoint>

namespace marigold {

class TargetController;
struct DropOffer;

// One destination well in the drawer. A folder or an application dropped on it configures
// it; the output file dropped on a configured well is sent there. A configured well is
// dragged onto another well to move it there, or out of the drawer to clear it.
class TargetView : public QFrame {
    Q_OBJECT

public:
    static constexpr int kPictureWidth = 56;
    static constexpr int kPictureHeight = 48;

    TargetView(TargetController& controller, int tag, QWidget* parent = nullptr);

    int tag() const { return _tag; }
    // The destination's icon, 32 x 32 at the top, its file name centred beneath; null when
    // the well is empty.
    QPixmap picture() const;

    // The drag type of a well's configuration.
    static QString dragType();

protected:
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    DropOffer _offer(const QDropEvent* event) const;
    bool _judge(QDropEvent* event);
    void _dragOut();
    // Re-reads the well after a change.
    void _refresh();

    TargetController& _controller;
    int _tag;
    QPixmap _picture;
    QPoint _pressPosition;
    bool _dragPending = false;
};

}  // namespace marigold
