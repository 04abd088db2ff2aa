#pragma once

#include <QObject>
#include <QVariantMap>

#include "CaptureRequest.h"

// The desktop's screenshot portal (org.freedesktop.portal.Screenshot), the one way to read
// the screen under Wayland and the desktop's own way elsewhere.
enum class PortalOutcome { Written, Cancelled, Failed, Unavailable };
PortalOutcome captureWithPortal(const CaptureRequest& request, QString* error);

// Waits for the portal's answer to one request.
class PortalResponse : public QObject {
    Q_OBJECT

public:
    uint response = 2;
    QVariantMap results;
    bool answered = false;

public Q_SLOTS:
    void take(uint code, const QVariantMap& values);

Q_SIGNALS:
    void arrived();
};
