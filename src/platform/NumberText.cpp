#include "platform/NumberText.h"

#include <climits>

namespace marigold {

int leadingIntValue(const QString& text) {
    int i = 0;
    const int n = int(text.size());
    while (i < n && text[i].isSpace()) ++i;
    bool negative = false;
    if (i < n && (text[i] == QLatin1Char('+') || text[i] == QLatin1Char('-'))) {
        negative = text[i] == QLatin1Char('-');
        ++i;
    }
    long long value = 0;
    for (; i < n && text[i] >= QLatin1Char('0') && text[i] <= QLatin1Char('9'); ++i) {
        value = value * 10 + (text[i].unicode() - '0');
        if (value > (long long)INT_MAX + 1) break;
    }
    if (negative) value = -value;
    if (value > INT_MAX) return INT_MAX;
    if (value < INT_MIN) return INT_MIN;
    return int(value);
}

bool isCanonicalInt(const QString& text) {
    return QString::number(leadingIntValue(text)) == text;
}

}  // namespace marigold
