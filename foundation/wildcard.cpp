#include "foundation/wildcard.h"

#include "foundation/clstring.h"

bool clWildcardMatch(const char16_t* pattern, const char16_t* name) {
    if (pattern == nullptr || name == nullptr) return false;
    if (pattern[0] == u'*' && pattern[1] == u'.' && pattern[2] == u'*' && pattern[3] == 0) return true;
    // Iterative matcher with one backtrack point: linear in practice and
    // never recursive, whatever the pattern.
    const char16_t* p = pattern;
    const char16_t* n = name;
    const char16_t* star = nullptr;
    const char16_t* resume = nullptr;
    while (*n != 0) {
        if (*p == u'*') {
            star = p++;
            resume = n;
        } else if (*p != 0 && (*p == u'?' || clAsciiLower(*p) == clAsciiLower(*n))) {
            ++p;
            ++n;
        } else if (star != nullptr) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    while (*p == u'*') ++p;
    return *p == 0;
}
