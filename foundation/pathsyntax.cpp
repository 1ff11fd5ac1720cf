#include "foundation/pathsyntax.h"

#include "foundation/clstring.h"
#include "foundation/platform/fileio.h"
#include "foundation/utf.h"

int64_t clPathSyntax::Measure(const clString& text) const {
    if (style == clPathStyle::Windows) return text.Length();
    return Utf8LengthOf(text.text, text.Length());
}

const clPathSyntax& WindowsPathSyntax() {
    static const clPathSyntax syntax{clPathStyle::Windows, u'\\', 260};
    return syntax;
}

const clPathSyntax& PosixPathSyntax() {
    static const clPathSyntax syntax{clPathStyle::Posix, u'/', 4096};
    return syntax;
}

const clPathSyntax& NativePathSyntax() {
    static const clPathSyntax& syntax = PlatformUsesWindowsPaths() ? WindowsPathSyntax() : PosixPathSyntax();
    return syntax;
}
