#pragma once

#include <QScrollArea>

namespace marigold {

// A scroll area that shows a document smaller than its viewport in the middle, on whole
// points, and scrolls a larger one within its bounds. Origins are those of the document
// seen from the viewport: negative when the document is centred in a larger viewport.
class CenteringScrollArea : public QScrollArea {
    Q_OBJECT

public:
    explicit CenteringScrollArea(QWidget* parent = nullptr);

    // Scrolls so that a document smaller than the viewport sits in its middle.
    void centerDocument();
    // The origin the view accepts for `proposed`.
    QPoint constrainScrollPoint(QPoint proposed) const;
    // Where the viewport's top-left corner is, in the document's coordinates.
    QPoint documentOrigin() const;

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void _scrollTo(QPoint origin);
};

}  // namespace marigold
