#include "PortalCapture.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QSaveFile>
#include <QScreen>
#include <QUrl>

namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");

// The portal answers at a path made of our bus name and a token we choose; listening there
// before asking leaves no gap for the answer to slip through.
QString requestPath(const QDBusConnection& bus, const QString& token) {
    QString sender = bus.baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    return kPath + QStringLiteral("/request/") + sender + QLatin1Char('/') + token;
}

bool portalPresent(const QDBusConnection& bus) {
    QDBusConnectionInterface* daemon = bus.interface();
    return daemon && (daemon->isServiceRegistered(kService).value() ||
                      daemon->activatableServiceNames().value().contains(kService));
}

bool copyFile(const QString& from, const QString& to, QString* error) {
    QFile in(from);
    QSaveFile out(to);
    if (in.open(QIODevice::ReadOnly) && out.open(QIODevice::WriteOnly) &&
        out.write(in.readAll()) == in.size() && out.commit()) {
        return true;
    }
    *error = QStringLiteral("%1: cannot copy the portal's picture to %2").arg(from, to);
    return false;
}

// The main screen's part of a picture of every screen.
QImage mainScreenOf(const QImage& all) {
    QScreen* primary = QGuiApplication::primaryScreen();
    if (!primary) return all;
    const qreal ratio = primary->devicePixelRatio();
    const QRect desktop = primary->virtualGeometry();
    const QRect main = primary->geometry().translated(-desktop.topLeft());
    const QRect pixels(main.topLeft() * ratio, main.size() * ratio);
    return all.size() == pixels.size() ? all : all.copy(pixels.intersected(all.rect()));
}

}  // namespace

void PortalResponse::take(uint code, const QVariantMap& values) {
    response = code;
    results = values;
    answered = true;
    Q_EMIT arrived();
}

PortalOutcome captureWithPortal(const CaptureRequest& request, QString* error) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !portalPresent(bus)) return PortalOutcome::Unavailable;

    const QString token = QStringLiteral("marigold%1").arg(QCoreApplication::applicationPid());
    PortalResponse answer;
    bus.connect(kService, requestPath(bus, token), QStringLiteral("org.freedesktop.portal.Request"),
                QStringLiteral("Response"), &answer, SLOT(take(uint, QVariantMap)));
    QDBusMessage call = QDBusMessage::createMethodCall(
        kService, kPath, QStringLiteral("org.freedesktop.portal.Screenshot"),
        QStringLiteral("Screenshot"));
    call << QString() << QVariantMap{{QStringLiteral("handle_token"), token},
                                     {QStringLiteral("modal"), true},
                                     {QStringLiteral("interactive"), request.interactive}};
    const QDBusMessage reply = bus.call(call);
    // A desktop without the screenshot interface: the X server is asked instead.
    if (reply.type() != QDBusMessage::ReplyMessage) return PortalOutcome::Unavailable;

    QEventLoop loop;
    QObject::connect(&answer, &PortalResponse::arrived, &loop, &QEventLoop::quit);
    if (!answer.answered) loop.exec();
    if (answer.response == 1) return PortalOutcome::Cancelled;
    const QUrl uri(answer.results.value(QStringLiteral("uri")).toString());
    if (answer.response != 0 || !uri.isLocalFile()) {
        *error = QStringLiteral("the screenshot portal failed (answer %1)").arg(answer.response);
        return PortalOutcome::Failed;
    }
    if (!request.mainScreenOnly) {
        return copyFile(uri.toLocalFile(), request.output, error) ? PortalOutcome::Written
                                                                  : PortalOutcome::Failed;
    }
    const QImage all(uri.toLocalFile());
    if (all.isNull()) {
        *error = QStringLiteral("%1: the portal's picture cannot be read").arg(uri.toLocalFile());
        return PortalOutcome::Failed;
    }
    return writeCapture(mainScreenOf(all), request.output, error) ? PortalOutcome::Written
                                                                   : PortalOutcome::Failed;
}
