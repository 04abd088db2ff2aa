#include "destinations/TargetView.h"

#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QIcon>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMimeData>
#include <QPainter>
#include <QTimer>

#include "destinations/PuffAnimation.h"
#include "destinations/TargetController.h"
#include "platform/Workspace.h"

namespace marigold {

namespace {

constexpr int kIconSide = 32;
constexpr int kIconLeft = 8;

Qt::DropAction qtAction(DropOperation operation) {
    switch (operation) {
        case DropOperation::Copy:
            return Qt::CopyAction;
        case DropOperation::Link:
            return Qt::LinkAction;
        case DropOperation::Move:
        case DropOperation::Generic:
            return Qt::MoveAction;
        case DropOperation::None:
            break;
    }
    return Qt::IgnoreAction;
}

QIcon iconFor(const QString& path) {
    for (const QString& name : workspace::iconNames(path)) {
        if (QIcon::hasThemeIcon(name)) return QIcon::fromTheme(name);
    }
    return QIcon::fromTheme(QFileInfo(path).isDir() ? QStringLiteral("folder")
                                                    : QStringLiteral("application-x-executable"));
}

}  // namespace

TargetView::TargetView(TargetController& controller, int tag, QWidget* parent)
    : QFrame(parent), _controller(controller), _tag(tag) {
    setAcceptDrops(true);
    setFrameShape(QFrame::StyledPanel);
    setFrameShadow(QFrame::Sunken);
    setFixedSize(kPictureWidth + 12, kPictureHeight + 12);
    setFocusPolicy(Qt::TabFocus);
    setAccessibleName(tr("Destination %1").arg(tag + 1));
    connect(&controller, &TargetController::wellChanged, this, [this](int changed) {
        if (changed == _tag) _refresh();
    });
    _refresh();
}

QString TargetView::dragType() {
    return QStringLiteral("DestinationPboardType");
}

QPixmap TargetView::picture() const {
    const TargetWell* well = _controller.well(_tag);
    if (!well || well->isEmpty()) return {};
    const qreal ratio = devicePixelRatioF();
    QPixmap picture(QSize(kPictureWidth, kPictureHeight) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    iconFor(well->destination()).paint(&painter, kIconLeft, 0, kIconSide, kIconSide);
    painter.setFont(QApplication::font("QLabel"));
    painter.setPen(palette().color(QPalette::WindowText));
    // The file or folder name without its extension, centred unless it is wider than the
    // picture; the well's label (a launcher's Name) is what the menus and screen readers say.
    const QString name = QFileInfo(well->destination()).completeBaseName();
    const int textWidth = painter.fontMetrics().horizontalAdvance(name);
    const int x = textWidth > kPictureWidth ? 0 : (kPictureWidth - textWidth) / 2;
    painter.drawText(QRect(x, kIconSide, kPictureWidth - x, kPictureHeight - kIconSide),
                     Qt::AlignLeft | Qt::AlignBottom, name);
    return picture;
}

void TargetView::_refresh() {
    _picture = picture();
    const TargetWell* well = _controller.well(_tag);
    const bool empty = !well || well->isEmpty();
    setAccessibleDescription(empty ? tr("Empty: drop a folder or an application here")
                                   : well->label());
    setToolTip(empty ? tr("Drop a folder or an application here to send the output there")
                     : well->destination());
    update();
}

void TargetView::paintEvent(QPaintEvent* event) {
    QFrame::paintEvent(event);
    if (_picture.isNull()) return;
    QPainter painter(this);
    const QSize size = _picture.deviceIndependentSize().toSize();
    painter.drawPixmap((width() - size.width()) / 2, (height() - size.height()) / 2, _picture);
}

DropOffer TargetView::_offer(const QDropEvent* event) const {
    DropOffer offer;
    const QMimeData* data = event->mimeData();
    if (data->hasFormat(dragType())) {
        offer.wellConfiguration =
            QJsonDocument::fromJson(data->data(dragType())).object().toVariantMap();
        offer.fromThisWell = event->source() == this;
    } else if (data->hasUrls()) {
        for (const QUrl& url : data->urls()) {
            if (url.isLocalFile()) offer.files << url.toLocalFile();
        }
    }
    // From inside Marigold, a file can only be the output.
    offer.fromInsideApp = event->source() != nullptr && !offer.wellConfiguration;
    return offer;
}

bool TargetView::_judge(QDropEvent* event) {
    const Qt::DropAction action = qtAction(_controller.dragOperation(_tag, _offer(event)));
    if (action == Qt::IgnoreAction || !(event->possibleActions() & action)) {
        event->ignore();
        return false;
    }
    event->setDropAction(action);
    event->accept();
    return true;
}

void TargetView::dragEnterEvent(QDragEnterEvent* event) {
    _judge(event);
}

void TargetView::dragMoveEvent(QDragMoveEvent* event) {
    _judge(event);
}

void TargetView::dropEvent(QDropEvent* event) {
    if (!_judge(event)) return;
    // Sending can open a dialog or start an application: not inside the drag's own event.
    QTimer::singleShot(0, this, [this, offer = _offer(event)] { _controller.drop(_tag, offer); });
}

void TargetView::mousePressEvent(QMouseEvent* event) {
    _dragPending = event->button() == Qt::LeftButton && !_picture.isNull();
    _pressPosition = event->position().toPoint();
    QFrame::mousePressEvent(event);
}

void TargetView::mouseMoveEvent(QMouseEvent* event) {
    if (!_dragPending || !(event->buttons() & Qt::LeftButton)) return;
    if ((event->position().toPoint() - _pressPosition).manhattanLength() <
        QApplication::startDragDistance()) {
        return;
    }
    _dragPending = false;
    _dragOut();
}

void TargetView::_dragOut() {
    const auto configuration = _controller.well(_tag)->configuration();
    if (!configuration) return;
    auto* data = new QMimeData;
    data->setData(dragType(),
                  QJsonDocument(QJsonObject::fromVariantMap(*configuration)).toJson());
    auto* drag = new QDrag(this);
    drag->setMimeData(data);
    drag->setPixmap(_picture);
    drag->setHotSpot(QPoint(_picture.deviceIndependentSize().toSize().width() / 2,
                            _picture.deviceIndependentSize().toSize().height() / 2));
    const Qt::DropAction result = drag->exec(Qt::MoveAction);
    if (drag->target() == this) {
        _controller.wellDragEnded(_tag, TargetController::DragEnd::Back);
    } else if (result == Qt::MoveAction) {
        _controller.wellDragEnded(_tag, TargetController::DragEnd::Moved);
    } else {
        _controller.wellDragEnded(_tag, TargetController::DragEnd::Nowhere);
        PuffAnimation::run(QCursor::pos());
    }
}

}  // namespace marigold
