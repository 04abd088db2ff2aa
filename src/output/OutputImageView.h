#pragma once

#include <QLabel>
#include <QPixmap>
#include <QPointer>
#include <QWidget>

#include "platform/Image.h"

namespace marigold {

// The preview pane: shows the processed output, shrunk to fit (mode 0) or at actual
// pixels (mode 2), and reports the output's pixel size.
class OutputImageView : public QWidget {
    Q_OBJECT

public:
    enum Scaling { ProportionallyDown = 0, None = 2 };

    explicit OutputImageView(QWidget* parent = nullptr);

    void setImage(const Image& image);
    const Image& image() const { return _image; }
    void setImageScaling(int scaling);
    int imageScaling() const { return _scaling; }
    void setFilesizeLabel(QLabel* label) { _filesizeLabel = label; }
    // The output changed: its file-size text no longer applies.
    void clearCache();
    // Device pixels of the area the output is shown in: what a preview needs at most.
    QSize displayPixelLimit() const;
    // Where the image is drawn, in widget coordinates.
    QRectF imageRect() const;

    QSize sizeHint() const override;

Q_SIGNALS:
    void pixelSizeChanged(int pixelWidth, int pixelHeight);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void _updateFrame();
    const QPixmap& _displayPixmap(QSize devicePixels);

    Image _image;
    QPixmap _pixmap;
    int _scaling = ProportionallyDown;
    QPointer<QLabel> _filesizeLabel;
};

}  // namespace marigold
