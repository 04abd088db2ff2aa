#include "core/TimedCapture.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGuiApplication>
#include <QPushButton>
#include <QScreen>

#include "core/AppController.h"
#include "core/ValueLabel.h"
#include "core/WindowDialogs.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

namespace {

constexpr int kLongestDelay = 3600;
constexpr int kCountdownSide = 96;

}  // namespace

TimedCaptureDialog::TimedCaptureDialog(AppController& controller, QWidget* window)
    : QDialog(window), _controller(controller), _delay(new QSpinBox) {
    setObjectName(QStringLiteral("TimedCapture"));
    setWindowTitle(tr("Timed Screen Capture"));
    setWindowModality(Qt::WindowModal);
    _delay->setRange(1, kLongestDelay);
    _delay->setAccessibleName(tr("Delay"));
    _delay->setToolTip(tr("How long to wait before the screen is captured"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    QPushButton* start = buttons->addButton(tr("Start"), QDialogButtonBox::AcceptRole);
    start->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(this, &QDialog::accepted, &controller,
            [this] { _controller.captureScreenTimedStart(_delay->value()); });
    auto* layout = new QFormLayout(this);
    layout->addRow(tr("&Delay in seconds:"), _delay);
    layout->addRow(buttons);
    returnKeyboardOnClose(this, window);
}

void TimedCaptureDialog::showDialog() {
    _delay->setValue(std::max(1, _controller.defaults().integerForKey(keys::DefTimedCaptureDelay)));
    _delay->selectAll();
    open();
}

CountdownWindow::CountdownWindow(AppController& controller)
    : QLabel(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
    setObjectName(QStringLiteral("Countdown"));
    setWindowTitle(tr("Countdown"));
    setAccessibleName(tr("Countdown"));
    setAlignment(Qt::AlignCenter);
    setAutoFillBackground(true);
    QFont big = font();
    big.setPixelSize(kCountdownSide * 2 / 3);
    big.setBold(true);
    setFont(big);
    setFixedSize(kCountdownSide, kCountdownSide);
    connect(&controller, &AppController::countdownChanged, this, [this](const QString& text) {
        showLabelValue(this, text);
        if (isVisible()) return;
        if (QScreen* screen = QGuiApplication::primaryScreen()) {
            move(screen->availableGeometry().center() - rect().center());
        }
        show();
        raise();
    });
    connect(&controller, &AppController::countdownEnded, this, &QWidget::hide);
}

}  // namespace marigold
