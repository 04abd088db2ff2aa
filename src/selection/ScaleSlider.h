#pragma once

#include <QElapsedTimer>
#include <QSlider>
#include <functional>

namespace marigold {

// The output scale slider. Its wheel does not move it: each click steps the output size by
// pixels instead (cheap), and once the wheel has rested a single closing step of 0 asks for
// the full result. A press ends with a request for a full preview.
class ScaleSlider : public QSlider {
    Q_OBJECT

public:
    explicit ScaleSlider(QWidget* parent = nullptr);

    // Called with each wheel step (±1, ±10 with Ctrl) and with 0 when a burst has ended.
    void setScaleImageByPixels(std::function<void(int)> call) { _scaleImageByPixels = call; }
    void setUpdatePreview(std::function<void()> call) { _updatePreview = call; }

    // Never set by the slider itself: a drag is closed by its release, not by a final action.
    bool isFinalAction() const { return false; }
    // The number of times this was asked since the last press: the first answer is 0.
    int actionCount() { return _actionCount++; }

    // How long the wheel must rest before a burst closes, and how often that is looked at.
    static constexpr qint64 kRestMsec = 200;
    static constexpr int kSettleMsec = 500;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void _check();

    std::function<void(int)> _scaleImageByPixels;
    std::function<void()> _updatePreview;
    QElapsedTimer _clock;
    qint64 _lastScrollWheel = 0;
    bool _timerActive = false;
    int _actionCount = 0;
};

}  // namespace marigold
