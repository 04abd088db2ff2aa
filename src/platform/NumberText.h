#pragma once

#include <QString>

namespace marigold {

// The integer a typed text starts with, read the forgiving way number fields read it:
// leading white space, an optional sign, then digits up to the first non-digit; 0 when
// there are none; saturated at the int range. "80a" is 80, " 12" is 12, "abc" is 0.
int leadingIntValue(const QString& text);

// True when the text is exactly its own integer printed with "%d" (no spaces, no "+",
// no leading zeros, no trailing characters).
bool isCanonicalInt(const QString& text);

}  // namespace marigold
