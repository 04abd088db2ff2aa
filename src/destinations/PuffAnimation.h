#pragma once

#include <QPoint>
#include <QWidget>

namespace marigold {

// A short puff of smoke where a well was dragged out of the drawer, so the person sees it
// gone rather than wondering where it went. It ignores the pointer and closes itself.
class PuffAnimation : public QWidget {
    Q_OBJECT

public:
    static void run(QPoint globalPosition);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    PuffAnimation();
    qreal _progress = 0;
};

}  // namespace marigold
