#pragma once

#include <QColor>
#include <QLatin1StringView>
#include <QMap>
#include <QString>
#include <QVariant>

#include "platform/Defaults.h"

namespace marigold {

// Edits to the defaults held apart until they are applied all at once or dropped, so the
// preferences dialog changes nothing until OK. Reading a key answers its edit when there is
// one, else the value the program actually uses (nonsense stored values read as their
// factory values, integer codes through the range table).
class PreferencesBuffer {
public:
    explicit PreferencesBuffer(Defaults& defaults) : _defaults(defaults) {}

    bool boolForKey(QLatin1StringView key) const;
    int integerForKey(QLatin1StringView key) const;
    QColor colorForKey(QLatin1StringView key) const;

    void setBool(QLatin1StringView key, bool value);
    void setInteger(QLatin1StringView key, int value);
    void setColor(QLatin1StringView key, const QColor& color);

    bool hasEdits() const { return !_edits.isEmpty(); }
    // Writes every edited key, flushes the store and empties the buffer.
    void save();
    // Drops every edit.
    void revert();
    // The main menu also sets these keys while the dialog is closed; a stale edit for them
    // must not write the old value back on OK, so their edits are dropped before a showing.
    void updateDefaultsController();

private:
    Defaults& _defaults;
    QMap<QString, QVariant> _edits;
};

}  // namespace marigold
