#include "destinations/PuffAnimation.h"

#include <QPainter>
#include <QVariantAnimation>
#include <cmath>

namespace marigold {

namespace {

constexpr int kSide = 64;
constexpr int kDurationMsec = 350;
constexpr int kClouds = 5;

}  // namespace

PuffAnimation::PuffAnimation() : QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_DeleteOnClose);
    setFixedSize(kSide, kSide);
}

void PuffAnimation::run(QPoint globalPosition) {
    auto* puff = new PuffAnimation;
    puff->move(globalPosition - QPoint(kSide / 2, kSide / 2));
    auto* animation = new QVariantAnimation(puff);
    animation->setStartValue(0.0);
    animation->setEndValue(1.0);
    animation->setDuration(kDurationMsec);
    connect(animation, &QVariantAnimation::valueChanged, puff, [puff](const QVariant& value) {
        puff->_progress = value.toReal();
        puff->update();
    });
    connect(animation, &QVariantAnimation::finished, puff, &QWidget::close);
    puff->show();
    animation->start();
}

void PuffAnimation::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor smoke = palette().color(QPalette::Mid);
    smoke.setAlphaF(0.8 * (1 - _progress));
    painter.setPen(Qt::NoPen);
    painter.setBrush(smoke);
    // Small clouds drifting outwards from the drop point as they grow and fade.
    const QPointF centre(kSide / 2.0, kSide / 2.0);
    const qreal spread = 6 + 16 * _progress;
    const qreal radius = 6 + 8 * _progress;
    for (int i = 0; i < kClouds; ++i) {
        const qreal angle = 2 * M_PI * i / kClouds;
        painter.drawEllipse(centre + QPointF(std::cos(angle), std::sin(angle)) * spread, radius,
                            radius);
    }
}

}  // namespace marigold
