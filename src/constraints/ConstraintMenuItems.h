#pragma once

#include <QString>

namespace marigold {

// The constraint pop-up's items travel as strings that carry their tag: "::$$title$$tag".
// A title "-" is a separator (tag -10); "Manage Constraints" (tag -4) gets the key ";".
QString itemStringWithTitle(const QString& title, int tag);
QString itemStringForSeparator();

inline constexpr int kSeparatorTag = -10;
inline constexpr int kUntaggedItem = -9999;

// A menu item made from a title that may be such a string. Its tag, once taken from the
// string, stays: `setTag` is honoured only while the item has none (-9999).
class TaggedMenuItem {
public:
    explicit TaggedMenuItem(const QString& title);

    QString title() const { return _title; }
    int tag() const { return _tag; }
    void setTag(int tag);
    bool isSeparator() const { return _separator; }
    QString keyEquivalent() const { return _keyEquivalent; }
    // "tag - title".
    QString description() const;

private:
    QString _title;
    int _tag = kUntaggedItem;
    bool _separator = false;
    QString _keyEquivalent;
};

}  // namespace marigold
