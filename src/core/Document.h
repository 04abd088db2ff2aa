#pragma once

#include <QObject>
#include <QString>

#include "platform/Image.h"
#include "processing/CropGeometry.h"
#include "selection/Marquee.h"

namespace marigold {

// The one open document: the picture as opened, the picture as shown (turned by the
// rotation), where it came from, the crop selection over it and the output scale. Views
// draw it and report edits to the controller; only the controller changes it, and undo is
// the controller's business: the setters here just store and tell.
class Document : public QObject {
    Q_OBJECT

public:
    explicit Document(QObject* parent = nullptr);

    // The picture as opened, upright.
    const Image& origImage() const { return _origImage; }
    // The picture as opened, reduced to fit 350 x 350: turned at every step of a drag of the
    // rotation slider instead of the whole picture.
    const Image& previewImage() const;
    // The picture the selection is drawn over and the output is cut from.
    const Image& image() const { return _image; }
    bool hasImage() const { return !_image.isNull(); }
    double rotation() const { return _rotation; }
    // Empty for a picture without a file (pasted).
    const QString& sourcePath() const { return _sourcePath; }
    // The name outputs are written under; "untitled" when there is no other.
    const QString& name() const { return _name; }
    const Marquee& marquee() const { return _marquee; }
    float scaleFactor() const { return _scaleFactor; }

    // A new picture: shown as it is, unrotated and without a selection.
    void setImage(const Image& original);
    // The shown picture alone (a rotation of the original), optionally keeping the selection.
    void setDisplayImage(const Image& image, bool deselect);
    void setRotation(double degrees);
    // The picture as opened replaced by an edited one (a flip, grey), shown as `image` at
    // `degrees`; the selection stays.
    void setEditedImage(const Image& original, const Image& image, double degrees);
    void setSourcePath(const QString& path);
    void setName(const QString& name);
    void setMarquee(const Marquee& marquee);
    void setScaleFactor(float factor);

    // An image with a selection that is not empty: something to make an output of.
    bool hasSelection() const;
    // The selection in the shown picture's pixels, origin lower-left: what the output is cut
    // from.
    RectF cropRect() const;
    // The output's exact pixel size for the current selection and scale.
    CropPlan cropPlan() const;
    // Counts every change, so that a file written for one state is never taken for another.
    quint64 revision() const { return _revision; }

Q_SIGNALS:
    void imageChanged();
    void marqueeChanged();
    void scaleFactorChanged();
    void sourcePathChanged(const QString& path);
    void nameChanged(const QString& name);

private:
    void _changed() { ++_revision; }

    Image _origImage;
    mutable Image _previewImage;
    Image _image;
    double _rotation = 0;
    QString _sourcePath;
    QString _name = QStringLiteral("untitled");
    Marquee _marquee;
    float _scaleFactor = 1.0f;
    quint64 _revision = 0;
};

}  // namespace marigold
