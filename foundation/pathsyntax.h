// clPathSyntax: the rules by which a path text is read, as an object, so
// that both syntaxes exist on every platform and tests run the Windows
// examples on Linux too. The process default is the native one.
//
// Windows syntax: `\` is the only separator (a `/` is an ordinary
// character); roots are `C:\`, `\\server\` and `\\?\...`; names longer
// than the limits get the `\\?\` prefix; lengths count UTF-16 units
// (260 for a whole path, 255 for a component).
// POSIX syntax: `/` is the only separator and takes every role the
// backslash has in Windows syntax; the one root is `/`; there is no
// long-path prefix; lengths count UTF-8 bytes (NAME_MAX 255 for a
// component, PATH_MAX 4096 for a whole path, terminator included).
#pragma once

#include <cstdint>

class clString;

enum class clPathStyle { Windows, Posix };

struct clPathSyntax {
    clPathStyle style;
    char16_t separator;
    int32_t pathLimit;  // a path whose measured length reaches this is too long

    bool IsWindows() const { return style == clPathStyle::Windows; }
    // Length in the syntax's own unit: UTF-16 units or UTF-8 bytes.
    int64_t Measure(const clString& text) const;
};

const clPathSyntax& WindowsPathSyntax();
const clPathSyntax& PosixPathSyntax();
const clPathSyntax& NativePathSyntax();
