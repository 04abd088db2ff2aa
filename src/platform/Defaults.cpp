#include "platform/Defaults.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>
#include <cmath>
#include <limits>
#include <optional>

#include "platform/Resources.h"

namespace marigold {

namespace {

// The reference date of stored dates.
QDateTime referenceDate() {
    return QDateTime(QDate(2001, 1, 1), QTime(0, 0), QTimeZone::utc());
}

// INI files hand every scalar back as text, so numbers and booleans are read from strings as
// well as from typed values. Anything else (lists, dictionaries, junk) is not a number.
std::optional<double> numberFrom(const QVariant& value) {
    switch (value.typeId()) {
        case QMetaType::Bool:
            return value.toBool() ? 1.0 : 0.0;
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Long:
        case QMetaType::ULong:
        case QMetaType::Float:
        case QMetaType::Double: {
            const double number = value.toDouble();
            return std::isfinite(number) ? std::optional(number) : std::nullopt;
        }
        case QMetaType::QString: {
            const QString text = value.toString().trimmed();
            if (text.compare(QLatin1StringView("true"), Qt::CaseInsensitive) == 0 ||
                text.compare(QLatin1StringView("yes"), Qt::CaseInsensitive) == 0) {
                return 1.0;
            }
            if (text.compare(QLatin1StringView("false"), Qt::CaseInsensitive) == 0 ||
                text.compare(QLatin1StringView("no"), Qt::CaseInsensitive) == 0) {
                return 0.0;
            }
            bool ok = false;
            const double number = text.toDouble(&ok);
            return ok && std::isfinite(number) ? std::optional(number) : std::nullopt;
        }
        default:
            return std::nullopt;
    }
}

// Truncates toward zero and clamps, so absurd stored values cannot overflow the conversion.
template <typename Int>
Int truncateTo(double number) {
    constexpr double low = double(std::numeric_limits<Int>::min());
    constexpr double high = double(std::numeric_limits<Int>::max());
    if (number <= low) return std::numeric_limits<Int>::min();
    if (number >= high) return std::numeric_limits<Int>::max();
    return Int(number);
}

QVariantList listFrom(const QVariant& value) {
    // A list of two or more strings comes back from an INI file as a string list.
    if (value.typeId() == QMetaType::QStringList) {
        QVariantList list;
        for (const QString& item : value.toStringList()) list.append(item);
        return list;
    }
    return value.typeId() == QMetaType::QVariantList ? value.toList() : QVariantList();
}

int hexDigit(QChar c) {
    if (c >= u'0' && c <= u'9') return c.unicode() - u'0';
    if (c >= u'a' && c <= u'f') return c.unicode() - u'a' + 10;
    if (c >= u'A' && c <= u'F') return c.unicode() - u'A' + 10;
    return -1;
}

// "#rrggbbaa", or "#rrggbb" for an opaque colour written by hand.
QColor colorFromText(const QString& text) {
    if (!text.startsWith(u'#') || (text.size() != 7 && text.size() != 9)) return QColor();
    int components[4] = {0, 0, 0, 255};
    for (int i = 0; 1 + 2 * i < text.size(); ++i) {
        const int high = hexDigit(text[1 + 2 * i]);
        const int low = hexDigit(text[2 + 2 * i]);
        if (high < 0 || low < 0) return QColor();
        components[i] = high * 16 + low;
    }
    return QColor(components[0], components[1], components[2], components[3]);
}

// Whole JSON numbers become ints so that typed getters and QVariant comparisons see the same
// type a stored integer has.
QVariant variantFromJson(const QJsonValue& value) {
    switch (value.type()) {
        case QJsonValue::Bool:
            return value.toBool();
        case QJsonValue::Double: {
            const double number = value.toDouble();
            if (number == std::trunc(number) && number >= std::numeric_limits<int>::min() &&
                number <= std::numeric_limits<int>::max()) {
                return int(number);
            }
            return number;
        }
        case QJsonValue::String:
            return value.toString();
        case QJsonValue::Array: {
            QVariantList list;
            for (const QJsonValue& item : value.toArray()) list.append(variantFromJson(item));
            return list;
        }
        case QJsonValue::Object: {
            QVariantMap map;
            const QJsonObject object = value.toObject();
            for (auto it = object.begin(); it != object.end(); ++it) {
                map.insert(it.key(), variantFromJson(it.value()));
            }
            return map;
        }
        default:
            return QVariant();
    }
}

}  // namespace

Defaults::Defaults()
    : _store(std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                         QStringLiteral("Marigold"), QStringLiteral("Marigold"))) {}

Defaults::Defaults(const QString& iniPath)
    : _store(std::make_unique<QSettings>(iniPath, QSettings::IniFormat)) {}

Defaults::~Defaults() = default;

void Defaults::registerDefaults(const QVariantMap& values) {
    for (auto it = values.begin(); it != values.end(); ++it) _registered.insert(it.key(), *it);
}

QVariantMap Defaults::factoryDefaults() {
    initResources();
    QFile file(QStringLiteral(":/FactoryDefaults.json"));
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning("marigold: the built-in factory defaults are missing");
        return {};
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (!document.isObject()) {
        qWarning("marigold: the built-in factory defaults are unreadable: %s",
                 qPrintable(error.errorString()));
        return {};
    }
    return variantFromJson(document.object()).toMap();
}

QVariant Defaults::objectForKey(const QString& key) const {
    return _store->contains(key) ? _store->value(key) : _registered.value(key);
}

void Defaults::setObject(const QString& key, const QVariant& value) {
    _store->setValue(key, value);
}

void Defaults::removeObject(const QString& key) {
    _store->remove(key);
}

bool Defaults::hasStoredValue(const QString& key) const {
    return _store->contains(key);
}

// A stored value that cannot be read as a number (a hand-edited or damaged file) counts as
// absent, so the registered value answers instead of a silent 0.
std::optional<double> Defaults::_number(const QString& key) const {
    if (_store->contains(key)) {
        if (const std::optional<double> stored = numberFrom(_store->value(key))) return stored;
    }
    return numberFrom(_registered.value(key));
}

bool Defaults::boolForKey(const QString& key) const {
    return _number(key).value_or(0.0) != 0.0;
}

int Defaults::integerForKey(const QString& key) const {
    return truncateTo<int>(_number(key).value_or(0.0));
}

int Defaults::registeredIntegerForKey(const QString& key) const {
    return truncateTo<int>(numberFrom(_registered.value(key)).value_or(0.0));
}

float Defaults::floatForKey(const QString& key) const {
    return float(doubleForKey(key));
}

double Defaults::doubleForKey(const QString& key) const {
    return _number(key).value_or(0.0);
}

QString Defaults::stringForKey(const QString& key) const {
    return stringForKey(key, QString());
}

QString Defaults::stringForKey(const QString& key, const QString& fallback) const {
    const QVariant value = objectForKey(key);
    if (value.typeId() == QMetaType::QString) return value.toString();
    // Numbers read back typed before the store is flushed and as text after; answer alike.
    if (numberFrom(value)) return value.toString();
    return fallback;
}

QVariantList Defaults::arrayForKey(const QString& key) const {
    return listFrom(objectForKey(key));
}

QVariantMap Defaults::dictionaryForKey(const QString& key) const {
    const QVariant value = objectForKey(key);
    if (value.typeId() == QMetaType::QVariantHash) {
        QVariantMap map;
        const QVariantHash hash = value.toHash();
        for (auto it = hash.begin(); it != hash.end(); ++it) map.insert(it.key(), *it);
        return map;
    }
    return value.typeId() == QMetaType::QVariantMap ? value.toMap() : QVariantMap();
}

void Defaults::setBool(const QString& key, bool value) {
    setObject(key, value);
}

void Defaults::setInteger(const QString& key, int value) {
    setObject(key, value);
}

// Stored as the double of the float so the text in the file reads back to the same float.
void Defaults::setFloat(const QString& key, float value) {
    setObject(key, double(value));
}

void Defaults::setString(const QString& key, const QString& value) {
    setObject(key, value);
}

QByteArray Defaults::frameForKey(const QString& key) const {
    return QByteArray::fromBase64(stringForKey(key).toLatin1());
}

void Defaults::setFrame(const QString& key, const QByteArray& frame) {
    setString(key, QString::fromLatin1(frame.toBase64()));
}

QColor Defaults::colorForKey(const QString& key) const {
    const auto colorFrom = [](const QVariant& value) {
        return value.typeId() == QMetaType::QString ? colorFromText(value.toString()) : QColor();
    };
    // A broken stored colour falls back to the registered one, as unreadable numbers do.
    const QColor stored = _store->contains(key) ? colorFrom(_store->value(key)) : QColor();
    return stored.isValid() ? stored : colorFrom(_registered.value(key));
}

// An invalid colour means "no colour": the key is removed, as storing nothing would.
void Defaults::setColor(const QString& key, const QColor& color) {
    if (!color.isValid()) {
        removeObject(key);
        return;
    }
    const QColor rgb = color.toRgb();
    setObject(key, QString::asprintf("#%02x%02x%02x%02x", rgb.red(), rgb.green(), rgb.blue(),
                                     rgb.alpha()));
}

bool Defaults::fontForKey(const QString& key, QFont* font) const {
    const QVariant value = objectForKey(key);
    QFont parsed;
    const bool ok = value.typeId() == QMetaType::QString && !value.toString().isEmpty() &&
                    parsed.fromString(value.toString());
    if (font) *font = ok ? parsed : QFont();
    return ok;
}

void Defaults::setFont(const QString& key, const QFont& font) {
    setObject(key, font.toString());
}

PointF Defaults::pointForKey(const QString& key) const {
    const QVariantList list = listFrom(objectForKey(key));
    if (list.size() != 2) return {};
    const std::optional<double> x = numberFrom(list[0]);
    const std::optional<double> y = numberFrom(list[1]);
    if (!x || !y) return {};
    return {float(*x), float(*y)};
}

void Defaults::setPoint(const QString& key, PointF point) {
    setObject(key, QVariantList{double(point.x), double(point.y)});
}

QDateTime Defaults::dateForKey(const QString& key) const {
    const std::optional<double> stored = numberFrom(objectForKey(key));
    if (!stored) return {};
    const float seconds = float(truncateTo<qint64>(*stored));
    if (!(seconds > 0)) return {};
    const QDateTime date = referenceDate().addSecs(truncateTo<qint64>(seconds));
    return date.isValid() ? date : QDateTime();
}

void Defaults::setDate(const QString& key, const QDateTime& date) {
    if (!date.isValid()) {
        removeObject(key);
        return;
    }
    // Integer division truncates toward zero, as the stored whole seconds must.
    setObject(key, qlonglong(referenceDate().msecsTo(date) / 1000));
}

int Defaults::incrementIntegerForKey(const QString& key) {
    const int current = integerForKey(key);
    // Saturates rather than overflowing a counter read from a hand-edited file.
    const int next = current == std::numeric_limits<int>::max() ? current : current + 1;
    setInteger(key, next);
    _store->sync();
    return next;
}

void Defaults::synchronize() {
    _store->sync();
}

QString Defaults::fileName() const {
    return _store->fileName();
}

}  // namespace marigold
