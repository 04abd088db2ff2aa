#include "jpeg/InfoController.h"

#include <QFileInfo>
#include <QFormLayout>
#include <QPixmap>
#include <QVBoxLayout>

#include "jpeg/BFImageInfo.h"
#include "platform/Defaults.h"

namespace marigold {

namespace {

const QString kFrameKey = QStringLiteral("InfoWindow");

}  // namespace

InfoController::InfoController(Defaults& defaults, QWidget* parent)
    : QWidget(parent, Qt::Window), _defaults(defaults) {
    setObjectName(QStringLiteral("infoWindow"));
    setWindowTitle(tr("Info"));
    _thumbnail = new QLabel;
    _thumbnail->setFixedSize(32, 32);
    _thumbnail->setAlignment(Qt::AlignCenter);
    auto* form = new QFormLayout;
    for (const auto& [label, value] : infoFields(std::nullopt)) {
        auto* name = new QLabel(label + QLatin1Char(':'));
        auto* text = new QLabel(value);
        text->setTextInteractionFlags(Qt::TextSelectableByMouse);
        text->setWordWrap(true);
        form->addRow(name, text);
        _fields.append(qMakePair(name, text));
    }
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(_thumbnail, 0, Qt::AlignHCenter);
    layout->addLayout(form);
}

void InfoController::setPath(const QString& path) {
    _path = path;
    // Reading waits until the window is shown: opening a document must not pay for it.
    _stale = true;
    if (isVisible()) _parseFileAtPath();
}

void InfoController::_parseFileAtPath() {
    _stale = false;
    if (_path.isEmpty() || !QFileInfo(_path).isFile()) return;
    const std::optional<BFImageInfo> info = BFImageInfo::fromFile(_path);
    const auto fields = infoFields(info);
    for (qsizetype n = 0; n < fields.size() && n < _fields.size(); ++n) {
        _fields[n].second->setText(fields[n].second);
    }
    _thumbnail->setPixmap(info ? QPixmap::fromImage(info->thumbnail()) : QPixmap());
}

QString InfoController::fieldText(const QString& label) const {
    for (const auto& [name, text] : _fields) {
        if (name->text() == label + QLatin1Char(':')) return text->text();
    }
    return {};
}

void InfoController::showWindow() {
    const QByteArray frame = _defaults.frameForKey(kFrameKey);
    if (!frame.isEmpty()) restoreGeometry(frame);
    show();
    raise();
    activateWindow();
}

void InfoController::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (_stale) _parseFileAtPath();
}

void InfoController::hideEvent(QHideEvent* event) {
    _defaults.setFrame(kFrameKey, saveGeometry());
    QWidget::hideEvent(event);
}

}  // namespace marigold
