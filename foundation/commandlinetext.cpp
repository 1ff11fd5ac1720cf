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

void SplitCommandLine(const clString& line, clStringList& arguments) {
    arguments.Clear();
    int32_t i = 1;
    int32_t n = line.Length();
    for (;;) {
        while (i <= n && (line.CharAt(i) == u' ' || line.CharAt(i) == u'\t')) ++i;
        if (i > n) return;
        clString argument;
        bool quoted = false;
        while (i <= n) {
            char16_t c = line.CharAt(i);
            if (!quoted && (c == u' ' || c == u'\t')) break;
            if (c == u'\\') {
                int32_t count = 0;
                while (line.CharAt(i) == u'\\') {
                    ++count;
                    ++i;
                }
                if (line.CharAt(i) == u'"') {
                    for (int32_t k = 0; k < count / 2; ++k) argument.AppendGrowing(u"\\");
                    if (count % 2 == 1) {
                        argument.AppendGrowing(u"\"");
                        ++i;
                    }
                } else {
                    for (int32_t k = 0; k < count; ++k) argument.AppendGrowing(u"\\");
                }
                continue;
            }
            if (c == u'"') {
                if (quoted && line.CharAt(i + 1) == u'"') {
                    argument.AppendGrowing(u"\"");
                    i += 2;
                    continue;
                }
                quoted = !quoted;
                ++i;
                continue;
            }
            char16_t one[2] = {c, 0};
            argument.AppendGrowing(one);
            ++i;
        }
        arguments.AddMove(static_cast<clString&&>(argument));
    }
}
