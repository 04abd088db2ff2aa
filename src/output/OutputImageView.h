#pragma once

#include <QPixmap>
#include <QWidget>
#include <functional>

#include "platform/Image.h"

namespace marigold {

class OutputViewDelegate;
class FileReceiver;

// The preview pane: shows the output preview, shrunk to fit (mode 0) or at actual pixels
// (mode 2), or a short message where there is none to show. It is also where the output file
// leaves: a press has the delegate write it, a drag carries it out as a copy, a double click
// sends it to the double-click destination. The preview is only looked at: files are always
// made by the delegate from the document.
class OutputImageView : public QWidget {
    Q_OBJECT

public:
    enum Scaling { ProportionallyDown = 0, None = 2 };

    explicit OutputImageView(QWidget* parent = nullptr);

    void setImage(const Image& image);
    const Image& image() const { return _image; }
    // Shown instead of a picture (the output would be too large, for example).
    void setMessage(const QString& message);
    QString message() const { return _message; }
    void setImageScaling(int scaling);
    int imageScaling() const { return _scaling; }
    // Where files come from; must outlive the view.
    void setDelegate(OutputViewDelegate* delegate) { _delegate = delegate; }
    // Where a double click sends the file; nothing is sent while it answers null.
    void setDoubleClickTarget(std::function<FileReceiver*()> target) {
        _doubleClickTarget = std::move(target);
    }
    // The file written by the last press.
    QString tmpPath() const { return _tmpPath; }

    // Device pixels of the area the output is shown in: what a preview needs at most.
    QSize displayPixelLimit() const;
    // Where the image is drawn, in widget coordinates.
    QRectF imageRect() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    void _updateFrame();
    void _dragFile();
    const QPixmap& _displayPixmap(QSize devicePixels);

    Image _image;
    QString _message;
    QPixmap _pixmap;
    int _scaling = ProportionallyDown;
    OutputViewDelegate* _delegate = nullptr;
    std::function<FileReceiver*()> _doubleClickTarget;
    QString _tmpPath;
    QPointF _pressPosition;
    bool _dragPending = false;
};

}  // namespace marigold
