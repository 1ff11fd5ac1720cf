#include "foundation/commandlinetext.h"

#include "foundation/stringlist.h"

clString BuildCommandLineText(const clString& program, const clStringList& arguments) {
    clString line(u"\"");
    line.AppendGrowing(program);
    line.AppendGrowing(u"\"");
    for (int64_t i = 0; i < arguments.Count(); ++i) {
        const clString& argument = arguments[i];
        line.AppendGrowing(u" ");
        int32_t blank = argument.FindChar(u' ');
        if (blank == 0) {
            line.AppendGrowing(argument);
            continue;
        }
        int32_t equals = argument.FindChar(u'=');
        if (argument.CharAt(1) == u'-' && equals != 0 && equals < blank) {
            line.AppendGrowing(argument.Mid(1, equals));
            line.AppendGrowing(u"\"");
            line.AppendGrowing(argument.Mid(equals + 1, argument.Length()));
            line.AppendGrowing(u"\"");
        } else {
            line.AppendGrowing(u"\"");
            line.AppendGrowing(argument);
            line.AppendGrowing(u"\"");
        }
    }
    return line;
}

clString QuoteCommandLineArgument(const clString& argument) {
    bool needsQuotes = argument.IsEmpty() || argument.FindChar(u' ') != 0 || argument.FindChar(u'\t') != 0 ||
                       argument.FindChar(u'"') != 0;
    if (!needsQuotes) return argument;
    clString out(u"\"");
    int32_t backslashes = 0;
    for (int32_t i = 1; i <= argument.Length(); ++i) {
        char16_t c = argument.CharAt(i);
        if (c == u'\\') {
            ++backslashes;
            continue;
        }
        if (c == u'"') {
            for (int32_t k = 0; k < backslashes * 2 + 1; ++k) out.AppendGrowing(u"\\");
        } else {
            for (int32_t k = 0; k < backslashes; ++k) out.AppendGrowing(u"\\");
        }
        backslashes = 0;
        char16_t one[2] = {c, 0};
        out.AppendGrowing(one);
    }
    for (int32_t k = 0; k < backslashes * 2; ++k) out.AppendGrowing(u"\\");
    out.AppendGrowing(u"\"");
    return out;
}
