#pragma once

#include <QColor>
#include <QDateTime>
#include <QFont>
#include <QSettings>
#include <QVariant>
#include <memory>
#include <optional>

#include "platform/Geometry.h"

namespace marigold {

// The per-user settings store: an INI file (QSettings) over a registration domain of
// factory values. Getters read the store every time; setters write it at once.
class Defaults {
public:
    // The user's store: XDG config dir, organisation and application "Marigold".
    Defaults();
    // A store in the given INI file (tests, and runs that must not touch the user's).
    explicit Defaults(const QString& iniPath);
    ~Defaults();

    // Values used for keys the store does not hold. Later registrations win per key.
    void registerDefaults(const QVariantMap& values);
    // The factory values shipped in resources/FactoryDefaults.json.
    static QVariantMap factoryDefaults();

    QVariant objectForKey(const QString& key) const;
    void setObject(const QString& key, const QVariant& value);
    void removeObject(const QString& key);
    bool hasStoredValue(const QString& key) const;

    // Typed getters answer the registered value when the stored one cannot be read as the
    // type, and 0 (false) when neither can.
    bool boolForKey(const QString& key) const;
    int integerForKey(const QString& key) const;
    float floatForKey(const QString& key) const;
    double doubleForKey(const QString& key) const;
    // The registered value alone, for a stored one that reads but is out of its range.
    int registeredIntegerForKey(const QString& key) const;
    QString stringForKey(const QString& key) const;
    QString stringForKey(const QString& key, const QString& fallback) const;
    QVariantList arrayForKey(const QString& key) const;
    QVariantMap dictionaryForKey(const QString& key) const;

    void setBool(const QString& key, bool value);
    void setInteger(const QString& key, int value);
    void setFloat(const QString& key, float value);
    void setString(const QString& key, const QString& value);

    // Colours as "#rrggbbaa"; a malformed stored one reads as the registered colour, and an
    // invalid colour answers when neither is usable.
    QColor colorForKey(const QString& key) const;
    void setColor(const QString& key, const QColor& color);
    // Fonts as QFont::toString(); nullopt-like: a default QFont and false when missing.
    bool fontForKey(const QString& key, QFont* font) const;
    void setFont(const QString& key, const QFont& font);
    // Points as a list of two 32-bit floats, x then y; the zero point when missing.
    PointF pointForKey(const QString& key) const;
    void setPoint(const QString& key, PointF point);
    // Whole seconds since 2001-01-01 UTC, truncated; read back through a 32-bit float, so
    // present-day dates come back on a 32- or 64-second grid. Null for 0 or less.
    QDateTime dateForKey(const QString& key) const;
    void setDate(const QString& key, const QDateTime& date);

    // Window frames (QWidget::saveGeometry) as base64 text; empty when missing.
    QByteArray frameForKey(const QString& key) const;
    void setFrame(const QString& key, const QByteArray& frame);

    // Reads, adds one, writes and flushes to disk at once; returns the new value.
    int incrementIntegerForKey(const QString& key);

    void synchronize();
    // The INI file behind the store, for messages about unreadable or unwritable settings.
    QString fileName() const;

private:
    std::optional<double> _number(const QString& key) const;

    std::unique_ptr<QSettings> _store;
    QVariantMap _registered;
};

}  // namespace marigold
