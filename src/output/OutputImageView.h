#pragma once

#include <QLabel>
#include <QPixmap>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>

#include "output/TmpFileWriter.h"
#include "platform/Image.h"

class QPageLayout;
class QPrinter;

namespace marigold {

class OutputViewDelegate;
class FileReceiver;

// The preview pane: shows the processed output, shrunk to fit (mode 0) or at actual
// pixels (mode 2), and reports the output's pixel size. It is also where the output file
// leaves: a press writes it, a drag carries it out as a copy, a double click sends it to
// the double-click destination.
class OutputImageView : public QWidget {
    Q_OBJECT

public:
    enum Scaling { ProportionallyDown = 0, None = 2 };

    explicit OutputImageView(QWidget* parent = nullptr);
    ~OutputImageView() override;

    void setImage(const Image& image);
    const Image& image() const { return _image; }
    void setImageScaling(int scaling);
    int imageScaling() const { return _scaling; }
    void setFilesizeLabel(QLabel* label) { _filesizeLabel = label; }
    // Shown while an output file is being written.
    void setProgressIndicator(QWidget* indicator) { _progressIndicator = indicator; }
    // The document the output files are written for; must outlive the view.
    void setDelegate(OutputViewDelegate* document);
    // Where a double click sends the file; nothing is sent while it answers null.
    void setDoubleClickTarget(std::function<FileReceiver*()> target) {
        _doubleClickTarget = std::move(target);
    }
    TmpFileWriter* writer() const { return _writer.get(); }

    // Writes the current output in the document's format; empty when a JPEG could not be
    // kept under the size limit.
    QString writeTmpFile();
    QString tmpPath() const { return _tmpPath; }
    void updateFilesizeTextFieldWithPath(const QString& path);
    // The output changed: the last file and its size text no longer apply.
    void clearCache();

    // Lays the output out inside 10-point margins, shrunk to fit, never enlarged.
    void printImage(QPrinter& printer) const;
    // Where the output lands on the page, in points from the corner of the margins.
    QRectF printedRect(const QPageLayout& layout) const;
    // Answers the "File Size Limit Too Low" alert; replaceable so tests need no modal dialog.
    std::function<void(const QString& title, const QString& text)> showAlert;
    // Device pixels of the area the output is shown in: what a preview needs at most.
    QSize displayPixelLimit() const;
    // Where the image is drawn, in widget coordinates.
    QRectF imageRect() const;

    QSize sizeHint() const override;

Q_SIGNALS:
    void pixelSizeChanged(int pixelWidth, int pixelHeight);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    void _updateFrame();
    void _dragFile();
    void _alertSizeLimit();
    const QPixmap& _displayPixmap(QSize devicePixels);

    Image _image;
    QPixmap _pixmap;
    int _scaling = ProportionallyDown;
    QPointer<QLabel> _filesizeLabel;
    QPointer<QWidget> _progressIndicator;
    OutputViewDelegate* _document = nullptr;
    std::unique_ptr<TmpFileWriter> _writer;
    std::function<FileReceiver*()> _doubleClickTarget;
    QString _tmpPath;
    QPointF _pressPosition;
    bool _dragPending = false;
};

}  // namespace marigold
