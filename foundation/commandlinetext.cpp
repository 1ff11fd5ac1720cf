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
